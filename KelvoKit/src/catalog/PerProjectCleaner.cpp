#include "kelvo/PerProjectCleaner.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "kelvo/L10n.h"
#include "vocabulary/Paths.h"
#include "kelvo/platform/DirectoryHandle.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/TextCase.h"
#include "kelvo/platform/TreeWalk.h"

namespace kelvo {
namespace {

using platform::DirectoryHandle;
using platform::EntryType;
using platform::TreeWalk;
using platform::WalkedDirectory;
using platform::WalkStep;

constexpr double secondsPerDay = 86400.0;

// The Cache Directory Tagging convention: a file of this name whose first bytes are the
// signature marks its folder as a cache that can be regenerated.
constexpr std::string_view cacheTagName = "CACHEDIR.TAG";
constexpr std::string_view cacheTagSignature = "Signature: 8a477f597d28d172789f06886806bc55";

// Outputs a "build" folder may hold that cannot be rebuilt from the project: signed
// Android bundles and Xcode archives.
bool isProtectedOutputName(std::string_view name) {
    const std::string extension = platform::lowercased(Paths::extensionOf(std::filesystem::path(name)));
    return extension == "xcarchive" || extension == "aab";
}

// Whether a name matches one alternative: "start*.ext" any name that begins with start
// and ends with ".ext" (start may be empty), anything else that exact name.
bool alternativeMatches(std::string_view alternative, std::string_view name) {
    const auto star = alternative.find("*.");
    if (star == std::string_view::npos) return name == alternative;
    const std::string_view start = alternative.substr(0, star);
    const std::string_view end = alternative.substr(star + 1);
    return name.size() >= start.size() + end.size() && name.starts_with(start) && name.ends_with(end);
}

// A pattern with no alternative left after dropping empty pieces matches nothing.
bool siblingPatternMatches(std::string_view pattern, const WalkedDirectory& siblings) {
    while (true) {
        const auto bar = pattern.find('|');
        const std::string_view alternative = pattern.substr(0, bar);
        if (!alternative.empty() &&
            siblings.anyName([alternative](std::string_view name) { return alternativeMatches(alternative, name); }))
            return true;
        if (bar == std::string_view::npos) break;
        pattern.remove_prefix(bar + 1);
    }
    return false;
}

bool hasRequiredSiblings(const std::vector<std::string>& patterns, const WalkedDirectory& siblings) {
    if (!siblings.listedCompletely()) return false;
    for (const auto& pattern : patterns)
        if (!siblingPatternMatches(pattern, siblings)) return false;
    return true;
}

// Whether any entry below `directory` has a protected output's name. Links met here are
// not followed.
bool treeHoldsProtectedOutput(DirectoryHandle directory) {
    return TreeWalk::run(std::move(directory), {}, [](const WalkedDirectory&, std::string_view name, EntryType) {
        return isProtectedOutputName(name) ? WalkStep::stop : WalkStep::enter;
    });
}

// A link inside a build folder counts when its resolved path has a protected output's
// name or leads to a folder that holds one; that second search follows no further links.
bool linkLeadsToProtectedOutput(const std::filesystem::path& link) {
    const auto resolved = platform::resolveSymlinks(link);
    if (isProtectedOutputName(Paths::lastComponent(resolved))) return true;
    std::error_code error;
    auto target = DirectoryHandle::open(resolved, true, error);
    return target && treeHoldsProtectedOutput(std::move(*target));
}

// A "build" folder that is not a build output to offer: it is a Python package (it holds
// __init__.py, so it is source), or it holds a protected output at any depth.
bool isKeptBuildFolder(DirectoryHandle folder, std::string path) {
    return TreeWalk::run(std::move(folder), std::move(path),
                         [](const WalkedDirectory& directory, std::string_view name, EntryType type) {
                             const bool kept = isProtectedOutputName(name) ||
                                               (directory.depth() == 0 && name == "__init__.py") ||
                                               (type == EntryType::symlink &&
                                                linkLeadsToProtectedOutput(directory.pathOf(name)));
                             return kept ? WalkStep::stop : WalkStep::enter;
                         });
}

// Folders a Python environment or package manager installed: a folder holding pyvenv.cfg
// (a virtual environment) and site-packages / dist-packages folders. Inside them a folder
// named like a build output belongs to an installed package; only __pycache__ is offered.
bool isInstalledPackagesName(std::string_view name) { return name == "site-packages" || name == "dist-packages"; }
bool offeredAmongInstalledPackages(std::string_view name) { return name == "__pycache__"; }

// The part of a folder's path below `length` characters of it, without the leading "/".
std::string_view below(std::string_view path, std::size_t length) {
    path.remove_prefix(std::min(length, path.size()));
    if (path.starts_with('/')) path.remove_prefix(1);
    return path;
}

// One scan: walks the roots depth first, in listing order, and collects accepted folders
// by kind in the order found. What it learns of repositories lasts for the scan.
class ProjectWalk {
public:
    ProjectWalk(const PerProjectCleaner& cleaner, const ScanContext& context) : cleaner_(cleaner), context_(context) {
        for (const auto& spec : cleaner.specs()) specsByName_.emplace(spec.dirName, &spec);
    }

