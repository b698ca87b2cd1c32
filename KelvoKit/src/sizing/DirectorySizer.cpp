#include "kelvo/DirectorySizer.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_set>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "vocabulary/Paths.h"
#include "kelvo/WorkerPool.h"
#include "kelvo/platform/DirectoryHandle.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {
namespace {

using platform::DirectoryHandle;
using platform::EntryType;
using platform::StoredItem;
using LinkedFiles = std::vector<LinkedFile>;

bool sameFile(const LinkedFile& left, const LinkedFile& right) {
    return left.device == right.device && left.inode == right.inode;
}

bool freedWhole(const LinkedFile& file) { return file.namesMet >= file.names; }

// One entry per file: the names met added up. A file whose count of names changed while
// it was being measured keeps the highest count, so it is never taken for freed too soon.
LinkedFiles byFile(LinkedFiles met) {
    std::sort(met.begin(), met.end(), [](const LinkedFile& left, const LinkedFile& right) {
        return std::tie(left.device, left.inode) < std::tie(right.device, right.inode);
    });
    LinkedFiles files;
    for (const auto& name : met) {
        if (!files.empty() && sameFile(files.back(), name)) {
            files.back().namesMet += name.namesMet;
            files.back().names = std::max(files.back().names, name.names);
        } else {
            files.push_back(name);
        }
    }
    return files;
}

// The bytes of the files that have a single name (or all their names in the measurement
// that met them): what a measurement counts whatever it is combined with.
std::int64_t singleNameBytes(const Measurement& measured) {
    std::int64_t bytes = measured.bytes;
    if (measured.linkedFiles)
        for (const auto& file : *measured.linkedFiles)
            if (freedWhole(file)) bytes -= file.allocatedBytes;
    return bytes;
}

// Measured bytes of single-name files plus the files with several names, each counted
// once: freed when every name was met, shared otherwise.
Measurement withLinkedFiles(std::int64_t singleBytes, bool hadErrors, LinkedFiles met) {
    Measurement measured{singleBytes, hadErrors};
    if (met.empty()) return measured;
    LinkedFiles files = byFile(std::move(met));
    for (const auto& file : files)
        (freedWhole(file) ? measured.bytes : measured.sharedBytes) += file.allocatedBytes;
    measured.linkedFiles = std::make_shared<const LinkedFiles>(std::move(files));
    return measured;
}

// Counts one item: a single name (or a directory) adds to the sum at once, a file with
// more names waits until all of the measurement's names of it are known.
void count(const StoredItem& item, std::int64_t& sum, LinkedFiles& linked) {
    if (item.names > 1 && !item.isDirectory)
        linked.push_back({item.device, item.inode, item.allocatedBytes, item.names, 1});
    else
        sum += item.allocatedBytes;
}

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
// atomics; the thread that started it waits for the group before reading them. The names
// of files with several names are collected per subtree and joined once it is done, so the
// walk takes no lock per entry.
struct Walk {
    WorkerPool* pool;
    std::stop_token stop;
    TaskGroup group;
    std::atomic<std::int64_t> bytes{0};
    std::atomic<bool> hadErrors{false};
    std::mutex linkedMutex;
    LinkedFiles linked;

    void fail() { hadErrors.store(true, std::memory_order_relaxed); }

    // Sums every entry below `top`, depth first, without recursion (the depth of a tree is
    // not bounded by anything but the file system). Each subdirectory's own blocks are
    // counted when it is opened, so `top` itself is not.
    void walk(DirectoryHandle top) {
        std::deque<Level> levels(1);
        std::int64_t sum = 0;
        LinkedFiles met;
        std::size_t depth = 0;
        enter(levels[0], std::move(top), sum, met);
        while (true) {
            if (stop.stop_requested()) {
                fail();
                break;
            }
            if (pool && pool->hasIdleWorker()) handOffShallowest(levels, depth, sum, met);
            Level& level = levels[depth];
            if (!level.hasPending()) {
                level.directory.reset();
                if (depth == 0) break;
                --depth;
                continue;
            }
            auto child = openSubdirectory(*level.directory, level.subdirectories[level.next++], sum, met);
            if (!child) continue;
            if (++depth == levels.size()) levels.emplace_back();
            enter(levels[depth], std::move(*child), sum, met);
        }
        bytes.fetch_add(sum, std::memory_order_relaxed);
        if (met.empty()) return;
        std::lock_guard lock(linkedMutex);
        if (linked.empty())
            linked = std::move(met);
        else
            linked.insert(linked.end(), met.begin(), met.end());
    }

