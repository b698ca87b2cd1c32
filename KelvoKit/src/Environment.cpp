#include "kelvo/Environment.h"

#include <string_view>

#include "kelvo/Config.h"
#include "kelvo/Paths.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/Process.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo {
namespace {

// Length of the white-space or line-break character at text[i], 0 when there is none:
// the ASCII ones and the Unicode spaces and separators a pasted path may carry (U+0085,
// U+00A0, U+1680, U+2000-U+200A, U+2028, U+2029, U+202F, U+205F, U+3000).
std::size_t blankLength(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t k) { return i + k < text.size() ? static_cast<unsigned char>(text[i + k]) : 0; };
    const unsigned char lead = byte(0);
    if (lead == ' ' || (lead >= '\t' && lead <= '\r')) return 1;
    if (lead == 0xC2 && (byte(1) == 0x85 || byte(1) == 0xA0)) return 2;
    if (lead == 0xE1 && byte(1) == 0x9A && byte(2) == 0x80) return 3;
    // E2 80 is always followed by a continuation byte (0x80 or more) in valid text.
    const unsigned char third = byte(2);
    if (lead == 0xE2 && byte(1) == 0x80 && (third <= 0x8A || third == 0xA8 || third == 0xA9 || third == 0xAF)) return 3;
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
    if (config.enabledFamilies) {
        std::set<Family> families;
        for (const auto& raw : *config.enabledFamilies)
            if (auto family = familyFromRawValue(raw)) families.insert(*family);
        env.enabledFamilies = std::move(families);
    }
    return env;
}

std::filesystem::path Environment::liveHome() { return platform::homeDirectory().value_or("/"); }

Environment Environment::live() {
    const auto home = liveHome();
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
    if (path.starts_with("~/")) return Paths::appending(home, path.substr(2));
    if (path.starts_with("~")) return std::nullopt;
    if (path.starts_with("/")) return std::filesystem::path(path);
    return Paths::appending(home, path);
}

std::vector<std::filesystem::path> Environment::resolvedProjectRoots() const {
    const auto standardHome = Paths::standardized(home);
    std::vector<std::filesystem::path> roots;
    for (const auto& entry : projectRoots) {
        auto expanded = expand(entry, home);
        if (!expanded || Paths::same(Paths::standardized(*expanded).string(), standardHome.string())) continue;
        roots.push_back(std::move(*expanded));
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

}  // namespace kelvo
