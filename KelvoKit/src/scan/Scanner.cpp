#include "kelvo/Scanner.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "kelvo/L10n.h"
#include "vocabulary/Paths.h"
#include "safety/RemovalChecks.h"
#include "kelvo/WorkerPool.h"

namespace kelvo {
namespace {

// The text by which paths are matched against each other here.
std::string keyOf(const std::filesystem::path& path) { return Paths::comparable(Paths::standardized(path).string()); }

// Every path offered by a path target, by key, with the ids that offer it.
using PathOwners = std::unordered_map<std::string, std::vector<const std::string*>>;

PathOwners ownersOf(const std::vector<CleanTarget>& targets) {
    PathOwners owners;
    for (const auto& target : targets) {
        if (!target.kind.isPath()) continue;
        for (const auto& url : target.kind.pathList()) owners[keyOf(url)].push_back(&target.id);
    }
    return owners;
}

// Covered when another id owns a strict ancestor of the path, or owns the path itself and
// sorts before this target's id. Ancestors are found by walking up the path's components,
// so the cost grows with depth, not with the number of paths in the scan.
bool isCovered(const std::string& path, const std::string& id, const PathOwners& owners) {
    if (const auto same = owners.find(path); same != owners.end())
        for (const auto* owner : same->second)
            if (*owner != id && *owner < id) return true;
    for (auto slash = path.rfind('/'); slash != std::string::npos && slash > 0; slash = path.rfind('/', slash - 1)) {
        if (const auto ancestor = owners.find(path.substr(0, slash)); ancestor != owners.end())
            for (const auto* owner : ancestor->second)
                if (*owner != id) return true;
    }
    // Nothing lies inside "/": a target offering the root covers no other.
    return false;
}

// Each path target keeps the paths `keep` admits; one that lost some is re-measured, one
// left with nothing (no path, or no byte) is dropped. Commands pass through.
template <typename Keep>
std::vector<CleanTarget> keepingPaths(const std::vector<CleanTarget>& targets, const DirectorySizer& sizer,
                                      Keep&& keep) {
    std::vector<CleanTarget> result;
    result.reserve(targets.size());
    for (const auto& target : targets) {
        if (target.kind.isCommand()) {
            result.push_back(target);
            continue;
        }
        const auto& urls = target.kind.pathList();
        std::vector<std::filesystem::path> kept;
        for (const auto& url : urls)
            if (keep(target, url)) kept.push_back(url);
        if (kept.size() == urls.size()) {
            result.push_back(target);
            continue;
        }
        if (kept.empty()) continue;
        const Measurement measured = sizer.measureAll(kept);
        if (measured.bytes <= 0) continue;
        CleanTarget narrowed = target;
        narrowed.kind = CleanKind::paths(std::move(kept));
        narrowed.sizeBytes = measured.bytes;
        // The remarks of the new measurement replace the cleaner's; without any, its notes stay.
        if (auto notes = measured.notes(); !notes.empty()) narrowed.notes = std::move(notes);
        result.push_back(std::move(narrowed));
    }
    return result;
}

// One note for the paths left out for one reason: how many, and the first few of them.
std::string leftOutNote(SafetyGuard::Refusal reason, const std::vector<std::string>& paths) {
    constexpr std::size_t shown = 3;
    std::string listed;
    for (std::size_t index = 0; index < paths.size() && index < shown; ++index)
        listed += (index ? ", " : "") + paths[index];
    if (paths.size() > shown)
        listed = L10n::t("scan.note.andMore", listed, static_cast<std::int64_t>(paths.size() - shown));
    const char* key = reason == SafetyGuard::Refusal::outsideAllowedRoots ? "scan.note.outsideAllowedRoots"
                      : reason == SafetyGuard::Refusal::exclusion         ? "scan.note.excluded"
                                                                          : "scan.note.protected";
    const auto count = static_cast<std::int64_t>(paths.size());
    return L10n::plural(key, count, count, listed);
}

}  // namespace

std::vector<CleanTarget> Scanner::deletableOnly(const std::vector<CleanTarget>& targets, const SafetyGuard& guard,
                                                ScanNotes& notes, const DirectorySizer& sizer) {
    const SafetyGuard::Settled settled = guard.settled();
    // By reason, in the order the rules are tried; the home itself counts as protected.
    std::map<SafetyGuard::Refusal, std::vector<std::string>> leftOut;
    auto kept = keepingPaths(targets, sizer, [&](const CleanTarget&, const std::filesystem::path& url) {
        const auto refusal = settled.refusal(url);
        if (!refusal) return true;
        // A link that leads out of the allowed roots is shown, marked by markLinks: the
        // user sees that the place is a link, which is why it stays.
        if (*refusal == SafetyGuard::Refusal::outsideAllowedRoots && RemovalChecks::linkReason(url)) return true;
        const auto reason = *refusal == SafetyGuard::Refusal::home ? SafetyGuard::Refusal::protectedPath : *refusal;
        auto& paths = leftOut[reason];
        if (std::find(paths.begin(), paths.end(), url.string()) == paths.end()) paths.push_back(url.string());
        return false;
    });
    for (const auto& [reason, paths] : leftOut) notes.add(leftOutNote(reason, paths));
    return kept;
}

std::vector<CleanTarget> Scanner::dedup(const std::vector<CleanTarget>& targets, const DirectorySizer& sizer) {
    const PathOwners owners = ownersOf(targets);
    return keepingPaths(targets, sizer, [&](const CleanTarget& target, const std::filesystem::path& url) {
        return !isCovered(keyOf(url), target.id, owners);
    });
}

std::vector<CleanTarget> Scanner::ownPathsOnly(const std::vector<CleanTarget>& targets, const DirectorySizer& sizer) {
    return keepingPaths(targets, sizer, [](const CleanTarget&, const std::filesystem::path& url) {
        return !RemovalChecks::ownerReason(url);
    });
}

std::vector<CleanTarget> Scanner::markLinks(std::vector<CleanTarget> targets) {
    for (auto& target : targets) {
        if (!target.kind.isPath()) continue;
        for (const auto& url : target.kind.pathList()) {
            const auto reason = RemovalChecks::linkReason(url);
            if (!reason) continue;
            target.blockedByLink = true;
            const std::string note = L10n::t("cleaner.note.link", reason->text());
            target.notes = target.notes.empty() ? note : note + " " + target.notes;
            break;
        }
    }
    return targets;
}

std::optional<ScanResult> Scanner::scan(const ScanOptions& options) const {
    std::unique_ptr<WorkerPool> ownPool;
    WorkerPool* pool = options.pool;
    if (!pool) {
        ownPool = std::make_unique<WorkerPool>();
        pool = ownPool.get();
    }
    // One memo for the whole scan: de-duplication re-measures paths the cleaners have
    // measured already, and must not walk them again.
    const DirectorySizer sizer(*pool, options.stop, std::make_shared<SizeMemo>());
    const auto notes = std::make_shared<ScanNotes>();
    const ScanContext context{sizer, options.stop, notes};

    // Results are kept per cleaner and joined in catalog order, so a scan's output does
    // not depend on which cleaner finished first.
    std::vector<std::vector<CleanTarget>> results(cleaners_.size());
    std::mutex progressMutex;
    ScanProgress progress{0, cleaners_.size(), 0};
    TaskGroup group;
    for (std::size_t index = 0; index < cleaners_.size(); ++index) {
        pool->submit(group, [&, index] {
            if (options.stop.stop_requested()) return;
            results[index] = cleaners_[index]->scan(context);
            std::lock_guard lock(progressMutex);
            ++progress.cleanersFinished;
            for (const auto& target : results[index]) progress.bytesFound += target.sizeBytes;
            if (options.progress) options.progress(progress);
        });
    }
    pool->wait(group);
    if (options.stop.stop_requested()) return std::nullopt;

    std::vector<CleanTarget> accumulated;
    for (auto& list : results)
        for (auto& target : list) accumulated.push_back(std::move(target));
    auto offered = ownPathsOnly(accumulated, sizer);
    if (guard_) offered = deletableOnly(offered, *guard_, *notes, sizer);
    offered = markLinks(dedup(offered, sizer));
    if (options.stop.stop_requested()) return std::nullopt;
    return ScanResult{std::move(offered), notes->take()};
}

}  // namespace kelvo
