#pragma once
// Runs a list of cleaners as one scan on one pool of workers and returns the targets with
// no path offered twice: a strict ancestor path wins over the paths inside it, an exactly
// shared path goes to the smaller id, equal ids never cover each other, commands pass
// through; a target that lost some paths is re-measured, one that lost all is dropped.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

#include "kelvo/Cleaner.h"

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

class Scanner {
public:
    // Null entries are dropped: there is nothing to run.
    explicit Scanner(CleanerList cleaners) : cleaners_(std::move(cleaners)) { std::erase(cleaners_, nullptr); }

    // Nothing when the scan was stopped: a stopped scan publishes nothing.
    std::optional<std::vector<CleanTarget>> scan(const ScanOptions& options = {}) const;

    // The de-duplication step on its own; re-measures with the given sizer.
    static std::vector<CleanTarget> dedup(const std::vector<CleanTarget>& targets,
                                          const DirectorySizer& sizer = DirectorySizer());

    const CleanerList& cleaners() const { return cleaners_; }

private:
    CleanerList cleaners_;
};

}  // namespace kelvo
