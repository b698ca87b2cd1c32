#pragma once
// The catalog of the clean domain: every place where developer tool chains keep data that
// can be regenerated, as an ordered list of detectors for the environment's profile. The
// macOS profile has 103 entries (102 when no Flutter SDK cache is known); the Linux one
// finds the tools' data where they keep it on Linux, following the XDG folders and each
// tool's own location variable, and offers a place only when it carries its tool's marks.
// Both come from one table and find their places the one way; a place outside the allowed
// roots is never listed. Building the list touches no file and runs no tool.
#include <filesystem>
#include <string>
#include <vector>

#include "kelvo/Cleaner.h"
#include "kelvo/Environment.h"

namespace kelvo::CleanerRegistry {

struct BuiltCatalog {
    CleanerList cleaners;
    // Localised, one per location variable whose places are not offered, saying why (outside
    // the allowed roots; naming the home, a project root or a folder holding one; a place
    // its entries cannot tell from the user's) and which entries it cost.
    std::vector<std::string> notes;
};

BuiltCatalog build(const Environment& env);
CleanerList makeCleaners(const Environment& env);
// Paths never deleted, nor anything inside them, nor any folder holding them.
std::vector<std::filesystem::path> protectedPaths(const Environment& env);
// The folders inside which the clean domain may delete: the home, the temporary folder
// and, when a Flutter SDK is known, its bin folder.
std::vector<std::filesystem::path> allowedRoots(const Environment& env);
// Every folder the catalog's path and versioned entries look at (their parents for the
// versioned ones), absolute: the tools' own places, never the user's projects.
std::vector<std::filesystem::path> places(const Environment& env);
// The names of the profile's per-project artefact folders ("node_modules", "target", ...).
std::vector<std::string> artifactNames(const Environment& env);
// The entries the profile's artefact kinds look for beside their folders, each a name or
// "*.ext": the manifests that mark a project ("package.json", "Cargo.toml", "*.csproj").
// Kinds that need several entries together (a Unity project's Assets and ProjectSettings)
// give none, since one of them alone marks no project.
std::vector<std::string> projectManifests(const Environment& env);
// The clean-domain families that have at least one detector in the environment's
// catalog, in declaration order: the families a settings screen offers.
std::vector<Family> familiesWithDetectors(const Environment& env);

}  // namespace kelvo::CleanerRegistry
