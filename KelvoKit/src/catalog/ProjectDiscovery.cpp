#include "kelvo/ProjectDiscovery.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>

#include "kelvo/CleanerRegistry.h"
#include "vocabulary/Paths.h"
#include "kelvo/platform/DirectoryHandle.h"
#include "kelvo/platform/TreeWalk.h"

namespace kelvo::ProjectDiscovery {
namespace {

using platform::DirectoryHandle;
using platform::EntryType;
using platform::TreeWalk;
using platform::WalkedDirectory;
using platform::WalkStep;

// What marks a project besides the artefact kinds' manifests: version control, and Go
// modules, whose builds leave nothing in the project but whose pins count.
constexpr std::string_view extraMarkers[] = {".git", ".hg", ".svn", "go.mod"};

struct Markers {
    std::set<std::string, std::less<>> names;
    std::vector<std::string> suffixes;  // "*.csproj" as ".csproj"

    explicit Markers(const Environment& env) {
        for (const auto& pattern : CleanerRegistry::projectManifests(env)) {
            if (pattern.starts_with("*.")) suffixes.push_back(pattern.substr(1));
            else names.insert(pattern);
        }
        for (const auto marker : extraMarkers) names.emplace(marker);
    }

    bool marks(std::string_view name) const {
        if (names.contains(name)) return true;
        return std::any_of(suffixes.begin(), suffixes.end(), [&](const std::string& suffix) {
            return name.size() > suffix.size() && name.ends_with(suffix);
        });
    }
};

class Search {
public:
    Search(const Environment& env, std::stop_token stop)
        : markers_(env), stop_(std::move(stop)) {
        for (const auto& place : CleanerRegistry::places(env)) skipped_.insert(Paths::standardized(place).string());
        for (const auto& name : CleanerRegistry::artifactNames(env)) artefactNames_.insert(name);
    }

    bool stopped() const { return stop_.stop_requested(); }

    WalkStep visit(const WalkedDirectory& directory, std::string_view name, EntryType type) {
        if (stopped()) return WalkStep::stop;
        const std::size_t depth = directory.depth();
        if (depth > 0 && !decided(depth)) {
            if (directory.anyName([this](std::string_view entry) { return markers_.marks(entry); })) {
                holders_.push_back(depth == 1 ? directory.path() : parentOf(directory.path()));
                return WalkStep::leave;
            }
        }
        if (type != EntryType::directory || name.starts_with('.') || depth + 1 > maxDepth ||
            artefactNames_.contains(name))
            return WalkStep::next;
        const std::string path = directory.pathOf(name);
        if (skipped_.contains(Paths::standardized(path).string())) return WalkStep::next;
        if (decidedDepths_.size() <= depth + 1) decidedDepths_.resize(depth + 2);
        decidedDepths_[depth + 1] = false;
        return WalkStep::enter;
    }

    std::vector<std::filesystem::path> holders() {
        std::sort(holders_.begin(), holders_.end());
        holders_.erase(std::unique(holders_.begin(), holders_.end()), holders_.end());
        std::vector<std::filesystem::path> kept;
        for (const auto& holder : holders_)
            if (kept.empty() || !Paths::isInside(holder, kept.back().string())) kept.emplace_back(holder);
        return kept;
    }

private:
    // Whether the folder at this depth was already looked at; marks it looked at.
    bool decided(std::size_t depth) {
        if (decidedDepths_.size() <= depth) decidedDepths_.resize(depth + 1);
        const bool was = decidedDepths_[depth];
        decidedDepths_[depth] = true;
        return was;
    }
    static std::string parentOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

    Markers markers_;
    std::stop_token stop_;
    std::set<std::string, std::less<>> skipped_;
    std::set<std::string, std::less<>> artefactNames_;
    std::vector<bool> decidedDepths_;
    std::vector<std::string> holders_;
};

}  // namespace

bool applies(const Environment& env) {
    return env.catalog == CatalogProfile::gnuLinux && !env.projectRootsConfigured();
}

std::vector<std::filesystem::path> find(const Environment& env, std::stop_token stop) {
    std::error_code error;
    auto top = DirectoryHandle::open(env.home, true, error);
    if (!top) return {};
    Search search(env, std::move(stop));
    std::string topPath = env.home.string();
    while (topPath.size() > 1 && topPath.ends_with('/')) topPath.pop_back();
    TreeWalk::run(std::move(*top), std::move(topPath),
                  [&search](const WalkedDirectory& directory, std::string_view name, EntryType type) {
                      return search.visit(directory, name, type);
                  });
    if (search.stopped()) return {};
    return search.holders();
}

Environment completed(Environment env, std::stop_token stop) {
    if (applies(env) && !env.foundProjectRoots) env.foundProjectRoots = find(env, std::move(stop));
    return env;
}

}  // namespace kelvo::ProjectDiscovery