    void walkRoot(const std::filesystem::path& root) {
        if (!platform::exists(root)) return;
        std::error_code error;
        // The root was named by the user and may itself be a link; nothing below it is followed.
        auto top = DirectoryHandle::open(root, true, error);
        if (!top) {
            noteUnreadable(root.string(), error);
            return;
        }
        root_ = root;
        rootLength_ = root.string().size();
        aboveRoot_.reset();
        folders_.assign(1, {});
        TreeWalk::run(
            std::move(*top), root.string(),
            [this](const WalkedDirectory& directory, std::string_view name, EntryType type) {
                return visit(directory, name, type);
            },
            [this](const std::string& path, std::error_code unread) { noteUnreadable(path, unread); });
    }

    bool stopped() const { return context_.stop.stop_requested(); }

    struct Kind {
        const PerProjectCleaner::ArtifactSpec* spec;
        bool unpinned;  // nothing beside its folders records how to rebuild them
        std::vector<std::filesystem::path> folders;
    };
    std::vector<Kind>& kinds() { return kinds_; }

private:
    static constexpr std::size_t none = std::string::npos;

    // What the walk knows of a folder it is in, by depth below the root: reset when the
    // folder is entered and completed by a look at its names when its first entry is
    // visited. The walk visits a folder's entries right after entering it, so the state of
    // a depth is that folder's until the next folder at that depth is entered.
    struct Folder {
        bool amongInstalledPackages = false;  // inherited, or given by the folder's name
        bool lookedInside = false;
        bool cacheTagged = false;
        // Length of the path of the nearest folder at or above this one, within the walk,
        // that holds ".git" (the top of its work tree); none when no such folder is walked.
        std::size_t workTreeLength = none;
        // The newest modification among the folder's own entries, once read.
        std::optional<std::optional<PerProjectCleaner::Clock::time_point>> newestEntry;
    };

    WalkStep visit(const WalkedDirectory& directory, std::string_view name, EntryType type) {
        if (stopped()) return WalkStep::stop;
        const Folder& folder = lookInside(directory);
        // A tagged cache is never entered, whether or not it is accepted.
        if (folder.cacheTagged) return WalkStep::leave;
        if (type != EntryType::directory) return WalkStep::next;
        const auto found = specsByName_.find(name);
        if (found == specsByName_.end()) {
            const std::size_t depth = directory.depth() + 1;
            Folder inner;
            inner.amongInstalledPackages = folder.amongInstalledPackages || isInstalledPackagesName(name);
            inner.workTreeLength = folder.workTreeLength;
            if (folders_.size() <= depth) folders_.resize(depth + 1);  // may move `folder`
            folders_[depth] = inner;
            return WalkStep::enter;
        }
        // An artefact folder is never entered, whether or not it is accepted.
        const auto& spec = *found->second;
        if (!folder.amongInstalledPackages || offeredAmongInstalledPackages(name)) consider(spec, directory, name);
        return WalkStep::next;
    }

    Folder& lookInside(const WalkedDirectory& directory) {
        Folder& folder = folders_[directory.depth()];
        if (folder.lookedInside) return folder;
        folder.lookedInside = true;
        bool environment = false, tagged = false, workTree = false;
        directory.anyName([&](std::string_view name) {
            environment = environment || name == "pyvenv.cfg";
            tagged = tagged || name == cacheTagName;
            workTree = workTree || name == ".git";
            return false;
        });
        if (environment) folder.amongInstalledPackages = true;
        if (workTree) folder.workTreeLength = directory.path().size();
        if (tagged && directory.depth() > 0 && !folder.amongInstalledPackages && isCacheTagged(directory)) {
            folder.cacheTagged = true;
            considerTagged(directory, folder.workTreeLength);
        }
        return folder;
    }

