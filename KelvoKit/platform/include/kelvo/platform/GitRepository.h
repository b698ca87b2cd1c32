#pragma once
// What the project walk needs of git, read with libgit2: where the work tree that holds a
// folder begins, and the paths its index lists. Only the index is read, never objects: no
// hook, filter or configured program runs, the user's and the system's git configuration
// are not read, and a repository of another owner is read like one's own (reading its
// index runs nothing of it). Nothing here throws; what cannot be read says why.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::platform {

// A folder inside a work tree: the tree's top and the folder's path below it.
struct GitPlace {
    std::filesystem::path workTree;
    std::string relative;  // "/"-separated, empty for the top itself
};

// The nearest folder at or above `folder` (its links resolved) that holds a ".git" entry: a
// repository folder, or a file naming one, as submodules and linked work trees have.
// Nothing when no folder up to "/" does. A folder where ".git" cannot be looked for (no
// search permission, a path that cannot be resolved) is answered as a top, so that
// reading it fails and says why; whether a ".git" found is usable is readGitIndex's to say.
std::optional<GitPlace> findGitWorkTree(const std::filesystem::path& folder);

struct GitIndexListing {
    // Every folder that holds a file or a submodule of the index at any depth, "/"-separated
    // below the work tree: "" for the top when the index lists anything, and a submodule's
    // own folder. Folders, not files, so a large repository costs little memory.
    std::vector<std::string> folders;
    std::string error;  // why the index could not be read; empty when it was
};

// Opens the repository whose work tree's top is `workTree` (the folder holding ".git", no
// search upward) and reads its index, every merge stage. An error when the repository or
// its index cannot be read, is corrupt or of a format libgit2 does not support, or keeps
// its work tree elsewhere. A repository without an index holds nothing.
GitIndexListing readGitIndex(const std::filesystem::path& workTree);

}  // namespace kelvo::platform
