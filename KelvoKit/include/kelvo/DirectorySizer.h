#pragma once
// The one measure of disk usage: allocated bytes (blocks x 512) of a file or of every
// entry below a directory (the top directory itself not counted). Symbolic links inside
// the tree are never followed; hidden entries count; a hard link counts once per name.
// Parts that cannot be read are skipped and reported through hadErrors, so the bytes are
// then a lower bound; entries removed while the walk runs are simply not counted. Only a
// missing path (or a dangling link) measures 0 without an error; a path longer than
// PATH_MAX is opened one component at a time, never re-resolved whole. A measurement
// never throws.
//
// A sizer built on a pool splits big trees across the pool's idle workers; given a memo,
// a path measured once is not walked again during the same scan. A stop request makes
// the walk return early (the result is then marked hadErrors and must not be published).
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace kelvo {

class WorkerPool;

struct Measurement {
    std::int64_t bytes = 0;
    bool hadErrors = false;
    friend bool operator==(const Measurement&, const Measurement&) = default;
};

// Measurements of one scan, by standardised path. Shared by every sizer of the scan.
class SizeMemo {
public:
    std::optional<Measurement> find(const std::string& path) const;
    void remember(const std::string& path, Measurement measurement);

private:
    mutable std::mutex mutex_;
    std::unordered_map<std::string, Measurement> measurements_;
};

class DirectorySizer {
public:
    // Walks on the calling thread only, remembers nothing.
    DirectorySizer() = default;
    DirectorySizer(WorkerPool& pool, std::stop_token stop = {}, std::shared_ptr<SizeMemo> memo = nullptr);

    Measurement measure(const std::filesystem::path& path) const;
    // The paths measured one by one: their bytes summed, hadErrors when any had errors.
    Measurement measureAll(const std::vector<std::filesystem::path>& paths) const;
    std::int64_t size(const std::filesystem::path& path) const { return measure(path).bytes; }

private:
    Measurement measureUncached(const std::filesystem::path& path) const;

    WorkerPool* pool_ = nullptr;
    std::stop_token stop_;
    std::shared_ptr<SizeMemo> memo_;
};

}  // namespace kelvo
