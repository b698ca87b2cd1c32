#include "config/VersionManagers.h"

namespace kelvo {

// Left out for want of facts that hold across their versions: volta (no removal of a
// runtime), n and rvm (shared or undocumented defaults). asdf, mise and SDKMAN! run a
// different program per language, so a version's last use is its folder's time.
const std::vector<VersionManager>& versionManagers() {
    using S = VersionSyntax;
    using N = VersionNaming;
    static const std::vector<VersionManager> rows{
        {.id = "pyenv", .name = "pyenv", .rootVariable = "PYENV_ROOT", .defaultRoots = {".pyenv"},
         .versionsFolder = "versions", .perLanguage = false, .mainProgram = "bin/python", .defaultFile = "version",
         .defaultVariables = {}, .defaultDropIns = "",
         .defaultSyntax = S::words, .aliasFolder = "", .versionVariable = "PYENV_VERSION",
         .pinFiles = {".python-version", ".pyenv-version"},
         .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::words, .naming = N::plain, .removal = "pyenv uninstall -f", .regenCost = RegenCost::rebuild},
        {.id = "rustup", .name = "rustup", .rootVariable = "RUSTUP_HOME", .defaultRoots = {".rustup"},
         .versionsFolder = "toolchains", .perLanguage = false, .mainProgram = "bin/rustc", .defaultFile = "settings.toml",
         .defaultVariables = {}, .defaultDropIns = "",
         .defaultSyntax = S::rustupSettings, .aliasFolder = "", .versionVariable = "RUSTUP_TOOLCHAIN",
         .pinFiles = {"rust-toolchain.toml", "rust-toolchain"},
         .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::rustToolchain, .naming = N::plain, .removal = "rustup toolchain uninstall",
         .regenCost = RegenCost::redownload},
        // nvm is a shell function, not a program: its versions go by path.
        {.id = "nvm", .name = "nvm", .rootVariable = "NVM_DIR", .defaultRoots = {".nvm"},
         .versionsFolder = "versions/node", .perLanguage = false, .mainProgram = "bin/node", .defaultFile = "alias/default",
         .defaultVariables = {}, .defaultDropIns = "",
         .defaultSyntax = S::words, .aliasFolder = "alias", .versionVariable = "", .pinFiles = {".nvmrc", ".node-version"},
         .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::words, .naming = N::nodeStyle, .removal = "", .regenCost = RegenCost::redownload},
        // fnm keeps using ~/.fnm where an older release made it, else the XDG data folder.
        {.id = "fnm", .name = "fnm", .rootVariable = "FNM_DIR", .defaultRoots = {".fnm", "$data/fnm"},
         .versionsFolder = "node-versions", .perLanguage = false, .mainProgram = "installation/bin/node", .defaultFile = "aliases/default",
         .defaultVariables = {}, .defaultDropIns = "",
         .defaultSyntax = S::aliasLink, .aliasFolder = "aliases", .versionVariable = "", .pinFiles = {".node-version", ".nvmrc"},
         .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::words, .naming = N::nodeStyle, .removal = "fnm uninstall", .regenCost = RegenCost::redownload},
        {.id = "rbenv", .name = "rbenv", .rootVariable = "RBENV_ROOT", .defaultRoots = {".rbenv"},
         .versionsFolder = "versions", .perLanguage = false, .mainProgram = "bin/ruby", .defaultFile = "version",
         .defaultVariables = {}, .defaultDropIns = "", .defaultSyntax = S::words, .aliasFolder = "",
         .versionVariable = "", .pinFiles = {".ruby-version"}, .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::words, .naming = N::plain, .removal = "rbenv uninstall -f", .regenCost = RegenCost::rebuild},
        {.id = "goenv", .name = "goenv", .rootVariable = "GOENV_ROOT", .defaultRoots = {".goenv"},
         .versionsFolder = "versions", .perLanguage = false, .mainProgram = "bin/go", .defaultFile = "version",
         .defaultVariables = {}, .defaultDropIns = "", .defaultSyntax = S::words, .aliasFolder = "",
         .versionVariable = "", .pinFiles = {".go-version"}, .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::words, .naming = N::plain, .removal = "goenv uninstall -f", .regenCost = RegenCost::redownload},
        {.id = "uv-python", .name = "uv", .rootVariable = "UV_PYTHON_INSTALL_DIR", .defaultRoots = {"$data/uv/python"},
         .versionsFolder = "", .perLanguage = false, .mainProgram = "bin/python3", .defaultFile = "",
         .defaultVariables = {}, .defaultDropIns = "", .defaultSyntax = S::words, .aliasFolder = "",
         .versionVariable = "", .pinFiles = {".python-version"}, .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::words, .naming = N::uvKey, .removal = "uv python uninstall", .regenCost = RegenCost::redownload},
        // Plugins may build a version from source: the costlier of the two.
        {.id = "asdf", .name = "asdf", .rootVariable = "ASDF_DATA_DIR", .defaultRoots = {".asdf"},
         .versionsFolder = "installs", .perLanguage = true, .mainProgram = "", .defaultFile = "~/.tool-versions",
         .defaultVariables = {}, .defaultDropIns = "", .defaultSyntax = S::toolLines, .aliasFolder = "",
         .versionVariable = "", .pinFiles = {".tool-versions"}, .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::toolLines, .naming = N::plain, .removal = "asdf uninstall", .regenCost = RegenCost::rebuild},
        // sdk is a shell function: versions go by path. "current" links to the default; a
        // version installed from a local folder is a link too, never weighed.
        {.id = "sdkman", .name = "SDKMAN!", .rootVariable = "SDKMAN_DIR", .defaultRoots = {".sdkman"},
         .versionsFolder = "candidates", .perLanguage = true, .mainProgram = "", .defaultFile = "current",
         .defaultVariables = {}, .defaultDropIns = "", .defaultSyntax = S::aliasLink, .aliasFolder = "",
         .versionVariable = "", .pinFiles = {".sdkmanrc"}, .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::toolAssignments, .naming = N::plain, .removal = "", .regenCost = RegenCost::redownload},
        // The Gradle wrapper's distributions, one per version and kind ("gradle-8.5-bin"), each
        // holding one folder per download address; a project's wrapper properties name one.
        // Gradle itself keeps no default and removes no distribution on demand.
        {.id = "gradle-wrapper", .name = "Gradle", .rootVariable = "GRADLE_USER_HOME", .defaultRoots = {".gradle"},
         .versionsFolder = "wrapper/dists", .perLanguage = false, .mainProgram = "", .defaultFile = "",
         .defaultVariables = {}, .defaultDropIns = "",
         .defaultSyntax = S::words, .aliasFolder = "", .versionVariable = "", .pinFiles = {"gradle-wrapper.properties"},
         .languagePins = {}, .languageAliases = {},
         .pinSyntax = S::wrapperUrl, .naming = N::plain, .removal = "", .regenCost = RegenCost::redownload},
        // mise reads the versions of every config file from the current folder up to the root,
        // the global one last; the files a tool's own version file may pin ("idiomatic" files)
        // are read only where a setting enables them, which may lie in any of those files: they
        // always count here. A config file's [tools] table names versions as mise resolves them
        // (a prefix, "latest", a link mise keeps beside the versions); any other request is not
        // understood. Tools of other backends ("npm:prettier") live in "npm-prettier".
        {.id = "mise", .name = "mise", .rootVariable = "MISE_DATA_DIR", .defaultRoots = {"$data/mise"},
         .versionsFolder = "installs", .perLanguage = true, .mainProgram = "", .defaultFile = "$config/mise/config.toml",
         .defaultVariables = {"MISE_GLOBAL_CONFIG_FILE", "MISE_CONFIG_DIR/config.toml"}, .defaultDropIns = "conf.d",
         .defaultSyntax = S::miseConfig, .aliasFolder = "", .versionVariable = "",
         .pinFiles = {"mise.toml", ".mise.toml", "mise.local.toml", ".mise.local.toml", "mise/config.toml",
                      ".mise/config.toml", ".config/mise.toml", ".config/mise/config.toml", ".tool-versions"},
         .languagePins = {{".python-version", "python"}, {".nvmrc", "node"}, {".node-version", "node"},
                          {".ruby-version", "ruby"}, {".go-version", "go"}},
         .languageAliases = {{"nodejs", "node"}, {"golang", "go"}},
         .pinSyntax = S::miseConfig, .naming = N::numbered, .removal = "mise uninstall", .languageJoin = "@",
         .regenCost = RegenCost::rebuild},
        // The Maven wrapper's distributions, as the Gradle wrapper's. The wrapper's jar keeps the
        // file's name ("apache-maven-3.9.6-bin"), its script alone drops the "-bin".
        {.id = "maven-wrapper", .name = "Maven", .rootVariable = "MAVEN_USER_HOME", .defaultRoots = {".m2"},
         .versionsFolder = "wrapper/dists", .perLanguage = false, .mainProgram = "", .defaultFile = "",
         .defaultVariables = {}, .defaultDropIns = "", .defaultSyntax = S::words, .aliasFolder = "",
         .versionVariable = "", .pinFiles = {".mvn/wrapper/maven-wrapper.properties"}, .languagePins = {},
         .languageAliases = {}, .pinSyntax = S::wrapperUrl, .naming = N::plain, .removal = "",
         .regenCost = RegenCost::redownload},
        // A JetBrains IDE keeps its caches and logs (log/) per product and major version; the IDE
        // itself removes those of older versions after 180 days unused. Every run writes
        // log/idea.log. Never the configuration or plugins folders: those hold the user's settings.
        {.id = "jetbrains", .name = "JetBrains caches", .rootVariable = "", .defaultRoots = {"$cache/JetBrains"},
         .versionsFolder = "", .perLanguage = false, .newestInUse = true, .mainProgram = "log/idea.log",
         .mainProgramWritten = true, .defaultFile = "", .defaultVariables = {}, .defaultDropIns = "",
         .defaultSyntax = S::words, .aliasFolder = "", .versionVariable = "", .pinFiles = {}, .languagePins = {},
         .languageAliases = {}, .pinSyntax = S::words, .naming = N::productVersion, .removal = "",
         .regenCost = RegenCost::reindex},
        // The server builds a remote VS Code window installs, one per client commit: older
        // releases put them in bin, newer ones in cli/servers. A client downloads its build again.
        {.id = "vscode-server", .name = "VS Code server", .rootVariable = "", .defaultRoots = {".vscode-server"},
         .versionsFolder = "bin", .perLanguage = false, .newestInUse = true, .mainProgram = "", .defaultFile = "",
         .defaultVariables = {}, .defaultDropIns = "", .defaultSyntax = S::words, .aliasFolder = "",
         .versionVariable = "", .pinFiles = {}, .languagePins = {}, .languageAliases = {}, .pinSyntax = S::words,
         .naming = N::plain, .removal = "", .regenCost = RegenCost::redownload},
        {.id = "vscode-server-cli", .name = "VS Code server", .rootVariable = "", .defaultRoots = {".vscode-server"},
         .versionsFolder = "cli/servers", .perLanguage = false, .newestInUse = true, .mainProgram = "",
         .defaultFile = "", .defaultVariables = {}, .defaultDropIns = "", .defaultSyntax = S::words, .aliasFolder = "",
         .versionVariable = "", .pinFiles = {}, .languagePins = {}, .languageAliases = {}, .pinSyntax = S::words,
         .naming = N::plain, .removal = "", .regenCost = RegenCost::redownload},
    };
    return rows;
}

}  // namespace kelvo
