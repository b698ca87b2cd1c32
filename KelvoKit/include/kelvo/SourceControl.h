#pragma once
// What version control (git) knows of the folders in the user's projects, for the rule
// that a folder holding tracked files is source, never a build output to offer. A scan
// finds the work tree of a folder that lies above its walk, reads each repository's index
// at most once and keeps it for the rest of the scan. The live source reads real
// repositories (see platform/GitRepository.h); tests may give their own. Immutable and
// safe to share between threads.
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kelvo/Dependency.h"

namespace kelvo {

class SourceControl {
public:
    // A folder inside a work tree: the tree's top and the folder's path below it
    // ("/"-separated, empty for the top itself).
    struct Place {
        std::filesystem::path workTree;
        std::string relative;
    };

    // One repository's index: the folders that hold tracked files, or why it could not be read.
    class Index {
    public:
        // Every folder holding a tracked file or a submodule at any depth, "/"-separated
        // below the work tree ("" for the top itself), in any order.
        explicit Index(std::vector<std::string> trackedFolders);
        static Index unreadable(std::string reason);

        bool readable() const { return !unreadableBecause_; }
        // Why the index could not be read; empty when it was.
        std::string reason() const { return unreadableBecause_.value_or(std::string()); }
        // Whether `folder` (relative like the folders) holds a tracked file. An unreadable
        // index answers false: ask readable() first.
        bool holdsTrackedFiles(std::string_view folder) const;

    private:
        std::vector<std::string> folders_;  // sorted, each once
        std::optional<std::string> unreadableBecause_;
    };

    virtual ~SourceControl() = default;
    // The nearest work tree at or above `folder` (a folder holding ".git", found through
    // `folder`'s resolved path); nothing when none holds it.
    virtual std::optional<Place> workTreeHolding(const std::filesystem::path& folder) const = 0;
    // The index of the repository whose work tree's top is `workTree`, read now.
    virtual Index read(const std::filesystem::path& workTree) const = 0;
};

class LiveSourceControl final : public SourceControl {
public:
    std::optional<Place> workTreeHolding(const std::filesystem::path& folder) const override;
    Index read(const std::filesystem::path& workTree) const override;
};

// One live source, shared (it holds no state).
std::shared_ptr<const SourceControl> liveSourceControl();
using SourceControlDependency = Dependency<std::shared_ptr<const SourceControl>, &liveSourceControl>;

}  // namespace kelvo
