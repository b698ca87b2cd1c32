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

// Installed names, or the folder or file that made them unknown.
struct Listing {
    std::optional<std::set<std::string>> names;  // nothing: unknown
    std::filesystem::path unreadable;            // with no names: what could not be read
};

// The installed Flatpak application ids: the folder names under "app" in the user's and
// the system's installations and in each installation that a "*.conf" of
// configFolder/installations.d declares (its Path=). A default installation that is
// missing has nothing installed. A declared one is a disk that may not be mounted: unless
// it is there and holds its "repo", what it holds is unknown, and so are the ids; so
// are they when the declarations or an "app" folder cannot be read.
Listing flatpakAppIDs(const std::filesystem::path& user, const std::filesystem::path& system,
                      const std::filesystem::path& configFolder);
// The installed snaps: the folders of the mount folders (/snap/<name>) and the names of
// the packages in snapd's folder (<name>_<revision>.snap). Same rule for unreadable folders.
std::optional<std::set<std::string>> snapNames(const std::vector<std::filesystem::path>& mountFolders,
                                               const std::filesystem::path& packageFolder);

}  // namespace kelvo::InstalledPackages
