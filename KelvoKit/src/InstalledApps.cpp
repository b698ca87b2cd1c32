#include "kelvo/InstalledApps.h"

#include "kelvo/Paths.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/PropertyList.h"

namespace kelvo {

std::vector<std::filesystem::path> InstalledApps::standardAppDirs(const std::filesystem::path& home) {
    return {"/Applications", "/Applications/Utilities", "/System/Applications", "/System/Applications/Utilities",
            home / "Applications"};
}

std::vector<AppInfo> InstalledApps::scan(const std::vector<std::filesystem::path>& appDirs) {
    std::vector<AppInfo> apps;
    for (const auto& directory : appDirs) {
        const auto entries = platform::listDirectory(directory, true);
        if (!entries) continue;
        for (const auto& entry : *entries) {
            const std::filesystem::path bundle = directory / entry.name;
            if (Paths::extensionOf(bundle) != "app") continue;
            auto bundleID = infoPlistString(bundle, "CFBundleIdentifier");
            if (!bundleID) continue;
            apps.push_back({bundle, std::move(*bundleID), entry.name.substr(0, entry.name.size() - 4)});
        }
    }
    return apps;
}

std::optional<std::string> InstalledApps::infoPlistString(const std::filesystem::path& bundle, const std::string& key) {
    const auto strings = platform::readTopLevelStrings(bundle / "Contents/Info.plist");
    if (!strings) return std::nullopt;
    const auto found = strings->find(key);
    if (found == strings->end()) return std::nullopt;
    return found->second;
}

}  // namespace kelvo
