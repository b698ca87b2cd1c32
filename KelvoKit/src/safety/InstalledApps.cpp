#include "safety/InstalledApps.h"

#include "vocabulary/Paths.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/PropertyList.h"

namespace kelvo {

std::vector<std::filesystem::path> InstalledApps::standardAppDirs(const std::filesystem::path& home) {
    return {"/Applications", "/Applications/Utilities", "/System/Applications", "/System/Applications/Utilities",
            home / "Applications"};
}

AppInventory InstalledApps::inventory(const std::vector<std::filesystem::path>& appDirs) {
    AppInventory found;
    for (const auto& directory : appDirs) {
        const auto entries = platform::listDirectory(directory, true);
        if (!entries) continue;
        for (const auto& entry : *entries) {
            const std::filesystem::path bundle = directory / entry.name;
            auto name = appName(bundle);
            if (!name) continue;
            if (auto bundleID = infoPlistString(bundle, "CFBundleIdentifier"))
                found.apps.push_back({bundle, std::move(*bundleID), std::move(*name)});
            else
                found.unidentifiedNames.push_back(std::move(*name));
        }
    }
    return found;
}

std::optional<std::string> InstalledApps::infoPlistString(const std::filesystem::path& bundle, const std::string& key) {
    const auto strings = platform::readTopLevelStrings(bundle / "Contents/Info.plist");
    if (!strings) return std::nullopt;
    const auto found = strings->find(key);
    if (found == strings->end()) return std::nullopt;
    return found->second;
}

std::optional<std::string> InstalledApps::appName(const std::filesystem::path& bundle) {
    if (Paths::extensionOf(bundle) != "app") return std::nullopt;
    const std::string name = Paths::lastComponent(bundle);
    return name.substr(0, name.size() - 4);
}

bool InstalledApps::isRunning(const std::filesystem::path& bundle, const ProcessProbe& processes) {
    const std::string name = appName(bundle).value_or(Paths::lastComponent(bundle));
    if (processes.isRunning(name)) return true;
    // The executable may be named differently from the bundle.
    const auto executable = infoPlistString(bundle, "CFBundleExecutable");
    if (executable && *executable != name && processes.isRunning(*executable)) return true;
    return processes.isRunningUnder((Paths::standardized(bundle) / "Contents/MacOS").string());
}

}  // namespace kelvo