    bool isCacheTagged(const WalkedDirectory& directory) const {
        return cleaner_.cacheTagged() &&
               directory.handle().childFileStart(cacheTagName, cacheTagSignature.size()) == cacheTagSignature;
    }

    // A tagged folder is judged from inside: its project is the folder that holds it.
    void considerTagged(const WalkedDirectory& directory, std::size_t workTreeLength) {
        std::error_code error;
        const auto project = directory.handle().openParent(error);
        if (cleaner_.isRecent(project ? project->newestChildModificationTime()
                                      : directory.handle().childModificationTime(".")))
            return;
        if (mayHoldTrackedFiles(directory.path(), workTreeLength)) return;
        accept(*cleaner_.cacheTagged(), false, directory.path());
    }

    void consider(const PerProjectCleaner::ArtifactSpec& spec, const WalkedDirectory& parent, std::string_view name) {
        if (cleaner_.isRecent(newestEntryOf(parent))) return;
        if (!spec.requiresSibling.empty() && !hasRequiredSiblings(spec.requiresSibling, parent)) return;
        std::error_code error;
        auto inside = parent.handle().openChild(name, error);
        if (!spec.requiresInside.empty() && !holdsAll(inside, spec.requiresInside)) return;
        std::string path = parent.pathOf(name);
        // A candidate with a ".git" of its own is the top of its own work tree.
        const bool ownWorkTree = inside && inside->childType(".git").has_value();
        if (mayHoldTrackedFiles(path, ownWorkTree ? path.size() : folders_[parent.depth()].workTreeLength)) return;
        if (name == "build" && inside && isKeptBuildFolder(std::move(*inside), path)) return;
        const bool unpinned = !spec.rebuiltFrom.empty() && !siblingPatternMatches(spec.rebuiltFrom, parent);
        accept(spec, unpinned, std::move(path));
    }

    // The project's latest change: the newest of its own entries (its sources, its
    // manifest, the candidate itself), read once per folder, never inside them.
    std::optional<PerProjectCleaner::Clock::time_point> newestEntryOf(const WalkedDirectory& parent) {
        Folder& folder = folders_[parent.depth()];
        if (!folder.newestEntry) folder.newestEntry = parent.handle().newestChildModificationTime();
        return *folder.newestEntry;
    }

    static bool holdsAll(const std::optional<DirectoryHandle>& folder, const std::vector<std::string>& names) {
        if (!folder) return false;
        for (const auto& name : names)
            if (folder->childType(name) != EntryType::file) return false;
        return true;
    }

    // Whether the folder at `path` holds files its repository tracks, or may: when the
    // repository's index cannot be read (said once per repository). `workTreeLength` is
    // that of the walked folder holding ".git" nearest above it, or none: then the work
    // tree is looked for above the root, once per root.
    bool mayHoldTrackedFiles(const std::string& path, std::size_t workTreeLength) {
        std::string workTree;
        std::string relative;
        if (workTreeLength != none) {
            workTree = path.substr(0, workTreeLength);
            relative = below(path, workTreeLength);
        } else {
            if (!aboveRoot_) aboveRoot_ = cleaner_.sourceControl()->workTreeHolding(root_);
            if (!*aboveRoot_) return false;
            workTree = (*aboveRoot_)->workTree.string();
            relative = (*aboveRoot_)->relative;
            const std::string_view rest = below(path, rootLength_);
            if (!relative.empty() && !rest.empty()) relative.push_back('/');
            relative.append(rest);
        }
        auto [index, read] = indexes_.try_emplace(workTree, SourceControl::Index({}));
        if (read) {
            index->second = cleaner_.sourceControl()->read(workTree);
            if (!index->second.readable())
                context_.note(L10n::t("cleaner.note.unreadableRepository", workTree, index->second.reason()));
        }
        return !index->second.readable() || index->second.holdsTrackedFiles(relative);
    }

    void noteUnreadable(const std::string& path, std::error_code error) const {
        context_.note(L10n::t("cleaner.note.unreadableProjectFolder", path, error.message()));
    }

