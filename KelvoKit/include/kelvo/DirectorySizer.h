#pragma once
// The one measure of disk usage: the allocated bytes (blocks x 512) that removing a file,
// or everything below a directory (the top directory itself not counted), would free.
// Symbolic links inside the tree are never followed; hidden entries count. A file with
// several names (hard links) counts once, and only when every one of its names lies in
// what is measured: a file also named elsewhere frees nothing, its bytes are reported as
// shared instead. measureAll applies that to a target's paths together, so a file named
// in two of them counts once; measureEach counts as du does, each file once across the
// paths, in the first that names it, wherever its other names are.
// Parts that cannot be read are skipped and reported through hadErrors, so the bytes are
// then a lower bound; entries removed while the walk runs are simply not counted. Only a
// missing path (or a dangling link) measures 0 without an error; a path longer than
// PATH_MAX is opened one component at a time, never re-resolved whole. A measurement
// never throws.
//
// A sizer built on a pool splits big trees across the pool's idle workers; given a memo,
// a path measured once is not walked again during the same scan (the memo keeps each
// path's own measurement, which measureAll combines afresh for every target). A stop
// request makes the walk return early (the result is then marked hadErrors and must not
// be published).
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

// A file with more than one name, as a measurement met it.
struct LinkedFile {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t allocatedBytes = 0;
    std::uint64_t names = 0;     // its hard links on the volume
    std::uint64_t namesMet = 0;  // those met by the measurement
    friend bool operator==(const LinkedFile&, const LinkedFile&) = default;
};

struct Measurement {
    std::int64_t bytes = 0;  // what removal frees
    bool hadErrors = false;
    std::int64_t sharedBytes = 0;  // files also named outside: not in bytes, not freed
    // Every file met under more than one name, by device and inode: what lets the
    // measurements of several paths be combined. Shared, as memos and targets copy it.
    std::shared_ptr<const std::vector<LinkedFile>> linkedFiles = nullptr;

    // The remarks a target of this size carries: that it is a lower bound, that some
    // bytes are shared; empty when there is nothing to say.
    std::string notes() const;
    // Equal figures and equal files met (no list and an empty one are equal).
    friend bool operator==(const Measurement& left, const Measurement& right);
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
    // The paths of one target, measured one by one and combined: a file named in several
    // of them counts once, when all its names lie in them; hadErrors when any had errors.
    Measurement measureAll(const std::vector<std::filesystem::path>& paths) const;
    // Each path's measurement, in order, as du counts: a file with several names counts
    // once, in the first path that names it (sharedBytes stays 0).
    std::vector<Measurement> measureEach(const std::vector<std::filesystem::path>& paths) const;
    std::int64_t size(const std::filesystem::path& path) const { return measure(path).bytes; }

private:
    Measurement measureUncached(const std::filesystem::path& path) const;

    WorkerPool* pool_ = nullptr;
    std::stop_token stop_;
    std::shared_ptr<SizeMemo> memo_;
};

}  // namespace kelvo
