#pragma once
// The resolved picture of one run: home and temporary directories, the configuration's
// values and the Flutter SDK cache if one is installed. Catalogs and services are built
// from it; it is a plain value and reads nothing after it is built.
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "kelvo/Family.h"

namespace kelvo {

// Variables set for a command Kelvo runs, by name.
using ShellVariables = std::map<std::string, std::string>;

struct Environment {
    std::filesystem::path home;
    std::filesystem::path tmpDir;
    std::vector<std::string> projectRoots;
    std::int64_t keepRecentDays = 3;
    std::optional<std::filesystem::path> flutterBinCache;
    std::vector<std::string> extraExclusions;
    std::optional<std::set<Family>> enabledFamilies;  // absent: every family is enabled

    // The running user's environment: home from liveHome, temporary directory from $TMPDIR
    // (else /tmp), the configuration file under home, and the Flutter cache found through
    // `/usr/bin/which flutter`.
    static Environment live();
    // The running user's home: $HOME, else the password database. When neither gives one
    // it is "/": scans still read from there, and no clean accepts it (SafetyGuard::refusalFor).
    static std::filesystem::path liveHome();
    // The same from an explicit home and temporary directory (no flutter lookup).
    static Environment fromConfig(const std::filesystem::path& home, const std::filesystem::path& tmpDir,
                                  const struct Config& config);

    // The rule for every user-typed path: "~" and "~/x" are home-based, "/x" absolute,
    // anything else home-relative; empty text and "~user" forms give nothing.
    static std::optional<std::filesystem::path> expand(const std::string& text, const std::filesystem::path& home);
    // The bin/cache folder of the Flutter SDK that `flutter` on the search path belongs to.
    static std::optional<std::filesystem::path> findFlutterBinCache();

    // Expanded project roots, the home itself dropped, order and duplicates kept.
    std::vector<std::filesystem::path> resolvedProjectRoots() const;
    std::vector<std::filesystem::path> resolvedExtraExclusions() const;
    // HOME and TMPDIR as resolved here: every command runs with them, never with the
    // variables Kelvo itself was started with, and the paths it names are expanded with them.
    ShellVariables shellVariables() const;
};

}  // namespace kelvo
