#include "kelvo/PathCleaner.h"

#include "kelvo/platform/FileSystem.h"

namespace kelvo {

PathCleaner::PathCleaner(std::string id, std::string name, Family family, std::filesystem::path home,
                         std::vector<std::string> relativePaths, Level level, Reversibility reversibility,
                         RegenCost regenCost)
    : id_(std::move(id)),
      name_(std::move(name)),
      family_(family),
      home_(std::move(home)),
      relativePaths_(std::move(relativePaths)),
      level_(level),
      reversibility_(reversibility),
      regenCost_(regenCost) {}

std::vector<CleanTarget> PathCleaner::scan(const ScanContext& context) const {
    std::vector<std::filesystem::path> present;
    for (const auto& relative : relativePaths_) {
        auto candidate = home_ / relative;
        // Links are followed for this test, so a dangling link counts as missing.
        if (platform::exists(candidate)) present.push_back(std::move(candidate));
    }
    if (present.empty()) return {};

    std::int64_t total = 0;
    bool partial = false;
    for (const auto& path : present) {
        if (context.stop.stop_requested()) return {};
        const Measurement measured = context.sizer.measure(path);
        total += measured.bytes;
        partial = partial || measured.hadErrors;
    }
    if (total < 1) return {};

    CleanTarget target;
    target.id = id_;
    target.name = name_;
    target.family = family_;
    target.kind = CleanKind::paths(std::move(present));
    target.sizeBytes = total;
    target.reversibility = reversibility_;
    target.regenCost = regenCost_;
    target.level = level_;
    target.notes = partial ? CleanTarget::partialSizeNote() : std::string();
    return {std::move(target)};
}

}  // namespace kelvo
