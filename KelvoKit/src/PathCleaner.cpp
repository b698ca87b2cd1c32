#include "kelvo/PathCleaner.h"

#include "kelvo/Paths.h"
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
        auto candidate = Paths::appending(home_, relative);
        if (platform::exists(candidate)) present.push_back(std::move(candidate));
    }
    if (present.empty()) return {};

    std::int64_t total = 0;
    bool partial = false;
    bool holdsLink = false;
    for (const auto& path : present) {
        if (context.stop.stop_requested()) return {};
        // Never measured through: the executor does not remove through a link either.
        if (platform::isSymbolicLink(path).value_or(false)) {
            holdsLink = true;
            continue;
        }
        const Measurement measurement = context.sizer.measure(path);
        total += measurement.bytes;
        partial = partial || measurement.hadErrors;
    }
    // A walk cut short by the stop request reports a partial size that must not be shown.
    if (context.stop.stop_requested()) return {};
    if (total < 1 && !holdsLink) return {};

    return {CleanTarget{
        .id = id_,
        .name = name_,
        .family = family_,
        .kind = CleanKind::paths(std::move(present)),
        .sizeBytes = total,
        .reversibility = reversibility_,
        .regenCost = regenCost_,
        .level = level_,
        .notes = partial ? CleanTarget::partialSizeNote() : std::string(),
    }};
}

}  // namespace kelvo
