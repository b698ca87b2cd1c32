#include "kelvo/OldSimRuntimeDetector.h"

#include "kelvo/L10n.h"
#include "kelvo/MonthsBefore.h"

namespace kelvo {
namespace {

// The identifier as one shell word. The tool's identifiers are UUIDs and stay as they
// are; anything with other characters is single-quoted, so a strange answer from the
// tool can never add a second command to the line the executor runs.
std::string shellWord(const std::string& text) {
    const bool plain = !text.empty() && text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                                               "0123456789._-") == std::string::npos;
    if (plain) return text;
    std::string quoted = "'";
    for (const char character : text) {
        if (character == '\'') quoted += "'\\''";
        else quoted += character;
    }
    return quoted + "'";
}

}  // namespace

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
                                 CleanKind::command("xcrun simctl runtime delete " + shellWord(runtime.identifier)),
                                 runtime.sizeBytes, "Re-descargable desde Xcode."));
    }
    return targets;
}

}  // namespace kelvo
