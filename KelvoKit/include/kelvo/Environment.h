#pragma once
// The resolved picture of one run: home and temporary directories, the configuration's
// values, the Flutter SDK cache if one is installed, the catalog profile, and the
// variables through which the user moved tools' data. Catalogs and services are built
// from it; it is a plain value and reads nothing after it is built. Catalogs and cleaners
// never read the process environment themselves: what they need of it is resolved here.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "kelvo/CatalogProfile.h"
#include "kelvo/Family.h"

namespace kelvo {

// Variables set for a command Kelvo runs, by name.
using ShellVariables = std::map<std::string, std::string>;

struct Environment {
    std::filesystem::path home;
    std::filesystem::path tmpDir;
    std::vector<std::string> projectRoots;
    // The folders under home found to hold projects (ProjectDiscovery), absolute; absent
    // while nobody looked. They count only while the configuration names no project
    // folder of the user's own (projectRootsConfigured).
    std::optional<std::vector<std::filesystem::path>> foundProjectRoots;
    std::int64_t keepRecentDays = 3;
    std::optional<std::filesystem::path> flutterBinCache;
    std::vector<std::string> extraExclusions;
    std::optional<std::set<Family>> enabledFamilies;  // absent: every family is enabled
    std::optional<bool> moveToTrash;                  // the configuration's choice; absent: not made
    CatalogProfile catalog = runningSystemProfile();
    // The location variables (names in locationVariableNames()) as the process had them;
    // unset and empty ones are absent.
    std::map<std::string, std::string, std::less<>> locationVariables;
    // The variables through which a shell picks a version manager's version (PYENV_VERSION,
    // RUSTUP_TOOLCHAIN: the managers' rows name them), as the process had them; unset and
    // empty ones are absent.
    std::map<std::string, std::string, std::less<>> versionVariables;

    // The running user's environment: home from liveHome, temporary directory from $TMPDIR
    // (else /tmp), the configuration file under home, the Flutter cache found through
    // `/usr/bin/which flutter`, and the location variables.
    static Environment live(CatalogProfile catalog = runningSystemProfile());
    // The running user's home: $HOME, else the password database. When neither gives one
    // it is "/": scans still read from there, and no clean accepts it (SafetyGuard::refusalFor).
    static std::filesystem::path liveHome();
    // The same from an explicit home and temporary directory (no flutter lookup).
    static Environment fromConfig(const std::filesystem::path& home, const std::filesystem::path& tmpDir,
                                  const struct Config& config);

    // The rule for every user-typed path: "~" and "~/x" are home-based, "/x" absolute,
    // anything else home-relative; empty text, "~user" forms and text holding a NUL
    // character give nothing.
    static std::optional<std::filesystem::path> expand(const std::string& text, const std::filesystem::path& home);
    // The bin/cache folder of the Flutter SDK that `flutter` on the search path belongs to.
    static std::optional<std::filesystem::path> findFlutterBinCache();

    // Whether a clean from the panel moves this family's path targets into the trash: the
    // configuration's choice, else the family's default.
    bool movesToTrash(Family family) const { return moveToTrash.value_or(trashedByDefault(family)); }
    // Whether the configuration names project folders of the user's own, that is other
    // than the default's.
    bool projectRootsConfigured() const;
    // Expanded project roots, the home itself dropped, order and duplicates kept; while
    // none is configured, followed by the found ones that lie in none of them.
    std::vector<std::filesystem::path> resolvedProjectRoots() const;
    std::vector<std::filesystem::path> resolvedExtraExclusions() const;
    // HOME and TMPDIR as resolved here: every command runs with them, never with the
    // variables Kelvo itself was started with, and the paths it names are expanded with them.
    ShellVariables shellVariables() const;

    // The variables that move a tool's data: the XDG base folders and the tools' own
    // (PIP_CACHE_DIR, CARGO_HOME, FLATPAK_USER_DIR, ...).
    static const std::vector<std::string>& locationVariableNames();
    // A location variable's value when it is an absolute path, standardised; nothing when
    // it is absent or not absolute (the tools take a relative one from their working
    // folder, which names no fixed place).
    std::optional<std::filesystem::path> locationVariable(std::string_view name) const;
    // The XDG base folders: the variable's path when it is usable as above, else the
    // default under home (~/.cache, ~/.local/share, ~/.config, ~/.local/state).
    std::filesystem::path cacheHome() const;
    std::filesystem::path dataHome() const;
    std::filesystem::path configHome() const;
    std::filesystem::path stateHome() const;
};

}  // namespace kelvo
