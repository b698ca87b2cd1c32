#pragma once
// The version managers whose installed versions the old-runtime detector weighs: one row
// per tool, facts only, read by the one detector (OldRuntimeDetector). A row says where the
// tool keeps its versions and which variable moves them, which program inside a version
// runs when it is used, where the tool writes its default and how that file reads, the
// variable that picks a version for a shell, which files pin a version in a project and how
// they read, and the tool's own removal command. A tool that manages several languages
// (asdf, SDKMAN!) groups its versions per language: <versions>/<language>/<version>; each
// language is weighed on its own, its default and pins read from the lines that name it.
#include <string>
#include <vector>

#include "kelvo/RiskAxes.h"

namespace kelvo {

// How a default or pin file names versions.
enum class VersionSyntax {
    words,          // version names separated by blanks or lines; "#" starts a comment line
    rustToolchain,  // rust-toolchain.toml's [toolchain] channel, or the legacy one-line file
    rustupSettings, // settings.toml: default_toolchain and the directory overrides
    aliasLink,      // a symbolic link into the version it names
    toolLines,      // "<language> <version> [<version> ...]" lines; "#" starts a comment
    toolAssignments, // "<language>=<version>" lines; "#" starts a comment line
    wrapperUrl,     // a properties file whose distributionUrl's file, less ".zip", names the version
    miseConfig,     // a ".toml" file's [tools] table (node = "20", a list, or { version = ... });
                    // any other name is read as toolLines
};

// How a version folder's name relates to the names users write.
enum class VersionNaming {
    plain,     // the folder is named as users write the version (3.11.7, stable-x86_64-...)
    nodeStyle, // "v20.11.0": users write 20, v20, 20.11, lts/*, node
    uvKey,     // "cpython-3.12.1-linux-x86_64-gnu": users write 3.12, cpython@3.12, pypy@3.10
    // "20.11.0", and links beside it named as users write a partial version ("20", "latest"):
    // users write a version beginning with a digit (a leading "v" allowed), "latest", a
    // link's name, "prefix:<v>" or "path:<folder>"; any other word is not understood.
    numbered,
    // "IntelliJIdea2024.1": a product and the version that ends the name. With newestInUse,
    // the newest version of each product is the one in use; a name not ending in a version
    // is not a version (kept).
    productVersion,
};

// A name that belongs to one language: a pin file read as words for it (".nvmrc" for
// node), or another name a pin gives it ("nodejs").
struct LanguageName {
    std::string name;
    std::string language;
};

struct VersionManager {
    std::string id;     // target ids are "runtime:" + id + "/" + the version's folder name
    std::string name;   // the tool's own name, shown to the user
    std::string rootVariable;
    // Where the tool lives when the variable is unset, the first that exists: home-relative,
    // or under the XDG data or cache folder when it begins with "$data/" or "$cache/".
    std::vector<std::string> defaultRoots;
    std::string versionsFolder;  // relative to the root; empty: the root itself
    bool perLanguage = false;    // versions are grouped per language (see above)
    // The tool keeps no default and reads no pins: the version last installed or updated (its
    // folder's modification time) is the one in use.
    bool newestInUse = false;
    std::string mainProgram;     // relative to a version folder; empty: the folder's own time tells
    // mainProgram is a file written on every use (a log), so its modification time tells.
    bool mainProgramWritten = false;
    // Relative to the root, to the home when it begins with "~/", to the XDG config folder
    // when it begins with "$config/"; per language relative to the language's folder; empty:
    // the tool has no default.
    std::string defaultFile;
    // Variables that move the default file, the first set wins: "VAR" names the file itself,
    // "VAR/name" a file of that name in the folder VAR names.
    std::vector<std::string> defaultVariables;
    // A folder beside the default file whose every ".toml" file is a default too; empty: none.
    std::string defaultDropIns;
    VersionSyntax defaultSyntax = VersionSyntax::words;
    std::string aliasFolder;     // relative to the root: named aliases a pin may use (nvm)
    std::string versionVariable; // names the versions a shell uses, like a default; ":" separates several
    // File names, or paths below a project folder (".mise/config.toml"); every one found in
    // the home itself also counts, since the home holds every project below it.
    std::vector<std::string> pinFiles;
    std::vector<LanguageName> languagePins;
    // Other names a pin may give a language ("nodejs" for the "node" folder).
    std::vector<LanguageName> languageAliases;
    VersionSyntax pinSyntax = VersionSyntax::words;
    VersionNaming naming = VersionNaming::plain;
    // The language's and version's folder names are appended, as one word joined by
    // languageJoin when it is not blank; empty: no command (a shell function).
    std::string removal;
    std::string languageJoin = " ";
    RegenCost regenCost = RegenCost::redownload;
};

const std::vector<VersionManager>& versionManagers();

}  // namespace kelvo