    // Lists a directory: files, links and the like are counted at once; subdirectories
    // are kept to be entered (or handed off) one by one.
    void enter(Level& level, DirectoryHandle directory, std::int64_t& sum, LinkedFiles& met) {
        level.subdirectories.clear();
        level.next = 0;
        const auto error = directory.forEachName([&](std::string_view name, EntryType type) {
            if (type == EntryType::directory) {
                level.subdirectories.add(name);
                return true;
            }
            std::error_code statError;
            if (const auto item = directory.childStoredItem(name, statError))
                count(*item, sum, met);
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
                                                    std::int64_t& sum, LinkedFiles& met) {
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
        if (const auto item = parent.childStoredItem(name, statError)) count(*item, sum, met);
        // Replaced by a file or a link since the listing: counted as what it is now. Anything
        // else (no permission, no descriptor left) leaves a part of the tree unread.
        if (error != std::errc::not_a_directory && error != std::errc::too_many_symbolic_link_levels) fail();
        return std::nullopt;
    }

    // Gives an idle worker the pending subdirectory nearest the top: the one likely to hold
    // the most work, so hand-offs stay few and each is worth its cost.
    void handOffShallowest(std::deque<Level>& levels, std::size_t depth, std::int64_t& sum, LinkedFiles& met) {
        for (std::size_t index = 0; index <= depth; ++index) {
            Level& level = levels[index];
            if (!level.hasPending()) continue;
            auto child = openSubdirectory(*level.directory, level.subdirectories[level.next++], sum, met);
            if (!child) return;
            auto shared = std::make_shared<DirectoryHandle>(std::move(*child));
            pool->submit(group, [this, shared] { walk(std::move(*shared)); });
            return;
        }
    }
};

}  // namespace

std::string Measurement::notes() const {
    std::string notes = hadErrors ? CleanTarget::partialSizeNote() : std::string();
    if (sharedBytes > 0) {
        if (!notes.empty()) notes += " ";
        notes += L10n::t("cleaner.note.sharedSize", {Format::bytes(sharedBytes)});
    }
    return notes;
}

bool operator==(const Measurement& left, const Measurement& right) {
    const auto filesOf = [](const Measurement& measured) {
        return measured.linkedFiles ? *measured.linkedFiles : LinkedFiles();
    };
    return left.bytes == right.bytes && left.hadErrors == right.hadErrors && left.sharedBytes == right.sharedBytes &&
           filesOf(left) == filesOf(right);
}

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
    if (paths.size() == 1) return measure(paths.front());
    std::int64_t singleBytes = 0;
    bool hadErrors = false;
    LinkedFiles met;
    for (const auto& path : paths) {
        const Measurement measured = measure(path);
        singleBytes += singleNameBytes(measured);
        hadErrors = hadErrors || measured.hadErrors;
        if (measured.linkedFiles) met.insert(met.end(), measured.linkedFiles->begin(), measured.linkedFiles->end());
    }
    return withLinkedFiles(singleBytes, hadErrors, std::move(met));
}

std::vector<Measurement> DirectorySizer::measureEach(const std::vector<std::filesystem::path>& paths) const {
    struct FileHash {
        std::size_t operator()(const LinkedFile& file) const {
            return std::hash<std::uint64_t>()(file.inode) ^ (std::hash<std::uint64_t>()(file.device) << 1);
        }
    };
    struct SameFile {
        bool operator()(const LinkedFile& left, const LinkedFile& right) const { return sameFile(left, right); }
    };
    std::unordered_set<LinkedFile, FileHash, SameFile> counted;
    std::vector<Measurement> result;
    result.reserve(paths.size());
    for (const auto& path : paths) {
        Measurement measured = measure(path);
        measured.bytes = singleNameBytes(measured);
        measured.sharedBytes = 0;
        if (measured.linkedFiles)
            for (const auto& file : *measured.linkedFiles)
                if (counted.insert(file).second) measured.bytes += file.allocatedBytes;
        result.push_back(std::move(measured));
    }
    return result;
}

Measurement DirectorySizer::measureUncached(const std::filesystem::path& path) const {
    std::error_code error;
    // The top may be reached through a link (it was asked for by name); nothing below it is.
    auto top = DirectoryHandle::open(path, true, error);
    if (!top) {
        if (error == std::errc::not_a_directory) {
            std::int64_t sum = 0;
            LinkedFiles met;
            if (const auto item = platform::storedItem(path)) count(*item, sum, met);
            return withLinkedFiles(sum, false, std::move(met));
        }
        // Nothing there, a dangling link or a loop of links: nothing to measure.
        if (error == std::errc::no_such_file_or_directory ||
            (error == std::errc::too_many_symbolic_link_levels && platform::isSymbolicLink(path).value_or(false)))
            return {};
        return {0, true};  // there but unreadable: no permission, a link met past PATH_MAX, ...
    }
    Walk walk{pool_, stop_, {}, {}, {}, {}, {}};
    walk.walk(std::move(*top));
    if (pool_) pool_->wait(walk.group);
    return withLinkedFiles(walk.bytes.load(), walk.hadErrors.load(), std::move(walk.linked));
}

}  // namespace kelvo
