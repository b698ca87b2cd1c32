#include "prepare/OrphanedLeftoverDetector.h"

#include <array>
#include <string_view>

#include "prepare/AppData.h"
#include "kelvo/L10n.h"
#include "vocabulary/Paths.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/TextCase.h"

namespace kelvo {
namespace {

// Places whose entries are named after the bundle identifier as they are.
constexpr std::array<std::string_view, 5> plainPlaces{
    "Library/Application Support", "Library/Caches", "Library/Containers", "Library/HTTPStorages", "Library/Logs",
};

// Lower case without blanks, "-" and "_", so "Foo Bar", "foo-bar" and "FooBar" meet.
std::string matchKey(std::string_view text) {
    std::string key;
    for (const char c : platform::lowercased(text))
        if (c != ' ' && c != '-' && c != '_') key += c;
    return key;
}

}  // namespace

OrphanedLeftoverDetector::OrphanedLeftoverDetector(std::filesystem::path home, std::set<std::string> installedBundleIDs,
                                                   std::set<std::string> protectedBundleIDs,
                                                   std::set<std::string> protectedNames,
                                                   const std::vector<std::string>& unidentifiedAppNames)
    : CatalogCleaner("app-leftovers", "Restos de apps desinstaladas", Family::appLeftovers, Level::moderate,
                     Reversibility::regenerable, RegenCost::redownload),
      home_(std::move(home)),
      installedBundleIDs_(std::move(installedBundleIDs)),
      protected_(std::move(protectedBundleIDs), std::move(protectedNames)) {
    for (const auto& name : unidentifiedAppNames)
        if (auto key = matchKey(name); !key.empty()) unidentifiedAppKeys_.insert(std::move(key));
}

bool OrphanedLeftoverDetector::mayBelongToUnidentifiedApp(const std::string& bundleID) const {
    // Dots around both sides make a match cover whole pieces only.
    const std::string pieces = "." + matchKey(bundleID) + ".";
    for (const auto& key : unidentifiedAppKeys_)
        if (pieces.find("." + key + ".") != std::string::npos) return true;
    return false;
}

std::set<std::string> OrphanedLeftoverDetector::collectCandidateBundleIDs() const {
    std::set<std::string> candidates;
    const auto collect = [&](std::string_view place, std::string_view extension) {
        const auto entries = platform::listDirectory(home_ / place, true);
        if (!entries) return;
        for (const auto& entry : *entries) {
            if (extension.empty()) {
                candidates.insert(entry.name);
            } else if (Paths::extensionOf(entry.name) == extension) {
                candidates.insert(entry.name.substr(0, entry.name.size() - extension.size() - 1));
            }
        }
    };
    for (const auto place : plainPlaces) collect(place, "");
    collect("Library/Preferences", "plist");
    collect("Library/Saved Application State", "savedState");
    return candidates;
}

std::vector<CleanTarget> OrphanedLeftoverDetector::scan(const ScanContext& context) const {
    std::vector<CleanTarget> targets;
    // Cheap string rules first; only identifiers that pass them touch the file system again.
    for (const auto& bundleID : collectCandidateBundleIDs()) {
        if (context.stop.stop_requested()) return {};
        if (isProtected(bundleID) || mayBelongToUnidentifiedApp(bundleID)) continue;
        if (!AppData::isOrphanBundleID(bundleID, installedBundleIDs_)) continue;
        auto locations = AppData::leftoverPaths(bundleID, home_);
        if (locations.empty()) continue;
        const std::int64_t total = context.sizer.measureAll(locations).bytes;
        if (total <= 0) continue;
        targets.push_back(target("leftover:" + bundleID, L10n::t("cleaner.leftover.target", bundleID),
                                 CleanKind::paths(std::move(locations)), total, leftoverNote));
    }
    // A walk cut short by the stop request measured too little; such a scan publishes nothing.
    if (context.stop.stop_requested()) return {};
    return targets;
}

}  // namespace kelvo
