#include "prepare/PackageLeftoverDetector.h"

#include <algorithm>

#include "kelvo/L10n.h"
#include "prepare/OrphanedLeftoverDetector.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {

PackageLeftoverDetector::PackageLeftoverDetector(std::vector<Source> sources)
    : CatalogCleaner("app-leftovers", "Restos de apps desinstaladas", Family::appLeftovers, Level::moderate,
                     Reversibility::userData, RegenCost::redownload),
      sources_(std::move(sources)) {}

std::vector<CleanTarget> PackageLeftoverDetector::scan(const ScanContext& context) const {
    std::vector<CleanTarget> targets;
    for (const auto& source : sources_) {
        const auto entries = platform::listDirectory(source.dataFolder, /*skipHidden=*/true);
        if (!entries) continue;
        if (!source.installed) {
            if (!entries->empty() && !source.unknownNote.empty()) context.note(source.unknownNote);
            continue;
        }
        std::vector<std::string> names;
        for (const auto& entry : *entries)
            if (entry.type == platform::EntryType::directory && !source.installed->contains(entry.name) &&
                !source.isProtected(entry.name))
                names.push_back(entry.name);
        std::sort(names.begin(), names.end());
        for (const auto& name : names) {
            if (context.stop.stop_requested()) return {};
            auto folder = source.dataFolder / name;
            const Measurement measured = context.sizer.measure(folder);
            if (measured.bytes < 1) continue;
            targets.push_back(target("leftover:" + source.idPrefix + name, L10n::t("cleaner.leftover.target", name),
                                     CleanKind::paths({std::move(folder)}), measured.bytes,
                                     OrphanedLeftoverDetector::leftoverNote));
        }
    }
    // A walk cut short by the stop request measured too little; such a scan publishes nothing.
    if (context.stop.stop_requested()) return {};
    return targets;
}

}  // namespace kelvo
