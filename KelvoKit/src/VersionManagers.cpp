#include "kelvo/VersionManagers.h"

namespace kelvo {

// Left out for want of facts that hold across their versions: mise (its settings files take
// many forms, and the form of its own list of versions it would prune is not documented),
// volta (no removal of a runtime), n and rvm (shared or undocumented defaults). asdf and
// SDKMAN! run a different program per language, so a version's last use is its folder's time.
const std::vector<VersionManager>& versionManagers() {
    using S = VersionSyntax;
    using N = VersionNaming;
    static const std::vector<VersionManager> rows{
        {.id = "pyenv", .name = "pyenv", .rootVariable = "PYENV_ROOT", .defaultRoots = {".pyenv"},
         .versionsFolder = "versions", .perLanguage = false, .mainProgram = "bin/python", .defaultFile = "version",
         .defaultSyntax = S::words, .aliasFolder = "", .versionVariable = "PYENV_VERSION",
         .pinFiles = {".python-version", ".pyenv-version"},
         .pinSyntax = S::words, .naming = N::plain, .removal = "pyenv uninstall -f", .regenCost = RegenCost::rebuild},
        {.id = "rustup", .name = "rustup", .rootVariable = "RUSTUP_HOME", .defaultRoots = {".rustup"},
         .versionsFolder = "toolchains", .perLanguage = false, .mainProgram = "bin/rustc", .defaultFile = "settings.toml",
         .defaultSyntax = S::rustupSettings, .aliasFolder = "", .versionVariable = "RUSTUP_TOOLCHAIN",
         .pinFiles = {"rust-toolchain.toml", "rust-toolchain"},
         .pinSyntax = S::rustToolchain, .naming = N::plain, .removal = "rustup toolchain uninstall",
         .regenCost = RegenCost::redownload},
        // nvm is a shell function, not a program: its versions go by path.
        {.id = "nvm", .name = "nvm", .rootVariable = "NVM_DIR", .defaultRoots = {".nvm"},
         .versionsFolder = "versions/node", .perLanguage = false, .mainProgram = "bin/node", .defaultFile = "alias/default",
         .defaultSyntax = S::words, .aliasFolder = "alias", .versionVariable = "", .pinFiles = {".nvmrc", ".node-version"},
         .pinSyntax = S::words, .naming = N::nodeStyle, .removal = "", .regenCost = RegenCost::redownload},
        // fnm keeps using ~/.fnm where an older release made it, else the XDG data folder.
        {.id = "fnm", .name = "fnm", .rootVariable = "FNM_DIR", .defaultRoots = {".fnm", "$data/fnm"},
         .versionsFolder = "node-versions", .perLanguage = false, .mainProgram = "installation/bin/node", .defaultFile = "aliases/default",
         .defaultSyntax = S::aliasLink, .aliasFolder = "aliases", .versionVariable = "", .pinFiles = {".node-version", ".nvmrc"},
         .pinSyntax = S::words, .naming = N::nodeStyle, .removal = "fnm uninstall", .regenCost = RegenCost::redownload},
        {.id = "rbenv", .name = "rbenv", .rootVariable = "RBENV_ROOT", .defaultRoots = {".rbenv"},
         .versionsFolder = "versions", .perLanguage = false, .mainProgram = "bin/ruby", .defaultFile = "version", .defaultSyntax = S::words,
         .aliasFolder = "", .versionVariable = "", .pinFiles = {".ruby-version"}, .pinSyntax = S::words, .naming = N::plain,
         .removal = "rbenv uninstall -f", .regenCost = RegenCost::rebuild},
        {.id = "goenv", .name = "goenv", .rootVariable = "GOENV_ROOT", .defaultRoots = {".goenv"},
         .versionsFolder = "versions", .perLanguage = false, .mainProgram = "bin/go", .defaultFile = "version", .defaultSyntax = S::words,
         .aliasFolder = "", .versionVariable = "", .pinFiles = {".go-version"}, .pinSyntax = S::words, .naming = N::plain,
         .removal = "goenv uninstall -f", .regenCost = RegenCost::redownload},
        {.id = "uv-python", .name = "uv", .rootVariable = "UV_PYTHON_INSTALL_DIR", .defaultRoots = {"$data/uv/python"},
         .versionsFolder = "", .perLanguage = false, .mainProgram = "bin/python3", .defaultFile = "", .defaultSyntax = S::words,
         .aliasFolder = "", .versionVariable = "", .pinFiles = {".python-version"}, .pinSyntax = S::words, .naming = N::uvKey,
         .removal = "uv python uninstall", .regenCost = RegenCost::redownload},
        // Plugins may build a version from source: the costlier of the two.
        {.id = "asdf", .name = "asdf", .rootVariable = "ASDF_DATA_DIR", .defaultRoots = {".asdf"},
         .versionsFolder = "installs", .perLanguage = true, .mainProgram = "", .defaultFile = "~/.tool-versions",
         .defaultSyntax = S::toolLines, .aliasFolder = "", .versionVariable = "", .pinFiles = {".tool-versions"}, .pinSyntax = S::toolLines,
         .naming = N::plain, .removal = "asdf uninstall", .regenCost = RegenCost::rebuild},
        // sdk is a shell function: versions go by path. "current" links to the default; a
        // version installed from a local folder is a link too, never weighed.
        {.id = "sdkman", .name = "SDKMAN!", .rootVariable = "SDKMAN_DIR", .defaultRoots = {".sdkman"},
         .versionsFolder = "candidates", .perLanguage = true, .mainProgram = "", .defaultFile = "current",
         .defaultSyntax = S::aliasLink, .aliasFolder = "", .versionVariable = "", .pinFiles = {".sdkmanrc"}, .pinSyntax = S::toolAssignments,
         .naming = N::plain, .removal = "", .regenCost = RegenCost::redownload},
        // The Gradle wrapper's distributions, one per version and kind ("gradle-8.5-bin"), each
        // holding one folder per download address; a project's wrapper properties name one.
        // Gradle itself keeps no default and removes no distribution on demand.
        {.id = "gradle-wrapper", .name = "Gradle", .rootVariable = "GRADLE_USER_HOME", .defaultRoots = {".gradle"},
         .versionsFolder = "wrapper/dists", .perLanguage = false, .mainProgram = "", .defaultFile = "",
         .defaultSyntax = S::words, .aliasFolder = "", .versionVariable = "", .pinFiles = {"gradle-wrapper.properties"},
         .pinSyntax = S::wrapperUrl, .naming = N::plain, .removal = "", .regenCost = RegenCost::redownload},
        // The server builds a remote VS Code window installs, one per client commit: older
        // releases put them in bin, newer ones in cli/servers. A client downloads its build again.
        {.id = "vscode-server", .name = "VS Code server", .rootVariable = "", .defaultRoots = {".vscode-server"},
         .versionsFolder = "bin", .perLanguage = false, .newestInUse = true, .mainProgram = "", .defaultFile = "",
         .defaultSyntax = S::words, .aliasFolder = "", .versionVariable = "", .pinFiles = {}, .pinSyntax = S::words,
         .naming = N::plain, .removal = "", .regenCost = RegenCost::redownload},
        {.id = "vscode-server-cli", .name = "VS Code server", .rootVariable = "", .defaultRoots = {".vscode-server"},
         .versionsFolder = "cli/servers", .perLanguage = false, .newestInUse = true, .mainProgram = "",
         .defaultFile = "", .defaultSyntax = S::words, .aliasFolder = "", .versionVariable = "", .pinFiles = {},
         .pinSyntax = S::words, .naming = N::plain, .removal = "", .regenCost = RegenCost::redownload},
    };
    return rows;
}

}  // namespace kelvo
