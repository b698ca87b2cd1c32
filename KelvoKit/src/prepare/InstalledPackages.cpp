#include "prepare/InstalledPackages.h"

#include <sstream>

#include "vocabulary/Paths.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {
namespace {

using Entries = std::vector<platform::ListedEntry>;

// The entries of a folder: none when it does not exist, nothing when it exists but cannot be
// read, or when whether it exists cannot be told.
std::optional<Entries> entriesOf(const std::filesystem::path& folder) {
    const auto present = platform::isPresent(folder);
    if (!present) return std::nullopt;
    if (!*present) return Entries{};
    return platform::listDirectory(folder, /*skipHidden=*/true);
}

// The Path= values of one installation file ("[Installation \"name\"]" sections).
std::vector<std::filesystem::path> installationPaths(const std::string& text) {
    std::vector<std::filesystem::path> paths;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const auto start = line.find_first_not_of(" \t");
        if (start == std::string::npos || line.compare(start, 5, "Path=") != 0) continue;
        std::string value = line.substr(start + 5);
        value.erase(value.find_last_not_of(" \t\r") + 1);
        if (value.starts_with('/')) paths.emplace_back(value);
    }
    return paths;
}

}  // namespace

InstalledPackages::Listing InstalledPackages::flatpakAppIDs(const std::filesystem::path& user,
                                                           const std::filesystem::path& system,
                                                           const std::filesystem::path& configFolder) {
    std::vector<std::filesystem::path> installations{user, system};
    const auto folder = configFolder / "installations.d";
    const auto entries = entriesOf(folder);
    if (!entries) return {std::nullopt, folder};
    for (const auto& entry : *entries) {
        if (Paths::extensionOf(entry.name) != "conf") continue;
        const auto text = platform::readFile(folder / entry.name);
        if (!text) return {std::nullopt, folder / entry.name};
        for (auto& path : installationPaths(*text)) {
            if (!platform::isPresent(path / "repo").value_or(false)) return {std::nullopt, path};
            installations.push_back(std::move(path));
        }
    }
    std::set<std::string> ids;
    for (const auto& installation : installations) {
        const auto apps = entriesOf(installation / "app");
        if (!apps) return {std::nullopt, installation / "app"};
        for (const auto& entry : *apps) ids.insert(entry.name);
    }
    return {std::move(ids), {}};
}

std::optional<std::set<std::string>> InstalledPackages::snapNames(
    const std::vector<std::filesystem::path>& mountFolders, const std::filesystem::path& packageFolder) {
    std::set<std::string> names;
    for (const auto& folder : mountFolders) {
        const auto entries = entriesOf(folder);
        if (!entries) return std::nullopt;
        for (const auto& entry : *entries) names.insert(entry.name);
    }
    const auto packages = entriesOf(packageFolder);
    if (!packages) return std::nullopt;
    for (const auto& entry : *packages) {
        const auto underscore = entry.name.rfind('_');
        if (Paths::extensionOf(entry.name) == "snap" && underscore != std::string::npos && underscore > 0)
            names.insert(entry.name.substr(0, underscore));
    }
    return names;
}

}  // namespace kelvo
