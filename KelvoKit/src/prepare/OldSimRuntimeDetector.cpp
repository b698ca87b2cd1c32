#include "prepare/OldSimRuntimeDetector.h"

#include "kelvo/L10n.h"
#include "vocabulary/MonthsBefore.h"
#include "safety/ShellCommand.h"

namespace kelvo {

OldSimRuntimeDetector::OldSimRuntimeDetector(RuntimeLister lister, int olderThanMonths,
                                             std::optional<std::chrono::system_clock::time_point> now)
    : CatalogCleaner("sim-runtimes", "Runtimes de simulador viejos", Family::simulators, Level::aggressive,
                     Reversibility::regenerable, RegenCost::redownload),
      lister_(std::move(lister)), olderThanMonths_(olderThanMonths), now_(now) {}

std::vector<CleanTarget> OldSimRuntimeDetector::scan(const ScanContext&) const {
    std::optional<std::chrono::system_clock::time_point> cutOff;
    if (now_) cutOff = monthsBefore(*now_, olderThanMonths_);

    std::vector<CleanTarget> targets;
    for (const auto& runtime : lister_()) {
        if (!runtime.isDeletable) continue;
        if (cutOff && !(runtime.lastUsed && *runtime.lastUsed < *cutOff)) continue;
        targets.push_back(target("sim-runtime:" + runtime.identifier,
                                 L10n::t("cleaner.simRuntime.target", runtime.name),
                                 CleanKind::command("xcrun simctl runtime delete " + ShellCommand::word(runtime.identifier)),
                                 runtime.sizeBytes, "Re-descargable desde Xcode."));
    }
    return targets;
}

}  // namespace kelvo
