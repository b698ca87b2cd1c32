#include "kelvo/Environment.h"

#include <algorithm>

#include "kelvo/Config.h"
#include "kelvo/Paths.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/Process.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo {
namespace {

std::string trimmed(const std::string& text) {
    constexpr const char* blanks = " \t\n\r\v\f";
    const auto begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos) return "";
    const auto end = text.find_last_not_of(blanks);
    return text.substr(begin, end - begin + 1);
}

}  // namespace

Environment Environment::fromConfig(const std::filesystem::path& home, const std::filesystem::path& tmpDir,
                                    const Config& config) {
    Environment env;
    env.home = home;
    env.tmpDir = tmpDir;
    env.projectRoots = config.projectRoots;
    env.keepRecentDays = config.keepRecentDays;
    env.extraExclusions = config.extraExclusions;
    if (config.enabledFamilies) {
        std::set<Family> families;
        for (const auto& raw : *config.enabledFamilies)
            if (auto family = familyFromRawValue(raw)) families.insert(*family);
        env.enabledFamilies = std::move(families);
    }
    return env;
}

Environment Environment::live() {
    const auto home = platform::homeDirectory();
    Environment env = fromConfig(home, platform::temporaryDirectory(), Config::load(home));
    env.flutterBinCache = findFlutterBinCache();
    return env;
}

std::optional<std::filesystem::path> Environment::findFlutterBinCache() {
    const auto outcome = platform::runProgram("/usr/bin/which", {"flutter"}, true);
    if (!outcome || outcome->exitStatus != 0) return std::nullopt;
    const std::string found = trimmed(outcome->standardOutput);
    if (found.empty()) return std::nullopt;
    const auto tool = platform::resolveSymlinks(found);
    const auto bin = tool.parent_path();
    const auto root = bin.parent_path();
    if (!platform::exists(root / "bin/flutter") || !platform::exists(root / "packages/flutter_tools")) return std::nullopt;
    return bin / "cache";
}

std::optional<std::filesystem::path> Environment::expand(const std::string& text, const std::filesystem::path& home) {
    const std::string path = trimmed(text);
    if (path.empty()) return std::nullopt;
    if (path == "~") return home;
    if (path.starts_with("~/")) return home / path.substr(2);
    if (path.starts_with("~")) return std::nullopt;
    if (path.starts_with("/")) return std::filesystem::path(path);
    return home / path;
}

std::vector<std::filesystem::path> Environment::resolvedProjectRoots() const {
    const auto standardHome = Paths::standardized(home);
    std::vector<std::filesystem::path> roots;
    for (const auto& entry : projectRoots) {
        auto expanded = expand(entry, home);
        if (!expanded || Paths::standardized(*expanded) == standardHome) continue;
        roots.push_back(std::move(*expanded));
    }
    return roots;
}

std::vector<std::filesystem::path> Environment::resolvedExtraExclusions() const {
    std::vector<std::filesystem::path> exclusions;
    for (const auto& entry : extraExclusions)
        if (auto expanded = expand(entry, home)) exclusions.push_back(std::move(*expanded));
    return exclusions;
}

}  // namespace kelvo
