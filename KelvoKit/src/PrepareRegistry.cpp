#include "kelvo/PrepareRegistry.h"

#include <limits>

#include "kelvo/CleanerRegistry.h"
#include "kelvo/Environment.h"
#include "kelvo/InstalledApps.h"
#include "kelvo/InstalledPackages.h"
#include "kelvo/OldSimRuntimeDetector.h"
#include "kelvo/OrphanedLeftoverDetector.h"
#include "kelvo/PackageLeftoverDetector.h"
#include "kelvo/UnusedAppDetector.h"
#include "kelvo/platform/TextCase.h"

namespace kelvo {
namespace {

std::vector<std::string> splitDroppingEmpty(const std::string& text) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    while (start <= text.size()) {
        const auto dot = text.find('.', start);
        const auto end = dot == std::string::npos ? text.size() : dot;
        if (end > start) pieces.push_back(text.substr(start, end - start));
        if (dot == std::string::npos) break;
        start = dot + 1;
    }
    return pieces;
}

const std::set<std::string>& protectedBrandPrefixes() {
    static const std::set<std::string> prefixes = [] {
        std::set<std::string> result;
        for (const auto& id : PrepareRegistry::protectedBundleIDs())
            if (auto prefix = PrepareRegistry::brandPrefix(id)) result.insert(*prefix);
        return result;
    }();
    return prefixes;
}

std::shared_ptr<const Cleaner> linuxLeftoverDetector(const Environment& env, const std::filesystem::path& systemRoot) {
    const auto flatpakInstallations = InstalledPackages::flatpakInstallations(
        env.locationVariable("FLATPAK_USER_DIR").value_or(env.dataHome() / "flatpak"),
        env.locationVariable("FLATPAK_SYSTEM_DIR").value_or(systemRoot / "var/lib/flatpak"),
        env.locationVariable("FLATPAK_CONFIG_DIR").value_or(systemRoot / "etc/flatpak"));
    auto flatpakIDs = flatpakInstallations ? InstalledPackages::flatpakAppIDs(*flatpakInstallations) : std::nullopt;
    auto snaps = InstalledPackages::snapNames({systemRoot / "snap", systemRoot / "var/lib/snapd/snap"},
                                              systemRoot / "var/lib/snapd/snaps");
    std::vector<PackageLeftoverDetector::Source> sources{
        {env.home / ".var/app", "", std::move(flatpakIDs), &PrepareRegistry::isProtectedBundleID},
        {env.home / "snap", "snap:", std::move(snaps),
         [](const std::string& name) { return PrepareRegistry::isProtectedName(name); }},
    };
    return std::make_shared<PackageLeftoverDetector>(std::move(sources));
}

}  // namespace

const std::set<std::string>& PrepareRegistry::protectedBundleIDs() {
    static const std::set<std::string> ids{
        "com.apple.dt.Xcode",  "com.google.android.studio", "com.microsoft.VSCode",      "com.docker.docker",
        "com.googlecode.iterm2", "com.apple.Terminal",      "com.google.Chrome",         "com.apple.Safari",
        "org.mozilla.firefox", "company.thebrowser.Browser", "com.apple.iphonesimulator",
    };
    return ids;
}

const std::set<std::string>& PrepareRegistry::protectedNames() {
    static const std::set<std::string> names{
        "xcode", "android studio", "visual studio code", "code",  "cursor",    "docker",    "iterm",
        "terminal", "google chrome", "safari",           "firefox", "arc",     "simulator", "kelvo",
    };
    return names;
}

std::optional<std::string> PrepareRegistry::brandPrefix(const std::string& text) {
    const auto firstDot = text.find('.');
    if (firstDot == std::string::npos || firstDot == 0) return std::nullopt;
    const auto secondDot = text.find('.', firstDot + 1);
    const auto second = text.substr(firstDot + 1, secondDot == std::string::npos ? std::string::npos : secondDot - firstDot - 1);
    if (second.empty()) return std::nullopt;
    return text.substr(0, firstDot) + "." + second;
}

bool PrepareRegistry::isProtectedBundleID(const std::string& bundleID) {
    const auto& ids = protectedBundleIDs();
    if (ids.contains(bundleID)) return true;
    for (const auto& id : ids)
        if (bundleID.starts_with(id + ".")) return true;
    if (const auto prefix = brandPrefix(bundleID); prefix && protectedBrandPrefixes().contains(*prefix)) return true;
    const auto pieces = splitDroppingEmpty(bundleID);
    return !pieces.empty() && protectedNames().contains(platform::lowercased(pieces.back()));
}

bool PrepareRegistry::isProtectedName(const std::string& name) {
    return protectedNames().contains(platform::lowercased(name));
}

std::chrono::system_clock::time_point PrepareRegistry::monthsBefore(std::chrono::system_clock::time_point now,
                                                                   int months) {
    using TimePoint = std::chrono::system_clock::time_point;
    using Ticks = TimePoint::duration;
    const double shiftSeconds = static_cast<double>(months) * -30.0 * 86400.0;
    // The shift in clock ticks, and the sum, must both stay inside the clock's range.
    const double shiftTicks = shiftSeconds * static_cast<double>(Ticks::period::den) / Ticks::period::num;
    constexpr double tickLimit = 9.2e18;
    if (shiftTicks <= -tickLimit) return TimePoint::min();
    if (shiftTicks >= tickLimit) return TimePoint::max();
    const auto shift = std::chrono::duration_cast<Ticks>(std::chrono::duration<double>(shiftSeconds));
    using Limits = std::numeric_limits<Ticks::rep>;
    const Ticks::rep base = now.time_since_epoch().count();
    if (shift.count() < 0 && base < Limits::min() - shift.count()) return TimePoint::min();
    if (shift.count() > 0 && base > Limits::max() - shift.count()) return TimePoint::max();
    return now + shift;
}

std::vector<std::filesystem::path> PrepareRegistry::userAppDirs(const Environment& env) {
    return {"/Applications", env.home / "Applications"};
}

std::vector<std::filesystem::path> PrepareRegistry::prepareProtectedPaths(const Environment& env) {
    return CleanerRegistry::protectedPaths(env);
}

CleanerList PrepareRegistry::makePreparers(const Environment& env, int olderThanMonths,
                                           std::chrono::system_clock::time_point now,
                                           MetadataDependency metadata, RuntimeLister simLister,
                                           const std::optional<std::vector<std::filesystem::path>>& appIndexDirs,
                                           ProbeDependency probe,
                                           const std::filesystem::path& systemRoot) {
    if (env.catalog == CatalogProfile::linux) return {linuxLeftoverDetector(env, systemRoot)};
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
