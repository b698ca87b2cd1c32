#include "kelvo/PrepareRegistry.h"

#include "kelvo/CleanerRegistry.h"
#include "kelvo/Environment.h"
#include "safety/InstalledApps.h"
#include "prepare/InstalledPackages.h"
#include "kelvo/L10n.h"
#include "prepare/OldRuntimeDetector.h"
#include "prepare/OldSimRuntimeDetector.h"
#include "prepare/OrphanedLeftoverDetector.h"
#include "prepare/PackageLeftoverDetector.h"
#include "safety/ProtectedApps.h"
#include "prepare/UnusedAppDetector.h"

namespace kelvo {
namespace {

std::shared_ptr<const Cleaner> linuxLeftoverDetector(const Environment& env, const std::filesystem::path& systemRoot) {
    auto flatpak = InstalledPackages::flatpakAppIDs(
        env.locationVariable("FLATPAK_USER_DIR").value_or(env.dataHome() / "flatpak"),
        env.locationVariable("FLATPAK_SYSTEM_DIR").value_or(systemRoot / "var/lib/flatpak"),
        env.locationVariable("FLATPAK_CONFIG_DIR").value_or(systemRoot / "etc/flatpak"));
    auto flatpakUnknown =
        flatpak.names ? std::string() : L10n::t("prepare.note.flatpakUnknown", flatpak.unreadable.string());
    auto snaps = InstalledPackages::snapNames({systemRoot / "snap", systemRoot / "var/lib/snapd/snap"},
                                              systemRoot / "var/lib/snapd/snaps");
    std::vector<PackageLeftoverDetector::Source> sources{
        {env.home / ".var/app", "", std::move(flatpak.names), &PrepareRegistry::isProtectedBundleID,
         std::move(flatpakUnknown)},
        {env.home / "snap", "snap:", std::move(snaps),
         [](const std::string& name) { return PrepareRegistry::isProtectedName(name); }},
    };
    return std::make_shared<PackageLeftoverDetector>(std::move(sources));
}

}  // namespace

const std::set<std::string>& PrepareRegistry::protectedBundleIDs() { return ProtectedApps::standard().bundleIDs(); }

const std::set<std::string>& PrepareRegistry::protectedNames() { return ProtectedApps::standard().names(); }

bool PrepareRegistry::isProtectedBundleID(const std::string& bundleID) {
    return ProtectedApps::standard().coversBundleID(bundleID);
}

bool PrepareRegistry::isProtectedName(const std::string& name) { return ProtectedApps::standard().coversName(name); }

std::vector<std::filesystem::path> PrepareRegistry::userAppDirs(const Environment& env) {
    return {"/Applications", env.home / "Applications"};
}

std::vector<std::filesystem::path> PrepareRegistry::prepareProtectedPaths(const Environment& env) {
    return CleanerRegistry::protectedPaths(env);
}

std::vector<Family> PrepareRegistry::families(CatalogProfile profile) {
    if (profile == CatalogProfile::gnuLinux) return {Family::appLeftovers, Family::oldRuntimes};
    return {Family::simulators, Family::appLeftovers, Family::unusedApps};
}

CleanerList PrepareRegistry::makePreparers(const Environment& env, int olderThanMonths,
                                           std::chrono::system_clock::time_point now,
                                           MetadataDependency metadata, RuntimeLister simLister,
                                           const std::optional<std::vector<std::filesystem::path>>& appIndexDirs,
                                           ProbeDependency probe,
                                           const std::filesystem::path& systemRoot) {
    if (env.catalog == CatalogProfile::gnuLinux)
        return {linuxLeftoverDetector(env, systemRoot),
                std::make_shared<OldRuntimeDetector>(env, olderThanMonths, now, std::move(probe))};
    // Listed afresh on every call, so each scan sees the applications installed at that moment.
    auto inventory = InstalledApps::inventory(appIndexDirs.value_or(InstalledApps::standardAppDirs(env.home)));
    std::set<std::string> installed;
    for (auto& app : inventory.apps) installed.insert(std::move(app.bundleID));
    return {
        std::make_shared<OrphanedLeftoverDetector>(env.home, std::move(installed), protectedBundleIDs(),
                                                   protectedNames(), inventory.unidentifiedNames),
        std::make_shared<UnusedAppDetector>(userAppDirs(env), env.home, olderThanMonths, now, std::move(metadata),
                                            std::move(probe), protectedBundleIDs(), protectedNames()),
        std::make_shared<OldSimRuntimeDetector>(std::move(simLister), olderThanMonths, now),
    };
}

}  // namespace kelvo
