#include "prepare/UnusedAppDetector.h"

#include "prepare/AppData.h"
#include "safety/InstalledApps.h"
#include "kelvo/L10n.h"
#include "vocabulary/MonthsBefore.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {

UnusedAppDetector::UnusedAppDetector(std::vector<std::filesystem::path> appDirs, std::filesystem::path home,
                                     int olderThanMonths, TimePoint now, MetadataDependency metadata,
                                     ProbeDependency probe, std::set<std::string> protectedBundleIDs,
                                     std::set<std::string> protectedNames)
    : CatalogCleaner("unused-apps", "Apps grandes sin usar", Family::unusedApps, Level::aggressive,
                     Reversibility::regenerable, RegenCost::redownload),
      appDirs_(std::move(appDirs)),
      home_(std::move(home)),
      olderThanMonths_(olderThanMonths),
      now_(now),
      metadata_(std::move(metadata)),
      probe_(std::move(probe)),
      protected_(std::move(protectedBundleIDs), std::move(protectedNames)) {}

std::vector<CleanTarget> UnusedAppDetector::scan(const ScanContext& context) const {
    const TimePoint cutOff = monthsBefore(now_, olderThanMonths_);
    std::vector<CleanTarget> targets;
    for (const auto& directory : appDirs_) {
        const auto entries = platform::listDirectory(directory, true);
        if (!entries) continue;
        for (const auto& entry : *entries) {
            if (context.stop.stop_requested()) return {};
            // Cheapest tests first: names, then process questions, then Info.plist, and the
            // last-used lookup (which may start a process) last.
            const std::filesystem::path bundle = directory / entry.name;
            const auto appName = InstalledApps::appName(bundle);
            if (!appName || protected_.coversName(*appName)) continue;
            if (InstalledApps::isRunning(bundle, *probe_)) continue;
            const auto bundleID = InstalledApps::infoPlistString(bundle, "CFBundleIdentifier");
            if (bundleID && protected_.bundleIDs().contains(*bundleID)) continue;
            const auto lastUsed = metadata_->lastUsed(bundle);
            if (!lastUsed || !(*lastUsed < cutOff)) continue;

            std::vector<std::filesystem::path> paths{bundle};
            if (bundleID)
                for (auto& location : AppData::leftoverPaths(*bundleID, home_)) paths.push_back(std::move(location));
            const std::int64_t total = context.sizer.measureAll(paths).bytes;
            if (total <= 0) continue;
            targets.push_back(target(bundleID ? "app:" + *bundleID : "app-path:" + bundle.string(),
                                     L10n::t("cleaner.unusedApp.target", *appName), CleanKind::paths(std::move(paths)),
                                     total, "Reinstalable. Borrado permanente de la app y sus datos."));
        }
    }
    // A walk cut short by the stop request measured too little; such a scan publishes nothing.
    if (context.stop.stop_requested()) return {};
    return targets;
}

}  // namespace kelvo
