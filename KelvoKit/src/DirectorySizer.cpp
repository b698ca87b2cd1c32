#include "kelvo/DirectorySizer.h"

#include <atomic>
#include <string>
#include <vector>

#include "kelvo/Paths.h"
#include "kelvo/WorkerPool.h"
#include "kelvo/platform/DirectoryHandle.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {
namespace {

using platform::DirectoryHandle;
using platform::EntryInfo;

// One measurement in progress. Subtrees handed to other workers add into the same
// atomics; the walk that started it waits for the group before reading them.
struct Walk {
    WorkerPool* pool;
    std::stop_token stop;
    TaskGroup group;
    std::atomic<std::int64_t> bytes{0};
    std::atomic<bool> hadErrors{false};

    void fail() { hadErrors.store(true, std::memory_order_relaxed); }

    // Sums the entries below `directory`, depth first. Subdirectory names are collected
    // before descending so only one listing buffer is alive per level; each level keeps
    // its descriptor open, which is what lets the walk go deeper than PATH_MAX.
    void walk(const DirectoryHandle& directory) {
        if (stop.stop_requested()) {
            fail();
            return;
        }
        std::int64_t sum = 0;
        std::vector<std::string> subdirectories;
        const auto error = directory.forEachEntry([&](const EntryInfo& entry) {
            sum += entry.allocatedBytes;
            if (entry.isDirectory) subdirectories.emplace_back(entry.name);
            return true;
        });
        if (error) fail();
        bytes.fetch_add(sum, std::memory_order_relaxed);
        for (const auto& name : subdirectories) {
            std::error_code openError;
            auto child = directory.openChild(name, openError);
            if (!child) {
                fail();  // unreadable, or removed while we walk
                continue;
            }
            if (pool && pool->hasIdleWorker()) {
                auto shared = std::make_shared<DirectoryHandle>(std::move(*child));
                pool->submit(group, [this, shared] { walk(*shared); });
            } else {
                walk(*child);
            }
        }
    }
};

}  // namespace

std::optional<Measurement> SizeMemo::find(const std::string& path) const {
    std::lock_guard lock(mutex_);
    const auto found = measurements_.find(path);
    if (found == measurements_.end()) return std::nullopt;
    return found->second;
}

void SizeMemo::remember(const std::string& path, Measurement measurement) {
    std::lock_guard lock(mutex_);
    measurements_.insert_or_assign(path, measurement);
}

DirectorySizer::DirectorySizer(WorkerPool& pool, std::stop_token stop, std::shared_ptr<SizeMemo> memo)
    : pool_(&pool), stop_(std::move(stop)), memo_(std::move(memo)) {}

Measurement DirectorySizer::measure(const std::filesystem::path& path) const {
    if (!memo_) return measureUncached(path);
    const std::string key = Paths::standardized(path).string();
    if (auto known = memo_->find(key)) return *known;
    const Measurement measured = measureUncached(path);
    if (!stop_.stop_requested()) memo_->remember(key, measured);
    return measured;
}

Measurement DirectorySizer::measureUncached(const std::filesystem::path& path) const {
    if (!platform::exists(path)) return {};
    if (!platform::isDirectory(path)) return {platform::allocatedSize(path), false};
    std::error_code error;
    // The top may be reached through a link (it was asked for by name); nothing below it is.
    auto top = DirectoryHandle::open(path, true, error);
    if (!top) return {0, true};
    Walk walk{pool_, stop_, {}, {}, {}};
    walk.walk(*top);
    if (pool_) pool_->wait(walk.group);
    return {walk.bytes.load(), walk.hadErrors.load()};
}

}  // namespace kelvo
