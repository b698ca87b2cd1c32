#include "kelvo/DirectorySizer.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "kelvo/Paths.h"
#include "kelvo/WorkerPool.h"
#include "kelvo/platform/DirectoryHandle.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {
namespace {

using platform::DirectoryHandle;
using platform::EntryType;

// The subdirectory names of one directory, packed into one string: once a walk has
// warmed up, listing a directory allocates nothing.
class NameList {
public:
    void clear() {
        characters_.clear();
        starts_.clear();
    }
    void add(std::string_view name) {
        starts_.push_back(characters_.size());
        characters_.append(name);
    }
    std::size_t size() const { return starts_.size(); }
    std::string_view operator[](std::size_t index) const {
        const std::size_t end = index + 1 < starts_.size() ? starts_[index + 1] : characters_.size();
        return std::string_view(characters_).substr(starts_[index], end - starts_[index]);
    }

private:
    std::string characters_;
    std::vector<std::size_t> starts_;
};

// One open directory of the path from a walk's start down to where it is now, with the
// subdirectories it has not entered yet. Keeping every level's descriptor open is what
// lets a walk go deeper than PATH_MAX without ever resolving a path.
struct Level {
    std::optional<DirectoryHandle> directory;
    NameList subdirectories;
    std::size_t next = 0;

    bool hasPending() const { return directory && next < subdirectories.size(); }
};

// One measurement in progress. Subtrees handed to other workers add into the same
// atomics; the thread that started it waits for the group before reading them.
struct Walk {
    WorkerPool* pool;
    std::stop_token stop;
    TaskGroup group;
    std::atomic<std::int64_t> bytes{0};
    std::atomic<bool> hadErrors{false};

    void fail() { hadErrors.store(true, std::memory_order_relaxed); }

    // Sums every entry below `top`, depth first, without recursion (the depth of a tree is
    // not bounded by anything but the file system). Each subdirectory's own blocks are
    // counted when it is opened, so `top` itself is not.
    void walk(DirectoryHandle top) {
        std::deque<Level> levels(1);
        std::int64_t sum = 0;
        std::size_t depth = 0;
        enter(levels[0], std::move(top), sum);
        while (true) {
            if (stop.stop_requested()) {
                fail();
                break;
            }
            if (pool && pool->hasIdleWorker()) handOffShallowest(levels, depth, sum);
            Level& level = levels[depth];
            if (!level.hasPending()) {
                level.directory.reset();
                if (depth == 0) break;
                --depth;
                continue;
            }
            auto child = openSubdirectory(*level.directory, level.subdirectories[level.next++], sum);
            if (!child) continue;
            if (++depth == levels.size()) levels.emplace_back();
            enter(levels[depth], std::move(*child), sum);
        }
        bytes.fetch_add(sum, std::memory_order_relaxed);
    }

    // Lists a directory: files, links and the like are counted at once; subdirectories
    // are kept to be entered (or handed off) one by one.
    void enter(Level& level, DirectoryHandle directory, std::int64_t& sum) {
        level.subdirectories.clear();
        level.next = 0;
        const auto error = directory.forEachName([&](std::string_view name, EntryType type) {
            if (type == EntryType::directory) {
                level.subdirectories.add(name);
                return true;
            }
            std::error_code statError;
            if (const auto allocated = directory.childAllocatedBytes(name, statError))
                sum += *allocated;
            else if (statError != std::errc::no_such_file_or_directory)
                fail();  // there but unreadable; an entry removed since the listing is simply gone
            return true;
        });
        if (error) fail();
        level.directory = std::move(directory);
    }

    // Opens a listed subdirectory and counts its own blocks. Nothing when it cannot be
    // entered: then the entry is counted as far as it can be read.
    std::optional<DirectoryHandle> openSubdirectory(const DirectoryHandle& parent, std::string_view name,
                                                    std::int64_t& sum) {
        std::error_code error;
        auto child = parent.openChild(name, error);
        if (child) {
            if (const auto allocated = child->allocatedBytes(error))
                sum += *allocated;
            else
                fail();
            return child;
        }
        if (error == std::errc::no_such_file_or_directory) return std::nullopt;  // removed while we walk
        std::error_code statError;
        if (const auto allocated = parent.childAllocatedBytes(name, statError)) sum += *allocated;
        // Replaced by a file or a link since the listing: counted as what it is now. Anything
        // else (no permission, no descriptor left) leaves a part of the tree unread.
        if (error != std::errc::not_a_directory && error != std::errc::too_many_symbolic_link_levels) fail();
        return std::nullopt;
    }

    // Gives an idle worker the pending subdirectory nearest the top: the one likely to hold
    // the most work, so hand-offs stay few and each is worth its cost.
    void handOffShallowest(std::deque<Level>& levels, std::size_t depth, std::int64_t& sum) {
        for (std::size_t index = 0; index <= depth; ++index) {
            Level& level = levels[index];
            if (!level.hasPending()) continue;
            auto child = openSubdirectory(*level.directory, level.subdirectories[level.next++], sum);
            if (!child) return;
            auto shared = std::make_shared<DirectoryHandle>(std::move(*child));
            pool->submit(group, [this, shared] { walk(std::move(*shared)); });
            return;
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

Measurement DirectorySizer::measureAll(const std::vector<std::filesystem::path>& paths) const {
    Measurement total;
    for (const auto& path : paths) {
        const Measurement measured = measure(path);
        total.bytes += measured.bytes;
        total.hadErrors = total.hadErrors || measured.hadErrors;
    }
    return total;
}

Measurement DirectorySizer::measureUncached(const std::filesystem::path& path) const {
    std::error_code error;
    // The top may be reached through a link (it was asked for by name); nothing below it is.
    auto top = DirectoryHandle::open(path, true, error);
    if (!top) {
        if (error == std::errc::not_a_directory) return {platform::allocatedSize(path), false};
        // Nothing there, a dangling link or a loop of links: nothing to measure.
        if (error == std::errc::no_such_file_or_directory ||
            (error == std::errc::too_many_symbolic_link_levels && platform::isSymbolicLink(path).value_or(false)))
            return {};
        return {0, true};  // there but unreadable: no permission, a link met past PATH_MAX, ...
    }
    Walk walk{pool_, stop_, {}, {}, {}};
    walk.walk(std::move(*top));
    if (pool_) pool_->wait(walk.group);
    return {walk.bytes.load(), walk.hadErrors.load()};
}

}  // namespace kelvo
