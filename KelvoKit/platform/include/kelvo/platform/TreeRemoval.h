#pragma once
// Removal of a file, a symbolic link or a whole directory tree that never follows a
// symbolic link, not even one swapped in while the removal runs.
//
// The item's parent is reached from "/" one component at a time, each opened with
// O_NOFOLLOW, so a link anywhere in the parent chain stops the removal before anything is
// touched (callers check the chain for links first; this makes the check hold at the
// moment of removal too). Below the parent everything is done relative to open directory
// descriptors: files and links are unlinked (a link as a link, never followed), a directory
// is opened with O_NOFOLLOW, emptied and removed. No full path string is built below the
// parent, so trees deeper than PATH_MAX go too. A directory that is the root of another
// mount is never entered: what is mounted there is not part of the tree. Errors come back
// as values; nothing here throws.
//
// Given a way to share work, independent subtrees are removed side by side on other
// threads: unlinking waits on the file system's directory locks, its journal and the
// device far more than on a core. Resources stay bounded however wide or deep the tree:
// a directory is read a bounded number of entries at a time and those files go at once,
// in inode order; one walk keeps at most a fixed number of directories open and reaches
// a closed one again through "..", checked to be the very directory it left (device and
// inode); work is handed over only to a thread that is idle, so little waits in a queue.
#include <filesystem>
#include <functional>
#include <system_error>

namespace kelvo::platform {

// How a removal hands work to other threads; a library's worker pool adapts to it.
struct WorkSharing {
    // Runs a task soon, on another thread.
    std::function<void(std::function<void()>)> submit;
    // Returns once every task given to submit has finished (and may run tasks meanwhile).
    std::function<void()> waitForAll;
    // Whether a thread waits for work now: the moment to hand it some. A hint, asked often.
    std::function<bool()> hasIdleWorker;

    bool enabled() const { return submit && waitForAll && hasIdleWorker; }
};

struct TreeRemovalOptions {
    // When a permission error blocks inside the tree, add the owner's read, write and
    // search bits to the directory involved and try once more. Bits are changed only
    // through a descriptor of that directory, never by path, and never on the item's
    // parent, which lies outside the tree.
    bool addOwnerPermissions = false;
    // Left empty, the whole removal runs on the calling thread.
    WorkSharing sharing{};
};

// Removes the item at an absolute path and everything below it, going on past entries
// that cannot be removed. The path must be standardised: "." or ".." components, a relative
// path and "/" itself give EINVAL. The result is the first error met, or nothing when the
// item is gone; ENOENT when nothing was at the path; ELOOP or ENOTDIR when the parent chain
// holds a link or a non-directory; EXDEV for a mount root met at or below the item; ESTALE
// when a directory left for a deeper one was moved meanwhile (the walk stops there).
// Which error is first may vary between runs when the removal is shared across threads;
// whether there is one does not.
std::error_code removeTree(const std::filesystem::path& path, const TreeRemovalOptions& options = {});

}  // namespace kelvo::platform
