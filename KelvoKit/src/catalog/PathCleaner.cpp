#include "catalog/PathCleaner.h"

#include "vocabulary/Paths.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {

PathCleaner::PathCleaner(std::string id, std::string name, Family family, std::filesystem::path home,
                         std::vector<std::string> relativePaths, Level level, Reversibility reversibility,
                         RegenCost regenCost, PlaceMarks::Marks marks, std::vector<std::string> guardedProcesses,
                         std::string unlessFound, CommandCleaner::ToolCheck toolAvailable)
    : CatalogCleaner(std::move(id), std::move(name), family, level, reversibility, regenCost,
                     std::move(guardedProcesses)),
      home_(std::move(home)),
      relativePaths_(std::move(relativePaths)),
      marks_(std::move(marks)),
      unlessFound_(std::move(unlessFound)),
      toolAvailable_(toolAvailable ? std::move(toolAvailable) : CommandCleaner::ToolCheck(&CommandCleaner::which)) {}

std::vector<CleanTarget> PathCleaner::scan(const ScanContext& context) const {
    if (!unlessFound_.empty() && toolAvailable_(unlessFound_)) return {};
    std::vector<std::filesystem::path> present;
    for (const auto& relative : relativePaths_) {
        auto candidate = Paths::appending(home_, relative);
        if (platform::exists(candidate) && PlaceMarks::offerable(candidate, marks_))
            present.push_back(std::move(candidate));
    }
    if (present.empty()) return {};

    // Links are never measured through: the executor does not remove through a link either.
    std::vector<std::filesystem::path> measurable;
    for (const auto& path : present)
        if (!platform::isSymbolicLink(path).value_or(false)) measurable.push_back(path);
    const bool holdsLink = measurable.size() < present.size();
    const Measurement measured = context.sizer.measureAll(measurable);
    // A walk cut short by the stop request reports a partial size that must not be shown.
    if (context.stop.stop_requested()) return {};
    if (measured.bytes < 1 && !holdsLink) return {};

    return {target(id(), name(), std::move(present), measured)};
}

}  // namespace kelvo
