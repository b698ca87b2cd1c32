#pragma once
// The version managers whose installed versions the old-runtime detector weighs: one row
// per tool, facts only, read by the one detector (OldRuntimeDetector). A row says where the
// tool keeps its versions and which variable moves them, which program inside a version
// runs when it is used, where the tool writes its default and how that file reads, which
// files pin a version in a project and how they read, and the tool's own removal command.
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
    std::string mainProgram;     // relative to a version folder
    std::string defaultFile;     // relative to the root; empty: the tool has no default
    VersionSyntax defaultSyntax = VersionSyntax::words;
    std::string aliasFolder;     // relative to the root: named aliases a pin may use (nvm)
    std::vector<std::string> pinFiles;
    VersionSyntax pinSyntax = VersionSyntax::words;
    VersionNaming naming = VersionNaming::plain;
    std::string removal;  // the version's folder name is appended; empty: no command (a shell function)
    RegenCost regenCost = RegenCost::redownload;
};

const std::vector<VersionManager>& versionManagers();

}  // namespace kelvo
