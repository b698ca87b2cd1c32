#include "kelvo/VersionManagers.h"

namespace kelvo {

// Left out for want of facts that hold across their versions: asdf and mise (per-plugin
// layouts and main programs), SDKMAN! (its default is a "current" link whose form is not
// documented), volta (no removal of a runtime), n and rvm (shared or undocumented defaults).
const std::vector<VersionManager>& versionManagers() {
    using S = VersionSyntax;
    using N = VersionNaming;
    static const std::vector<VersionManager> rows{
        {.id = "pyenv", .name = "pyenv", .rootVariable = "PYENV_ROOT", .defaultRoots = {".pyenv"},
         .versionsFolder = "versions", .mainProgram = "bin/python", .defaultFile = "version",
         .defaultSyntax = S::words, .aliasFolder = "", .pinFiles = {".python-version", ".pyenv-version"},
         .pinSyntax = S::words, .naming = N::plain, .removal = "pyenv uninstall -f", .regenCost = RegenCost::rebuild},
        {.id = "rustup", .name = "rustup", .rootVariable = "RUSTUP_HOME", .defaultRoots = {".rustup"},
         .versionsFolder = "toolchains", .mainProgram = "bin/rustc", .defaultFile = "settings.toml",
         .defaultSyntax = S::rustupSettings, .aliasFolder = "", .pinFiles = {"rust-toolchain.toml", "rust-toolchain"},
         .pinSyntax = S::rustToolchain, .naming = N::plain, .removal = "rustup toolchain uninstall",
         .regenCost = RegenCost::redownload},
        // nvm is a shell function, not a program: its versions go by path.
        {.id = "nvm", .name = "nvm", .rootVariable = "NVM_DIR", .defaultRoots = {".nvm"},
         .versionsFolder = "versions/node", .mainProgram = "bin/node", .defaultFile = "alias/default",
         .defaultSyntax = S::words, .aliasFolder = "alias", .pinFiles = {".nvmrc", ".node-version"},
         .pinSyntax = S::words, .naming = N::nodeStyle, .removal = "", .regenCost = RegenCost::redownload},
        // fnm keeps using ~/.fnm where an older release made it, else the XDG data folder.
        {.id = "fnm", .name = "fnm", .rootVariable = "FNM_DIR", .defaultRoots = {".fnm", "$data/fnm"},
         .versionsFolder = "node-versions", .mainProgram = "installation/bin/node", .defaultFile = "aliases/default",
         .defaultSyntax = S::aliasLink, .aliasFolder = "aliases", .pinFiles = {".node-version", ".nvmrc"},
         .pinSyntax = S::words, .naming = N::nodeStyle, .removal = "fnm uninstall", .regenCost = RegenCost::redownload},
        {.id = "rbenv", .name = "rbenv", .rootVariable = "RBENV_ROOT", .defaultRoots = {".rbenv"},
         .versionsFolder = "versions", .mainProgram = "bin/ruby", .defaultFile = "version", .defaultSyntax = S::words,
         .aliasFolder = "", .pinFiles = {".ruby-version"}, .pinSyntax = S::words, .naming = N::plain,
         .removal = "rbenv uninstall -f", .regenCost = RegenCost::rebuild},
        {.id = "goenv", .name = "goenv", .rootVariable = "GOENV_ROOT", .defaultRoots = {".goenv"},
         .versionsFolder = "versions", .mainProgram = "bin/go", .defaultFile = "version", .defaultSyntax = S::words,
         .aliasFolder = "", .pinFiles = {".go-version"}, .pinSyntax = S::words, .naming = N::plain,
         .removal = "goenv uninstall -f", .regenCost = RegenCost::redownload},
        {.id = "uv-python", .name = "uv", .rootVariable = "UV_PYTHON_INSTALL_DIR", .defaultRoots = {"$data/uv/python"},
         .versionsFolder = "", .mainProgram = "bin/python3", .defaultFile = "", .defaultSyntax = S::words,
         .aliasFolder = "", .pinFiles = {".python-version"}, .pinSyntax = S::words, .naming = N::uvKey,
         .removal = "uv python uninstall", .regenCost = RegenCost::redownload},
    };
    return rows;
}

}  // namespace kelvo