    void accept(const PerProjectCleaner::ArtifactSpec& spec, bool unpinned, std::filesystem::path folder) {
        auto [position, inserted] = kindIndex_.try_emplace({spec.dirName, unpinned}, kinds_.size());
        if (inserted) kinds_.push_back({&spec, unpinned, {}});
        kinds_[position->second].folders.push_back(std::move(folder));
    }

    const PerProjectCleaner& cleaner_;
    const ScanContext& context_;
    std::unordered_map<std::string_view, const PerProjectCleaner::ArtifactSpec*> specsByName_;
    std::filesystem::path root_;
    std::size_t rootLength_ = 0;
    std::optional<std::optional<SourceControl::Place>> aboveRoot_;  // the root's work tree, once looked for
    std::vector<Folder> folders_;  // by depth below the root being walked
    std::map<std::string, SourceControl::Index> indexes_;  // by work tree, read once per scan
    std::map<std::pair<std::string_view, bool>, std::size_t> kindIndex_;
    std::vector<Kind> kinds_;
};

}  // namespace

PerProjectCleaner::PerProjectCleaner(std::vector<std::filesystem::path> roots, std::vector<ArtifactSpec> specs,
                                     std::int64_t keepRecentDays, Clock::time_point now,
                                     std::optional<ArtifactSpec> cacheTagged, SourceControlDependency sourceControl)
    : roots_(std::move(roots)),
      specs_(std::move(specs)),
      cacheTagged_(std::move(cacheTagged)),
      keepRecentDays_(keepRecentDays),
      now_(now),
      sourceControl_(std::move(sourceControl)) {}

std::string PerProjectCleaner::targetID(std::string_view dirName) { return "per-project-" + std::string(dirName); }

std::vector<std::string> PerProjectCleaner::targetIDs() const {
    std::vector<std::string> ids;
    for (const auto& spec : specs_) ids.push_back(targetID(spec.dirName));
    if (cacheTagged_) ids.push_back(targetID(cacheTagged_->dirName));
    return ids;
}

bool PerProjectCleaner::isRecent(std::optional<Clock::time_point> modified) const {
    if (!modified) return false;
    const double ageSeconds = std::chrono::duration<double>(now_ - *modified).count();
    return ageSeconds < static_cast<double>(keepRecentDays_) * secondsPerDay;
}

std::vector<CleanTarget> PerProjectCleaner::scan(const ScanContext& context) const {
    ProjectWalk walk(*this, context);
    for (const auto& root : roots_) {
        if (walk.stopped()) return {};
        walk.walkRoot(root);
    }
    if (walk.stopped()) return {};

    std::vector<CleanTarget> targets;
    for (auto& kind : walk.kinds()) {
        const Measurement measured = context.sizer.measureAll(kind.folders);
        if (context.stop.stop_requested()) return {};
        if (measured.bytes < 1) continue;

        const auto& spec = *kind.spec;
        const auto count = static_cast<std::int64_t>(kind.folders.size());
        CleanTarget target;
        target.id = targetID(spec.dirName);
        target.name = L10n::t("cleaner.perProject.target", spec.dirName, count);
        target.family = Family::perProject;
        target.kind = CleanKind::paths(std::move(kind.folders));
        target.sizeBytes = measured.bytes;
        target.reversibility = spec.reversibility;
        target.regenCost = spec.regenCost;
        target.level = spec.level;
        std::vector<std::string> notes;
        if (kind.unpinned) {
            // What was installed by hand is the user's: offered, never preselected.
            target.id += unpinnedSuffix;
            target.name = L10n::t("cleaner.perProject.unpinnedTarget", spec.dirName, count);
            target.reversibility = Reversibility::userData;
            std::string records = spec.rebuiltFrom;
            for (auto bar = records.find('|'); bar != std::string::npos; bar = records.find('|', bar))
                records.replace(bar, 1, ", ");
            notes.push_back(L10n::t("cleaner.note.unpinned", records));
        }
        if (auto sizeNotes = measured.notes(); !sizeNotes.empty()) notes.push_back(std::move(sizeNotes));
        for (const auto& note : notes) target.notes += (target.notes.empty() ? "" : " ") + note;
        targets.push_back(std::move(target));
    }
    return targets;
}

}  // namespace kelvo
