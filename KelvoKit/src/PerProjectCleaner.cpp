#include "kelvo/PerProjectCleaner.h"

#include <string_view>
#include <unordered_map>

#include "kelvo/L10n.h"
#include "kelvo/Paths.h"
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

// A pattern with no alternative left after dropping empty pieces matches nothing.
bool siblingPatternMatches(std::string_view pattern, const WalkedDirectory& siblings) {
    while (true) {
        const auto bar = pattern.find('|');
        const std::string_view alternative = pattern.substr(0, bar);
        if (!alternative.empty()) {
            const bool matched =
                alternative.starts_with("*.")
                    ? siblings.anyName([suffix = alternative.substr(1)](std::string_view name) { return name.ends_with(suffix); })
                    : siblings.anyName([alternative](std::string_view name) { return name == alternative; });
            if (matched) return true;
        }
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

// One scan: walks the roots depth first, in listing order, and collects accepted folders
// by kind in the order found.
class ProjectWalk {
public:
    ProjectWalk(const PerProjectCleaner& cleaner, std::stop_token stop) : cleaner_(cleaner), stop_(std::move(stop)) {
        for (const auto& spec : cleaner.specs()) specsByName_.emplace(spec.dirName, &spec);
    }

    void walkRoot(const std::filesystem::path& root) {
        if (!platform::exists(root)) return;
        std::error_code error;
        // The root was named by the user and may itself be a link; nothing below it is followed.
        auto top = DirectoryHandle::open(root, true, error);
        if (!top) return;
        folders_.assign(1, {});
        TreeWalk::run(std::move(*top), root.string(),
                      [this](const WalkedDirectory& directory, std::string_view name, EntryType type) {
                          return visit(directory, name, type);
                      });
    }

    bool stopped() const { return stop_.stop_requested(); }

    struct Kind {
        const PerProjectCleaner::ArtifactSpec* spec;
        std::vector<std::filesystem::path> folders;
    };
    std::vector<Kind>& kinds() { return kinds_; }

private:
    // What the walk knows of a folder it is in, by depth below the root: reset when the
    // folder is entered and completed by a look at its names when its first entry is
    // visited. The walk visits a folder's entries right after entering it, so the state of
    // a depth is that folder's until the next folder at that depth is entered.
    struct Folder {
        bool amongInstalledPackages = false;  // inherited, or given by the folder's name
        bool lookedInside = false;
        bool cacheTagged = false;
    };

    WalkStep visit(const WalkedDirectory& directory, std::string_view name, EntryType type) {
        if (stopped()) return WalkStep::stop;
        const Folder folder = lookInside(directory);  // a copy: entering below may move folders_
        // A tagged cache is never entered, whether or not it is accepted.
        if (folder.cacheTagged) return WalkStep::leave;
        if (type != EntryType::directory) return WalkStep::next;
        const auto found = specsByName_.find(name);
        if (found == specsByName_.end()) {
            const std::size_t depth = directory.depth() + 1;
            const bool amongInstalled = folder.amongInstalledPackages || isInstalledPackagesName(name);
            if (folders_.size() <= depth) folders_.resize(depth + 1);
            folders_[depth] = {.amongInstalledPackages = amongInstalled};
            return WalkStep::enter;
        }
        // An artefact folder is never entered, whether or not it is accepted.
        const auto& spec = *found->second;
        if ((!folder.amongInstalledPackages || offeredAmongInstalledPackages(name)) && accepts(spec, directory, name))
            accept(spec, directory.pathOf(name));
        return WalkStep::next;
    }

    const Folder& lookInside(const WalkedDirectory& directory) {
        Folder& folder = folders_[directory.depth()];
        if (folder.lookedInside) return folder;
        folder.lookedInside = true;
        if (directory.anyName([](std::string_view name) { return name == "pyvenv.cfg"; }))
            folder.amongInstalledPackages = true;
        if (directory.depth() > 0 && !folder.amongInstalledPackages && isCacheTagged(directory)) {
            folder.cacheTagged = true;
            if (!cleaner_.isRecent(directory.handle().childModificationTime(".")))
                accept(*cleaner_.cacheTagged(), directory.path());
        }
        return folder;
    }

    bool isCacheTagged(const WalkedDirectory& directory) const {
        if (!cleaner_.cacheTagged() || !directory.anyName([](std::string_view name) { return name == cacheTagName; }))
            return false;
        return directory.handle().childFileStart(cacheTagName, cacheTagSignature.size()) == cacheTagSignature;
    }

    bool accepts(const PerProjectCleaner::ArtifactSpec& spec, const WalkedDirectory& parent, std::string_view name) const {
        if (cleaner_.isRecent(parent.handle().childModificationTime(name))) return false;
        if (!spec.requiresSibling.empty() && !hasRequiredSiblings(spec.requiresSibling, parent)) return false;
        if (name == "build") {
            std::error_code error;
            auto folder = parent.handle().openChild(name, error);
            if (folder && isKeptBuildFolder(std::move(*folder), parent.pathOf(name))) return false;
        }
        return true;
    }

    void accept(const PerProjectCleaner::ArtifactSpec& spec, std::filesystem::path folder) {
        auto [position, inserted] = kindIndex_.emplace(spec.dirName, kinds_.size());
        if (inserted) kinds_.push_back({&spec, {}});
        kinds_[position->second].folders.push_back(std::move(folder));
    }

    const PerProjectCleaner& cleaner_;
    std::stop_token stop_;
    std::unordered_map<std::string_view, const PerProjectCleaner::ArtifactSpec*> specsByName_;
    std::vector<Folder> folders_;  // by depth below the root being walked
    std::unordered_map<std::string_view, std::size_t> kindIndex_;
    std::vector<Kind> kinds_;
};

}  // namespace

PerProjectCleaner::PerProjectCleaner(std::vector<std::filesystem::path> roots, std::vector<ArtifactSpec> specs,
                                     std::int64_t keepRecentDays, Clock::time_point now,
                                     std::optional<ArtifactSpec> cacheTagged)
    : roots_(std::move(roots)),
      specs_(std::move(specs)),
      cacheTagged_(std::move(cacheTagged)),
      keepRecentDays_(keepRecentDays),
      now_(now) {}

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
    ProjectWalk walk(*this, context.stop);
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
        CleanTarget target;
        target.id = targetID(spec.dirName);
        target.name = L10n::t("cleaner.perProject.target", spec.dirName, static_cast<std::int64_t>(kind.folders.size()));
        target.family = Family::perProject;
        target.kind = CleanKind::paths(std::move(kind.folders));
        target.sizeBytes = measured.bytes;
        target.reversibility = spec.reversibility;
        target.regenCost = spec.regenCost;
        target.level = spec.level;
        target.notes = measured.notes();
        targets.push_back(std::move(target));
    }
    return targets;
}

}  // namespace kelvo
