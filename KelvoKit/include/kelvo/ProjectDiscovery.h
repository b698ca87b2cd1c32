#pragma once
// Where the user's projects live, for a user who has not said so: on the Linux profile,
// while the configuration names no project folder of its own, the folders under the home
// that hold projects. A project is a folder at most maxDepth levels below the home that
// holds a version-control folder (.git, .hg, .svn), a go.mod, or a manifest the per-project
// artefact kinds look for beside their folders (package.json, Cargo.toml, pyproject.toml,
// CMakeLists.txt, build.gradle, *.csproj, ...). What is reported is the folder holding each
// project (~/code for ~/code/app), or the project itself when it lies right in the home,
// and no folder inside another one reported: the per-project walk goes down from there.
// The search walks by directory descriptors and follows no link; it does not enter hidden
// folders, the catalog's own places (a crate registry full of Cargo.toml files is not the
// user's), folders named like a build artefact (a node_modules left in the home), nor a
// project once found. What cannot be read is passed over. Nothing here throws.
#include <filesystem>
#include <stop_token>
#include <vector>

#include "kelvo/Environment.h"

namespace kelvo::ProjectDiscovery {

constexpr int maxDepth = 5;

// Whether the environment's project folders are to be found: the Linux profile and no
// project folder configured.
bool applies(const Environment& env);
// The folders holding projects under env.home, sorted; empty when none or when stopped.
std::vector<std::filesystem::path> find(const Environment& env, std::stop_token stop = {});
// The environment with foundProjectRoots filled when discovery applies and nobody looked yet.
Environment completed(Environment env, std::stop_token stop = {});

}  // namespace kelvo::ProjectDiscovery
