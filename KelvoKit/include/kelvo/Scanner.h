#pragma once
// Runs a list of cleaners as one scan on one pool of workers and returns what may be
// offered, with the scan's notes (remarks the cleaners made through their context, then
// the scanner's own), in four steps:
// - paths of other users are never offered (ownPathsOnly);
// - nothing the guard would refuse is offered (deletableOnly): what that leaves out is
//   noted, so a target that shrank or vanished says why; a link that leads out of the
//   allowed roots stays for the last step, so the user sees it is a link;
// - no path is offered twice (dedup): a strict ancestor path wins over the paths inside
//   it, an exactly shared path goes to the smaller id, equal ids never cover each other;
// - a target the executor will refuse for a link is marked and says why (markLinks).
// Paths are matched as vocabulary/Paths.h compares them. Commands pass through every step; a
// target that lost some paths is re-measured, one that lost all is dropped. The guard still
// checks every path when it is removed.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

#include "kelvo/Cleaner.h"
#include "kelvo/SafetyGuard.h"

namespace kelvo {

class WorkerPool;

struct ScanProgress {
    std::size_t cleanersFinished = 0;
    std::size_t cleanersTotal = 0;
    std::int64_t bytesFound = 0;
};

struct ScanOptions {
    WorkerPool* pool = nullptr;  // nothing: the scan makes its own pool
    std::stop_token stop;
    // Called from worker threads, one call at a time, after each cleaner finishes.
    std::function<void(const ScanProgress&)> progress;
};

struct ScanResult {
    std::vector<CleanTarget> targets;
    std::vector<std::string> notes;  // localised, each once, in the order first made
};

class Scanner {
public:
    // Null entries are dropped: there is nothing to run. The domain services give their
    // clean's guard; without one the scan offers what the guard would refuse.
    explicit Scanner(CleanerList cleaners, std::optional<SafetyGuard> guard = std::nullopt)
        : cleaners_(std::move(cleaners)), guard_(std::move(guard)) {
        std::erase(cleaners_, nullptr);
    }

    // Nothing when the scan was stopped: a stopped scan publishes nothing.
    std::optional<ScanResult> scan(const ScanOptions& options = {}) const;

    // The de-duplication step on its own; re-measures with the given sizer.
    static std::vector<CleanTarget> dedup(const std::vector<CleanTarget>& targets,
                                          const DirectorySizer& sizer = DirectorySizer());
    // Drops every path that belongs to another user or whose owner cannot be read
    // (RemovalChecks::ownerReason); re-measures with the given sizer.
    static std::vector<CleanTarget> ownPathsOnly(const std::vector<CleanTarget>& targets,
                                                 const DirectorySizer& sizer = DirectorySizer());
    // Drops every path the guard refuses and adds one note per reason that names what was
    // left out; re-measures with the given sizer.
    static std::vector<CleanTarget> deletableOnly(const std::vector<CleanTarget>& targets, const SafetyGuard& guard,
                                                  ScanNotes& notes, const DirectorySizer& sizer = DirectorySizer());
    // Sets blockedByLink on every target with a path RemovalChecks::linkReason refuses, and
    // puts that reason first in its notes.
    static std::vector<CleanTarget> markLinks(std::vector<CleanTarget> targets);

    const CleanerList& cleaners() const { return cleaners_; }

private:
    CleanerList cleaners_;
    std::optional<SafetyGuard> guard_;
};

}  // namespace kelvo
