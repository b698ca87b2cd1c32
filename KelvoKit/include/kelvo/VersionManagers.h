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
};

// How a version folder's name relates to the names users write.
enum class VersionNaming {
    plain,     // the folder is named as users write the version (3.11.7, stable-x86_64-...)
    nodeStyle, // "v20.11.0": users write 20, v20, 20.11, lts/*, node
    uvKey,     // "cpython-3.12.1-linux-x86_64-gnu": users write 3.12, cpython@3.12, pypy@3.10
};

struct VersionManager {
    std::string id;     // target ids are "runtime:" + id + "/" + the version's folder name
    std::string name;   // the tool's own name, shown to the user
    std::string rootVariable;
    // Where the tool lives when the variable is unset, the first that exists: home-relative,
    // or under the XDG data folder when it begins with "$data/".
    std::vector<std::string> defaultRoots;
    std::string versionsFolder;  // relative to the root; empty: the root itself
    bool perLanguage = false;    // versions are grouped per language (see above)
    // The tool keeps no default and reads no pins: the version last installed or updated (its
    // folder's modification time) is the one in use.
    bool newestInUse = false;
    std::string mainProgram;     // relative to a version folder; empty: the folder's own time tells
    // Relative to the root, or to the home when it begins with "~/"; per language relative to
    // the language's folder; empty: the tool has no default.
    std::string defaultFile;
    VersionSyntax defaultSyntax = VersionSyntax::words;
    std::string aliasFolder;     // relative to the root: named aliases a pin may use (nvm)
    std::string versionVariable; // names the versions a shell uses, like a default; ":" separates several
    std::vector<std::string> pinFiles;
    VersionSyntax pinSyntax = VersionSyntax::words;
    VersionNaming naming = VersionNaming::plain;
    // The language's and version's folder names are appended; empty: no command (a shell function).
    std::string removal;
    RegenCost regenCost = RegenCost::redownload;
};

const std::vector<VersionManager>& versionManagers();

}  // namespace kelvo
