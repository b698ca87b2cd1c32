#include "kelvo/Environment.h"

#include <algorithm>
#include <string_view>

#include "kelvo/Config.h"
#include "vocabulary/Paths.h"
#include "config/VersionManagers.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/Process.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo {
namespace {

// Length of the white-space or line-break character at text[i], 0 when there is none:
// the ASCII ones and the Unicode spaces and separators a pasted path may carry (U+0085,
// U+00A0, U+1680, U+2000-U+200A, U+2028, U+2029, U+202F, U+205F, U+3000). Only whole,
// valid sequences count: text cut inside one, or invalid bytes, stay as they are.
std::size_t blankLength(std::string_view text, std::size_t i) {
    // Bytes past the end read as 0, which no multi-byte sequence holds.
    const auto byte = [&](std::size_t k) { return i + k < text.size() ? static_cast<unsigned char>(text[i + k]) : 0; };
    const unsigned char lead = byte(0);
    if (lead == ' ' || (lead >= '\t' && lead <= '\r')) return 1;
    if (lead == 0xC2 && (byte(1) == 0x85 || byte(1) == 0xA0)) return 2;
    if (lead == 0xE1 && byte(1) == 0x9A && byte(2) == 0x80) return 3;
    const unsigned char third = byte(2);
    if (lead == 0xE2 && byte(1) == 0x80 &&
        ((third >= 0x80 && third <= 0x8A) || third == 0xA8 || third == 0xA9 || third == 0xAF))
        return 3;
    if (lead == 0xE2 && byte(1) == 0x81 && byte(2) == 0x9F) return 3;
    if (lead == 0xE3 && byte(1) == 0x80 && byte(2) == 0x80) return 3;
    return 0;
}

std::string trimmed(std::string_view text) {
    std::size_t begin = 0;
    while (begin < text.size()) {
        const std::size_t length = blankLength(text, begin);
        if (length == 0) break;
        begin += length;
    }
    std::size_t end = text.size();
    while (end > begin) {
        // Blanks are 1 to 3 bytes long: try the ones that would end exactly at `end`.
        std::size_t length = 0;
        for (std::size_t candidate = 1; candidate <= 3 && candidate <= end - begin && length == 0; ++candidate)
            if (blankLength(text, end - candidate) == candidate) length = candidate;
        if (length == 0) break;
        end -= length;
    }
    return std::string(text.substr(begin, end - begin));
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
    env.moveToTrash = config.moveToTrash;
    if (config.enabledFamilies) {
        std::set<Family> families;
        for (const auto& raw : *config.enabledFamilies)
            if (auto family = familyFromRawValue(raw)) families.insert(*family);
        env.enabledFamilies = std::move(families);
    }
    return env;
}

std::filesystem::path Environment::liveHome() { return platform::homeDirectory().value_or("/"); }

Environment Environment::live(CatalogProfile catalog) {
    const auto home = liveHome();
    Environment env = fromConfig(home, platform::temporaryDirectory(), Config::load(home));
    env.flutterBinCache = findFlutterBinCache();
    env.catalog = catalog;
    for (const auto& name : locationVariableNames())
        if (auto value = platform::environmentVariable(name)) env.locationVariables.emplace(name, std::move(*value));
    for (const auto& manager : versionManagers()) {
        if (manager.versionVariable.empty()) continue;
        if (auto value = platform::environmentVariable(manager.versionVariable); value && !value->empty())
            env.versionVariables.emplace(manager.versionVariable, std::move(*value));
    }
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
    // No file name holds a NUL; the system would read such a path only up to it.
    if (text.find('\0') != std::string::npos) return std::nullopt;
    const std::string path = trimmed(text);
    if (path.empty()) return std::nullopt;
    if (path == "~") return home;
    if (path.starts_with("~/")) return Paths::appending(home, path.substr(2));
    if (path.starts_with("~")) return std::nullopt;
    if (path.starts_with("/")) return std::filesystem::path(path);
    return Paths::appending(home, path);
}

bool Environment::projectRootsConfigured() const { return projectRoots != Config::defaults().projectRoots; }

std::vector<std::filesystem::path> Environment::resolvedProjectRoots() const {
    const auto standardHome = Paths::standardized(home);
    std::vector<std::filesystem::path> roots;
    for (const auto& entry : projectRoots) {
        auto expanded = expand(entry, home);
        if (!expanded || Paths::same(Paths::standardized(*expanded).string(), standardHome.string())) continue;
        roots.push_back(std::move(*expanded));
    }
    if (projectRootsConfigured() || !foundProjectRoots) return roots;
    const std::size_t configured = roots.size();
    for (const auto& found : *foundProjectRoots) {
        const std::string path = Paths::standardized(found).string();
        const bool covered = std::any_of(roots.begin(), roots.begin() + static_cast<std::ptrdiff_t>(configured),
                                         [&](const std::filesystem::path& root) {
                                             const std::string walked = Paths::standardized(root).string();
                                             return Paths::same(walked, path) || Paths::isInside(path, walked);
                                         });
        if (!covered) roots.push_back(found);
    }
    return roots;
}

ShellVariables Environment::shellVariables() const {
    return {{"HOME", home.string()}, {"TMPDIR", tmpDir.string()}};
}

std::vector<std::filesystem::path> Environment::resolvedExtraExclusions() const {
    std::vector<std::filesystem::path> exclusions;
    for (const auto& entry : extraExclusions)
        if (auto expanded = expand(entry, home)) exclusions.push_back(std::move(*expanded));
    return exclusions;
}

const std::vector<std::string>& Environment::locationVariableNames() {
    static const std::vector<std::string> names{
        "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME",
        // JavaScript
        "npm_config_cache", "NPM_CONFIG_CACHE", "YARN_CACHE_FOLDER", "YARN_GLOBAL_FOLDER", "DENO_DIR", "PNPM_HOME",
        "CYPRESS_CACHE_FOLDER", "ELECTRON_CACHE", "ELECTRON_BUILDER_CACHE", "COREPACK_HOME",
        // Python
        "PIP_CACHE_DIR", "PIPX_HOME", "UV_CACHE_DIR", "POETRY_CACHE_DIR", "PIPENV_CACHE_DIR",
        // Rust, Go, C and C++, build tools, other languages
        "CARGO_HOME", "RUSTUP_HOME", "GOCACHE", "GOMODCACHE", "GOPATH", "SCCACHE_DIR", "VCPKG_DEFAULT_BINARY_CACHE",
        "BAZELISK_HOME", "HOMEBREW_CACHE", "PLAYWRIGHT_BROWSERS_PATH", "PUPPETEER_CACHE_DIR", "HF_HOME",
        "HELM_CACHE_HOME", "TF_PLUGIN_CACHE_DIR", "VAGRANT_HOME", "GEM_HOME", "BUNDLE_USER_CACHE", "COMPOSER_CACHE_DIR",
        "COMPOSER_HOME", "STACK_ROOT", "ZIG_GLOBAL_CACHE_DIR", "PUB_CACHE",
        // JVM, Android, .NET, game engines
        "GRADLE_USER_HOME", "MAVEN_USER_HOME", "ANDROID_HOME", "KONAN_DATA_DIR", "COURSIER_CACHE", "NUGET_PACKAGES", "UPM_CACHE_ROOT",
        // Version managers
        "PYENV_ROOT", "RBENV_ROOT", "GOENV_ROOT", "NVM_DIR", "FNM_DIR", "UV_PYTHON_INSTALL_DIR", "ASDF_DATA_DIR",
        "SDKMAN_DIR", "MISE_DATA_DIR", "MISE_CONFIG_DIR", "MISE_GLOBAL_CONFIG_FILE",
        // Flatpak installations
        "FLATPAK_USER_DIR", "FLATPAK_SYSTEM_DIR", "FLATPAK_CONFIG_DIR",
    };
    return names;
}

std::optional<std::filesystem::path> Environment::locationVariable(std::string_view name) const {
    const auto found = locationVariables.find(name);
    if (found == locationVariables.end() || !found->second.starts_with('/')) return std::nullopt;
    return Paths::standardized(found->second);
}

std::filesystem::path Environment::cacheHome() const {
    return locationVariable("XDG_CACHE_HOME").value_or(home / ".cache");
}

std::filesystem::path Environment::dataHome() const {
    return locationVariable("XDG_DATA_HOME").value_or(home / ".local/share");
}

std::filesystem::path Environment::configHome() const {
    return locationVariable("XDG_CONFIG_HOME").value_or(home / ".config");
}

std::filesystem::path Environment::stateHome() const {
    return locationVariable("XDG_STATE_HOME").value_or(home / ".local/state");
}

}  // namespace kelvo
