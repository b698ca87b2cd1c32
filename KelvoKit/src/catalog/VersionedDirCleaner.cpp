#include "catalog/VersionedDirCleaner.h"

#include "kelvo/platform/FileSystem.h"

namespace kelvo {

VersionedDirCleaner::VersionedDirCleaner(std::string id, std::string name, Family family,
                                         std::filesystem::path parent, std::vector<std::string> prefixes,
                                         Level level, Reversibility reversibility, RegenCost regenCost,
                                         PlaceMarks::Marks marks)
    : CatalogCleaner(std::move(id), std::move(name), family, level, reversibility, regenCost),
      parent_(std::move(parent)),
      prefixes_(std::move(prefixes)),
      marks_(std::move(marks)) {}

bool VersionedDirCleaner::admits(const std::string& entryName) const {
    if (prefixes_.empty()) return true;
    for (const auto& prefix : prefixes_)
        if (entryName.starts_with(prefix)) return true;
    return false;
}

std::vector<CleanTarget> VersionedDirCleaner::scan(const ScanContext& context) const {
    const auto entries = platform::listDirectory(parent_, /*skipHidden=*/true);
    if (!entries || PlaceMarks::holdsWorkTree(parent_)) return {};
    std::vector<CleanTarget> targets;
    for (const auto& entry : *entries) {
        if (context.stop.stop_requested()) return {};
        // The entry's own type: a link to a folder is not a folder, an unknown type is skipped.
        if (entry.type != platform::EntryType::directory) continue;
        if (!admits(entry.name)) continue;
        auto path = parent_ / entry.name;
        if (!PlaceMarks::offerable(path, marks_)) continue;
        const Measurement measured = context.sizer.measure(path);
        if (measured.bytes < 1) continue;
        targets.push_back(target(id() + "/" + entry.name, name() + ": " + entry.name, {std::move(path)}, measured));
    }
    return targets;
}

}  // namespace kelvo
