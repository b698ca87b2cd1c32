#include "kelvo/PerProjectCleaner.h"

#include <string_view>
#include <unordered_map>

#include "kelvo/L10n.h"
#include "kelvo/Paths.h"
#include "kelvo/platform/DirectoryHandle.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/TextCase.h"

namespace kelvo {
namespace {

using platform::DirectoryHandle;
using platform::EntryType;

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

// One directory's entries: every name (for the sibling rule, NUL-separated in one buffer
// so a walk over millions of files allocates little) and the subdirectories in listing
// order. Links are never listed as subdirectories.
struct Listing {
    std::string names;
    std::vector<std::string> subdirectories;
    bool failed = false;
    bool hasCacheTagFile = false;

    static Listing of(const DirectoryHandle& directory, bool keepNames) {
        Listing listing;
        listing.failed = static_cast<bool>(directory.forEachName([&](std::string_view name, EntryType type) {
            if (keepNames) {
                listing.names.append(name);
                listing.names.push_back('\0');
            }
            if (type == EntryType::directory) listing.subdirectories.emplace_back(name);
            if (type == EntryType::file && name == cacheTagName) listing.hasCacheTagFile = true;
            return true;
        }));
        return listing;
    }

    template <typename Predicate>
    bool anyName(Predicate&& predicate) const {
        std::string_view rest = names;
        while (!rest.empty()) {
            const auto end = rest.find('\0');
            if (predicate(rest.substr(0, end))) return true;
            if (end == std::string_view::npos) break;
            rest.remove_prefix(end + 1);
        }
        return false;
    }
};

// A pattern with no alternative left after dropping empty pieces matches nothing.
bool siblingPatternMatches(std::string_view pattern, const Listing& siblings) {
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

bool hasRequiredSiblings(const std::vector<std::string>& patterns, const Listing& siblings) {
    if (siblings.failed) return false;
    for (const auto& pattern : patterns)
        if (!siblingPatternMatches(pattern, siblings)) return false;
    return true;
}

// Whether any entry below `directory` has a protected output's name. Links met here are
// not followed.
bool treeHoldsProtectedOutput(const DirectoryHandle& directory) {
    std::vector<std::string> subdirectories;
    bool found = false;
    directory.forEachName([&](std::string_view name, EntryType type) {
        if (isProtectedOutputName(name)) {
            found = true;
            return false;
        }
        if (type == EntryType::directory) subdirectories.emplace_back(name);
        return true;
    });
    if (found) return true;
    for (const auto& name : subdirectories) {
        std::error_code error;
        if (auto child = directory.openChild(name, error); child && treeHoldsProtectedOutput(*child)) return true;
    }
    return false;
}

// The search inside a "build" candidate. A link inside it counts when its resolved path
// has a protected output's name or leads to a folder that holds one; that second walk
// follows no further links.
bool containsProtectedArtifact(const DirectoryHandle& directory, const std::filesystem::path& path) {
    std::vector<std::string> subdirectories;
    std::vector<std::string> links;
    bool found = false;
    directory.forEachName([&](std::string_view name, EntryType type) {
        if (isProtectedOutputName(name)) {
            found = true;
            return false;
        }
        if (type == EntryType::symlink) links.emplace_back(name);
        else if (type == EntryType::directory) subdirectories.emplace_back(name);
        return true;
    });
    if (found) return true;
    for (const auto& name : links) {
        const auto resolved = platform::resolveSymlinks(path / name);
        if (isProtectedOutputName(Paths::lastComponent(resolved))) return true;
        std::error_code error;
        if (auto target = DirectoryHandle::open(resolved, true, error); target && treeHoldsProtectedOutput(*target))
            return true;
    }
    for (const auto& name : subdirectories) {
        std::error_code error;
        if (auto child = directory.openChild(name, error); child && containsProtectedArtifact(*child, path / name))
            return true;
    }
    return false;
}

// One scan: walks the roots depth first, in listing order, and collects accepted folders
// by kind in the order found.
class ProjectWalk {
public:
    ProjectWalk(const PerProjectCleaner& cleaner, std::stop_token stop) : cleaner_(cleaner), stop_(std::move(stop)) {
        for (const auto& spec : cleaner.specs()) specsByName_.emplace(spec.dirName, &spec);
        // Only a kind that asks for siblings needs the names of a folder's other entries.
        for (const auto& spec : cleaner.specs())
            if (!spec.requiresSibling.empty()) needsSiblingNames_ = true;
    }

    void walkRoot(const std::filesystem::path& root) {
        if (!platform::exists(root)) return;
        std::error_code error;
        // The root was named by the user and may itself be a link; nothing below it is followed.
        auto top = DirectoryHandle::open(root, true, error);
        if (top) walk(*top, root, /*belowRoot=*/false);
    }

    bool stopped() const { return stop_.stop_requested(); }

    struct Kind {
        const PerProjectCleaner::ArtifactSpec* spec;
        std::vector<std::filesystem::path> folders;
    };
    std::vector<Kind>& kinds() { return kinds_; }

private:
    void walk(const DirectoryHandle& directory, const std::filesystem::path& path, bool belowRoot) {
        if (stopped()) return;
        const Listing listing = Listing::of(directory, needsSiblingNames_);
        if (belowRoot && isCacheTagged(directory, listing)) {
            // A tagged cache is never entered, whether or not it is accepted.
            if (!cleaner_.isRecent(directory.childModificationTime("."))) accept(*cleaner_.cacheTagged(), path);
            return;
        }
        for (const auto& name : listing.subdirectories) {
            if (stopped()) return;
            const auto found = specsByName_.find(name);
            if (found == specsByName_.end()) {
                std::error_code error;
                if (auto child = directory.openChild(name, error)) walk(*child, path / name, /*belowRoot=*/true);
                continue;
            }
            // An artefact folder is never entered, whether or not it is accepted.
            if (accepts(*found->second, directory, name, listing, path)) accept(*found->second, path / name);
        }
    }

    bool accepts(const PerProjectCleaner::ArtifactSpec& spec, const DirectoryHandle& parent, const std::string& name,
                 const Listing& siblings, const std::filesystem::path& parentPath) const {
        if (cleaner_.isRecent(parent.childModificationTime(name))) return false;
        if (!spec.requiresSibling.empty() && !hasRequiredSiblings(spec.requiresSibling, siblings)) return false;
        if (name == "build") {
            std::error_code error;
            auto folder = parent.openChild(name, error);
            if (folder && containsProtectedArtifact(*folder, parentPath / name)) return false;
        }
        return true;
    }

    bool isCacheTagged(const DirectoryHandle& directory, const Listing& listing) const {
        if (!cleaner_.cacheTagged() || !listing.hasCacheTagFile) return false;
        const auto start = directory.childFileStart(cacheTagName, cacheTagSignature.size());
        return start == cacheTagSignature;
    }

    void accept(const PerProjectCleaner::ArtifactSpec& spec, std::filesystem::path folder) {
        auto [position, inserted] = kindIndex_.emplace(spec.dirName, kinds_.size());
        if (inserted) kinds_.push_back({&spec, {}});
        kinds_[position->second].folders.push_back(std::move(folder));
    }

    const PerProjectCleaner& cleaner_;
    std::stop_token stop_;
    std::unordered_map<std::string_view, const PerProjectCleaner::ArtifactSpec*> specsByName_;
    bool needsSiblingNames_ = false;
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
        std::int64_t total = 0;
        bool partial = false;
        for (const auto& folder : kind.folders) {
            const Measurement measured = context.sizer.measure(folder);
            total += measured.bytes;
            partial = partial || measured.hadErrors;
        }
        if (context.stop.stop_requested()) return {};
        if (total < 1) continue;

        const auto& spec = *kind.spec;
        CleanTarget target;
        target.id = "per-project-" + spec.dirName;
        target.name = L10n::t("cleaner.perProject.target", spec.dirName, static_cast<std::int64_t>(kind.folders.size()));
        target.family = Family::perProject;
        target.kind = CleanKind::paths(std::move(kind.folders));
        target.sizeBytes = total;
        target.reversibility = spec.reversibility;
        target.regenCost = spec.regenCost;
        target.level = spec.level;
        target.notes = partial ? CleanTarget::partialSizeNote() : std::string();
        targets.push_back(std::move(target));
    }
    return targets;
}

}  // namespace kelvo
