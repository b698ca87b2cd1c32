#pragma once
// Build artefacts inside the user's own projects ("node_modules", "build", "__pycache__",
// ...). Every root is walked without depth limit, hidden and package folders included,
// past PATH_MAX too, with memory that grows with the width of the tree, not its depth;
// a folder whose exact name is one of the specs' dirName is a candidate and is never
// entered, accepted or not. A candidate is accepted unless:
// - its project changed within keepRecentDays before `now`: the newest modification among
//   the entries of the folder that holds it (its sources, its manifest, the candidate
//   itself and the other artefact folders beside it, none of them looked inside); dates
//   that cannot be read do not count;
// - its parent lacks the required siblings, or it lacks a file it must hold;
// - it holds files tracked by the git repository it lies in (the nearest work tree at or
//   above it: above the root, nested, a submodule, or the candidate itself when it holds
//   ".git"). Ignored and untracked files do not count. Each repository's index is read at
//   most once per scan, and only for repositories that hold a candidate; when it cannot
//   be read (unreadable, corrupt, unsupported) none of its candidates is accepted and the
//   scan says so in a note;
// - for "build" only, it holds an Android bundle or Xcode archive at any depth or is
//   itself a Python package (it holds __init__.py: source, not output).
// Installed packages are source too: inside a Python environment (a folder holding
// pyvenv.cfg) or a site-packages / dist-packages folder nothing but __pycache__ is offered.
// Symbolic links are neither entered nor offered. Each kind found yields one target,
// "per-project-<dirName>", with all its folders in the order found and their summed size;
// a kind measuring 0 bytes yields none. A kind that names what its folders are rebuilt
// from (rebuiltFrom) puts the folders beside no such file in a target of their own,
// "per-project-<dirName>:unpinned", as user data (so never preselected), with a note
// saying why. A root or a folder below it that cannot be read (or whose listing fails
// part-way) contributes what could be read, and a note names it; a missing root
// contributes nothing, silently.
// Optionally, a folder below a root (not a root itself) that holds a valid cache tag (a
// regular file "CACHEDIR.TAG" starting with the Cache Directory Tagging signature) is a
// candidate of the cache-tag kind, under the recency and git rules and never entered.
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kelvo/Cleaner.h"
#include "kelvo/Family.h"
#include "kelvo/RiskAxes.h"
#include "kelvo/SourceControl.h"

namespace kelvo {

class PerProjectCleaner final : public Cleaner {
public:
    using Clock = std::chrono::system_clock;

    // One kind of artefact folder. Each requiresSibling pattern must match some entry
    // beside the folder: "|" separates alternatives, an alternative "start*.ext" matches
    // any name beginning with start (which may be empty) and ending in ".ext", any other
    // alternative matches one name exactly (all case-sensitive; "*" has no other meaning).
    struct ArtifactSpec {
        std::string dirName;
        Level level = Level::safe;
        Reversibility reversibility = Reversibility::regenerable;
        RegenCost regenCost = RegenCost::rebuild;
        std::vector<std::string> requiresSibling;
        // Regular files the folder itself must hold (a Python environment's pyvenv.cfg).
        std::vector<std::string> requiresInside = {};
        // A pattern for the files beside the folder that record how to rebuild it (lock
        // files); empty when the folder needs none.
        std::string rebuiltFrom = {};
    };

    // Added to the id of a kind's target of folders beside nothing they are rebuilt from.
    static constexpr std::string_view unpinnedSuffix = ":unpinned";

    // dirName must be unique within specs. `now` is the reference of the keep-recent rule
    // for every later scan. cacheTagged, when given, is the kind of cache-tagged folders:
    // its dirName names their target and must differ from every spec's; its siblings are
    // not looked at. sourceControl answers which folders hold tracked files.
    PerProjectCleaner(std::vector<std::filesystem::path> roots, std::vector<ArtifactSpec> specs,
                      std::int64_t keepRecentDays, Clock::time_point now,
                      std::optional<ArtifactSpec> cacheTagged = std::nullopt, SourceControlDependency sourceControl = {});

    const std::string& id() const override { return id_; }
    const std::string& name() const override { return name_; }
    Family family() const override { return Family::perProject; }
    // Target order among kinds is that of the first folder accepted of each kind.
    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    // The keep-recent rule: true when a project modified at `modified` is less than
    // keepRecentDays old at `now` (an age of exactly that many days is not recent; a
    // project dated after `now` is always recent). An unknown date is never recent.
    bool isRecent(std::optional<Clock::time_point> modified) const;

    const std::vector<std::filesystem::path>& roots() const { return roots_; }
    const std::vector<ArtifactSpec>& specs() const { return specs_; }
    const std::optional<ArtifactSpec>& cacheTagged() const { return cacheTagged_; }
    // The id of the target that gathers the folders of one kind ("per-project-node_modules").
    static std::string targetID(std::string_view dirName);
    // Every id a scan can yield, in the order of specs(), the cache-tagged kind last; known without a scan.
    std::vector<std::string> targetIDs() const;
    std::int64_t keepRecentDays() const { return keepRecentDays_; }
    Clock::time_point now() const { return now_; }
    const SourceControlDependency& sourceControl() const { return sourceControl_; }

private:
    std::string id_ = "per-project";
    std::string name_ = "Artefactos por proyecto";
    std::vector<std::filesystem::path> roots_;
    std::vector<ArtifactSpec> specs_;
    std::optional<ArtifactSpec> cacheTagged_;
    std::int64_t keepRecentDays_;
    Clock::time_point now_;
    SourceControlDependency sourceControl_;
};

}  // namespace kelvo
