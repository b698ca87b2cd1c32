#pragma once
// What Flatpak and Snap have installed, read from their installation folders rather than
// by running the tools (which may be missing while their data is not). A listing that
// exists but cannot be read makes the answer unknown (nothing), never "not installed":
// only a known list may make an application's data a leftover.
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kelvo::InstalledPackages {

// The Flatpak installations: the user's and the system's folders, then the Path= of every
// "*.conf" in configFolder/installations.d, in that order. Nothing when that folder or
// one of its files exists but cannot be read.
std::optional<std::vector<std::filesystem::path>> flatpakInstallations(const std::filesystem::path& user,
                                                                      const std::filesystem::path& system,
                                                                      const std::filesystem::path& configFolder);
// The application ids: the folder names under each installation's "app" folder. A missing
// installation has none; one whose app folder cannot be listed makes the answer nothing.
std::optional<std::set<std::string>> flatpakAppIDs(const std::vector<std::filesystem::path>& installations);
// The installed snaps: the folders of the mount folders (/snap/<name>) and the names of
// the packages in snapd's folder (<name>_<revision>.snap). Same rule for unreadable folders.
std::optional<std::set<std::string>> snapNames(const std::vector<std::filesystem::path>& mountFolders,
                                               const std::filesystem::path& packageFolder);

}  // namespace kelvo::InstalledPackages
