#include "prepare/ProjectPins.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>

#include "vocabulary/Paths.h"
#include "vocabulary/Text.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {
namespace {

// Folders that tools fill, never a project's own pins.
constexpr std::array<std::string_view, 6> passedOver{"node_modules", "target", "__pycache__", "site-packages",
                                                      "dist-packages", "bower_components"};
constexpr std::size_t pinFileLimit = 64 * 1024;

// The value of the "home" key of a pyvenv.cfg ("home = /x/bin"); empty when there is none.
std::string venvHome(const std::string& config) {
    std::size_t start = 0;
    while (start <= config.size()) {
        auto end = config.find('\n', start);
        if (end == std::string::npos) end = config.size();
        const std::string line = trimmed(std::string_view(config).substr(start, end - start));
        start = end + 1;
        const auto equals = line.find('=');
        if (equals == std::string::npos || trimmed(line.substr(0, equals)) != "home") continue;
        return trimmed(line.substr(equals + 1));
    }
    return {};
}

class Walk {
public:
    Walk(const std::set<std::string>& names, std::stop_token stop, int maxDepth)
        : names_(names), stop_(std::move(stop)), maxDepth_(maxDepth) {
        for (const auto& name : names_)
            if (const auto slash = name.find('/'); slash != std::string::npos)
                nested_.emplace(name.substr(0, slash), name);
    }

    void folder(const std::filesystem::path& path, int depth) {
        if (stop_.stop_requested()) return;
        const auto entries = platform::listDirectory(path, false);
        if (!entries) {
            result_.unreadable.push_back(path);
            return;
        }
        for (const auto& entry : *entries) {
            if (entry.name != "pyvenv.cfg") continue;
            const auto config = platform::readRegularFile(path / entry.name, pinFileLimit);
            if (!config) {
                result_.unreadable.push_back(path / entry.name);
                return;
            }
            if (const auto home = venvHome(*config); home.starts_with('/'))
                result_.venvHomes.push_back(Paths::standardized(home));
            return;
        }
        for (const auto& entry : *entries) {
            const auto type = entry.type ? entry.type : std::optional(platform::EntryType::other);
            if (names_.contains(entry.name) && type != platform::EntryType::directory) {
                pin(path, entry.name);
                continue;
            }
            // Below a folder that cannot be searched, the pin may or may not be there.
            for (auto [nested, end] = nested_.equal_range(entry.name); nested != end; ++nested) {
                const auto present = platform::isPresent(path / nested->second);
                if (present == true) pin(path, nested->second);
                else if (!present) result_.pins.push_back({path / nested->second, nested->second, std::nullopt});
            }
            if (depth >= maxDepth_ || !isFolder(path / entry.name, entry.type)) continue;
            if (entry.name.starts_with('.') && entry.name != ".venv") continue;
            if (std::find(passedOver.begin(), passedOver.end(), entry.name) != passedOver.end()) continue;
            folder(path / entry.name, depth + 1);
        }
    }

    ProjectPins take() { return std::move(result_); }

private:
    void pin(const std::filesystem::path& folder, const std::string& name) {
        const auto text = platform::readRegularFile(folder / name, pinFileLimit);
        // A dangling link pins nothing; anything else unreadable may pin anything.
        if (text || platform::exists(folder / name)) result_.pins.push_back({folder / name, name, text});
    }

    static bool isFolder(const std::filesystem::path& path, std::optional<platform::EntryType> type) {
        if (type) return *type == platform::EntryType::directory;
        // Unknown type (some file systems record none): ask the item itself, links not followed.
        return platform::isSymbolicLink(path) == false && platform::listDirectory(path, true).has_value();
    }

    const std::set<std::string>& names_;
    std::multimap<std::string, std::string> nested_;  // first folder -> the pin names below it
    std::stop_token stop_;
    int maxDepth_;
    ProjectPins result_;
};

}  // namespace

ProjectPins ProjectPins::read(const std::vector<std::filesystem::path>& roots, const std::set<std::string>& pinNames,
                              std::stop_token stop, int maxDepth) {
    Walk walk(pinNames, std::move(stop), maxDepth);
    for (const auto& root : roots) {
        // A root that does not exist holds no project; one that exists but cannot be read may.
        if (platform::isPresent(root) == false) continue;
        walk.folder(root, 0);
    }
    return walk.take();
}

}  // namespace kelvo
