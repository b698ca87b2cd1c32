#pragma once
// Which application bundles are installed, and strings from their Info.plist. Reads the
// file system afresh on every call; failures give fewer results, never errors.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "kelvo/ProcessProbe.h"

namespace kelvo {

struct AppInfo {
    std::filesystem::path url;  // the bundle directory, "<name>.app"
    std::string bundleID;       // CFBundleIdentifier
    std::string name;           // the bundle's file name without ".app"
    friend bool operator==(const AppInfo&, const AppInfo&) = default;
};

// What a look through the application folders found.
struct AppInventory {
    std::vector<AppInfo> apps;
    // Names (without ".app") of bundles that exist but whose identifier cannot be read
    // (no Info.plist, an unreadable one, no string CFBundleIdentifier): installed
    // applications that cannot be told apart from removed ones by identifier.
    std::vector<std::string> unidentifiedNames;
};

namespace InstalledApps {

// /Applications, /Applications/Utilities, /System/Applications,
// /System/Applications/Utilities, then home/Applications (existence not checked).
std::vector<std::filesystem::path> standardAppDirs(const std::filesystem::path& home);
// Bundles directly inside the folders (".app", case-sensitive, hidden ones skipped) whose
// Info.plist has a string CFBundleIdentifier, neither sorted nor de-duplicated, and apart
// the bundles whose identifier could not be read.
AppInventory inventory(const std::vector<std::filesystem::path>& appDirs);
// One string value of the bundle's Contents/Info.plist; nothing on any failure.
std::optional<std::string> infoPlistString(const std::filesystem::path& bundle, const std::string& key);
// "Foo" for ".../Foo.app"; nothing for a path whose extension is not exactly "app".
std::optional<std::string> appName(const std::filesystem::path& bundle);
// The bundle's application runs: a process is named like the bundle or like its
// CFBundleExecutable, or runs a program from its Contents/MacOS.
bool isRunning(const std::filesystem::path& bundle, const ProcessProbe& processes);

}  // namespace InstalledApps
}  // namespace kelvo
