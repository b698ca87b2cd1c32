#include "kelvo/platform/TreeRemoval.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#if defined(__linux__)
#include <sys/syscall.h>
#endif

#include "OpenFlags.h"
#include "kelvo/platform/Descriptor.h"
#include "kelvo/platform/DirectoryHandle.h"
#include "kelvo/platform/DirectoryReader.h"

namespace kelvo::platform {
namespace {

bool permissionDenied(int error) { return error == EACCES || error == EPERM; }

std::error_code errorOf(int error) { return {error, std::generic_category()}; }

// Adds mode bits to the directory a descriptor refers to. A pinned (O_PATH) descriptor
// cannot be given to fchmod; it is changed through fchmodat2 with an empty path or through
// its /proc/self/fd entry, both of which name the open directory itself, so a link swapped
// in under the directory's old name is never what gets changed.
bool addModeBits(int fd, mode_t bits) {
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISDIR(status.st_mode)) return false;
    if ((status.st_mode & bits) == bits) return true;
    const mode_t mode = (status.st_mode & 07777) | bits;
    if (::fchmod(fd, mode) == 0) return true;
#if defined(__linux__)
    if (errno != EBADF) return false;
#if !defined(SYS_fchmodat2)
#define SYS_fchmodat2 452
#endif
    if (::syscall(SYS_fchmodat2, fd, "", mode, AT_EMPTY_PATH) == 0) return true;
    char link[64];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    return ::chmod(link, mode) == 0;
#else
    return false;
#endif
}

// Another file system, or a mount of any kind (a bind mount shares the device number),
// starts at this directory.
bool isMountRoot(int fd, const struct stat& status, dev_t parentDevice) {
    if (status.st_dev != parentDevice) return true;
#if defined(__linux__) && defined(STATX_ATTR_MOUNT_ROOT)
    struct statx extended {};
    if (::statx(fd, "", AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW, STATX_TYPE, &extended) == 0 &&
        (extended.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0 &&
        (extended.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0)
        return true;
#else
    (void)fd;
#endif
    return false;
}

// One walk keeps at most this many directories open; a deeper one is closed and reached
// again through "..", and its listing goes on from where it stopped. Where a listing
// position is not known to survive reopening a directory, every level of a walk stays
// open instead (one descriptor per level, as deep as the tree goes).
constexpr std::size_t openLevelsPerWalk = DirectoryReader::resumable ? 32 : SIZE_MAX;
// Times a directory is gone through when it should be empty afterwards but is not (a
// listing that skipped entries while others were removed, entries added meanwhile).
constexpr int passesPerDirectory = 3;
// A huge directory is read and emptied this many entries at a time.
constexpr std::size_t entriesPerListing = 128 * 1024;

// A directory of the tree while something below it is being removed. Every walk that
// works in it or below it holds it: its own walk, and each child directory not yet
// gone. Whoever lets go last removes it from its parent and lets go of the parent.
struct Node {
    std::shared_ptr<Node> parent;  // nothing for the item's parent, which is outside the tree
    std::string name;              // in the parent
    dev_t device = 0;              // identity, checked when the directory is reached through ".."
    ino_t inode = 0;
    std::atomic<int> holders{1};
    std::atomic<bool> failed{false};  // an entry could not be removed: it cannot become empty
    std::once_flag widening;
    bool widened = false;  // the owner's bits were added (read after the once flag only)
    int passes = 1;        // touched only by the one that lets go last
};

// Names read from a directory, packed in one string with their terminating zeros, each
// with its inode and the listing position just after it.
class ListedNames {
public:
    void clear() {
        characters_.clear();
        entries_.clear();
    }
    void add(const char* name, ino_t inode, std::int64_t positionAfter) {
        entries_.push_back({characters_.size(), inode, positionAfter});
        characters_.append(name);
        characters_.push_back('\0');
    }
    std::size_t size() const { return entries_.size(); }
    const char* name(std::size_t index) const { return characters_.data() + entries_[index].start; }
    std::int64_t positionAfter(std::size_t index) const { return entries_[index].positionAfter; }
    void sortByInode() {
        std::sort(entries_.begin(), entries_.end(),
                  [](const Entry& left, const Entry& right) { return left.inode < right.inode; });
    }

private:
    struct Entry {
        std::size_t start;
        ino_t inode;
        std::int64_t positionAfter;
    };
    std::string characters_;
    std::vector<Entry> entries_;
};

// One directory on a walk's way down.
struct Frame {
    std::shared_ptr<Node> node;
    Descriptor fd;  // closed while the walk is deeper than its open levels allow
    ListedNames pending;  // subdirectories of the last listing, in listing order
    std::size_t next = 0;
    std::int64_t listingStart = 0;  // listing position the last listing started from
    std::int64_t position = 0;    // listing position after the last listing
    bool listed = false;          // the listing reached its end

    // Where to read on after reopening: just after the last subdirectory taken. Files of
    // the listing are gone already; subdirectories not taken yet are read again.
    std::int64_t resumePosition() const { return next > 0 ? pending.positionAfter(next - 1) : listingStart; }
};

struct Opened {
    Descriptor fd;
    struct stat status {};
    bool widened = false;
};

// What every walk of one removal shares: the options, the item's parent and the first error.
class Removal {
public:
    Removal(const TreeRemovalOptions& options, Descriptor parent, const struct stat& parentStatus)
        : options_(options), baseFd_(std::move(parent)), base_(std::make_shared<Node>()) {
        base_->device = parentStatus.st_dev;
        base_->inode = parentStatus.st_ino;
    }

    // Removes the item named `name` in its parent, and, for a directory, everything below.
    void removeItem(const std::string& name, bool isDirectory);

    const WorkSharing& sharing() const { return options_.sharing; }
    int baseFd() const { return baseFd_.get(); }
    std::error_code firstError() const {
        const int error = firstError_.load();
        return error == 0 ? std::error_code{} : errorOf(error);
    }

    void note(int error) {
        int none = 0;
        firstError_.compare_exchange_strong(none, error);
    }

    // An entry of `directory` stays: it cannot become empty.
    void keep(Node& directory, int error) {
        note(error);
        directory.failed.store(true, std::memory_order_relaxed);
    }

    // Adds the owner's read, write and search bits to a directory of the tree, once; true
    // when they are there, so a blocked call is worth trying again.
    bool widen(Node& directory, int fd) {
        if (!options_.addOwnerPermissions || !directory.parent) return false;
        std::call_once(directory.widening, [&] { directory.widened = addModeBits(fd, S_IRWXU); });
        return directory.widened;
    }

    int unlinkIn(Node& directory, int fd, const char* name, int flags) {
        if (::unlinkat(fd, name, flags) == 0) return 0;
        int error = errno;
        if (permissionDenied(error) && widen(directory, fd)) {
            if (::unlinkat(fd, name, flags) == 0) return 0;
            error = errno;
        }
        return error;
    }

    // Opens a subdirectory for reading, never through a link and never into another mount.
    std::optional<Opened> openChild(Node& parent, int parentFd, const char* name, int& error) {
        Opened opened;
        opened.fd = Descriptor(::openat(parentFd, name, openFlags::directoryNoFollow));
        if (!opened.fd.valid()) {
            error = errno;
            if (permissionDenied(error) && widen(parent, parentFd)) {
                opened.fd = Descriptor(::openat(parentFd, name, openFlags::directoryNoFollow));
                if (!opened.fd.valid()) error = errno;
            }
            if (!opened.fd.valid() && permissionDenied(error) && options_.addOwnerPermissions) {
                // The directory withholds reading or searching from its owner: pin it
                // without reading, add the bits through that descriptor, then open it for
                // reading through the pinned descriptor itself, so nothing can be swapped
                // in between.
                Descriptor pinned(::openat(parentFd, name, openFlags::pinnedDirectory));
                if (pinned.valid() && addModeBits(pinned.get(), S_IRWXU)) {
                    opened.widened = true;
                    opened.fd = Descriptor(::openat(pinned.get(), ".", openFlags::directoryNoFollow));
                    if (!opened.fd.valid()) error = errno;
                }
            }
            if (!opened.fd.valid()) return std::nullopt;
        }
        if (::fstat(opened.fd.get(), &opened.status) != 0) {
            error = errno;
            return std::nullopt;
        }
        if (!S_ISDIR(opened.status.st_mode)) {
            error = ENOTDIR;
            return std::nullopt;
        }
        if (isMountRoot(opened.fd.get(), opened.status, parent.device)) {
            error = EXDEV;
            return std::nullopt;
        }
        return opened;
    }

    // A subdirectory that could not be opened for the reason given.
    void removeUnopened(Node& parent, int parentFd, const char* name, int error) {
        if (error == ENOENT) return;  // gone meanwhile
        if (error == ENOTDIR || error == ELOOP) {
            // A link or a file stands under the name now: it goes as itself, never followed.
            const int unlinkError = unlinkIn(parent, parentFd, name, 0);
            if (unlinkError != 0 && unlinkError != ENOENT) keep(parent, unlinkError);
            return;
        }
        note(error);
        // A directory that cannot be entered may still be empty and removable; a mount
        // root is left alone altogether.
        if (error == EXDEV || unlinkIn(parent, parentFd, name, AT_REMOVEDIR) != 0) keep(parent, error);
    }

    // The node of a directory just opened; it holds its parent until it is gone.
    std::shared_ptr<Node> nodeOf(const std::shared_ptr<Node>& parent, const char* name, const Opened& opened) {
        auto node = std::make_shared<Node>();
        node->parent = parent;
        node->name = name;
        node->device = opened.status.st_dev;
        node->inode = opened.status.st_ino;
        if (opened.widened) std::call_once(node->widening, [&] { node->widened = true; });
        parent->holders.fetch_add(1, std::memory_order_relaxed);
        return node;
    }

private:
    TreeRemovalOptions options_;
    Descriptor baseFd_;
    std::shared_ptr<Node> base_;
    std::atomic<int> firstError_{0};
};

// Reopens the parent of the directory open as `childFd` through "..", and makes sure it is
// the directory expected: a directory moved elsewhere meanwhile has another parent, which
// is not part of the tree.
Descriptor openParent(int childFd, const Node& expected, int& error) {
    Descriptor parent(::openat(childFd, "..", openFlags::directoryNoFollow));
    if (!parent.valid()) {
        error = errno;
        return parent;
    }
    struct stat status {};
    if (::fstat(parent.get(), &status) != 0) {
        error = errno;
        return {};
    }
    if (status.st_dev != expected.device || status.st_ino != expected.inode) {
        error = ESTALE;
        return {};
    }
    return parent;
}

// Empties and removes one subtree, depth first, with an explicit stack of frames so the
// depth of the tree is bounded by neither the call stack nor the descriptors. Subtrees
// are handed to idle threads as they turn up, each as a walk of its own.
class Walk {
public:
    explicit Walk(Removal& removal) : removal_(removal) {}

    void run(std::shared_ptr<Node> node, Descriptor fd) {
        push(std::move(node), std::move(fd));
        const WorkSharing& sharing = removal_.sharing();
        const bool sharesWork = sharing.enabled();
        while (!frames_.empty()) {
            // Every idle thread gets a subtree at once: each hand-off queues a task, which
            // makes one idle thread fewer.
            while (sharesWork && sharing.hasIdleWorker() && handOffShallowest()) {
            }
            Frame& top = frames_.back();
            if (top.next < top.pending.size()) {
                take(frames_.size() - 1, false);
            } else if (!top.listed) {
                readListing(top);
            } else {
                finishTop();
            }
        }
    }

private:
    void push(std::shared_ptr<Node> node, Descriptor fd) {
        Frame& frame = frames_.emplace_back();
        frame.node = std::move(node);
        frame.fd = std::move(fd);
        if (++open_ <= openLevelsPerWalk) return;
        // Open frames are always the deepest ones: close the shallowest of them.
        Frame& oldest = frames_[frames_.size() - open_];
        oldest.listingStart = oldest.position = oldest.resumePosition();
        oldest.pending.clear();
        oldest.next = 0;
        oldest.listed = false;
        oldest.fd = Descriptor();
        --open_;
    }

    // Takes the next pending subdirectory of a frame, and walks it here or hands it off.
    void take(std::size_t index, bool handOff) {
        Frame& frame = frames_[index];
        const char* name = frame.pending.name(frame.next++);
        int error = 0;
        auto opened = removal_.openChild(*frame.node, frame.fd.get(), name, error);
        if (!opened) {
            removal_.removeUnopened(*frame.node, frame.fd.get(), name, error);
            return;
        }
        auto child = removal_.nodeOf(frame.node, name, *opened);
        if (!handOff) {
            push(std::move(child), std::move(opened->fd));
            return;
        }
        auto fd = std::make_shared<Descriptor>(std::move(opened->fd));
        Removal& removal = removal_;
        removal_.sharing().submit([&removal, child, fd] { Walk(removal).run(child, std::move(*fd)); });
    }

    // Gives an idle thread the pending subdirectory nearest the top: likely the most work.
    // False when there is none.
    bool handOffShallowest() {
        for (std::size_t index = frames_.size() - open_; index < frames_.size(); ++index) {
            if (frames_[index].next < frames_[index].pending.size()) {
                take(index, true);
                return true;
            }
        }
        return false;
    }

    // Reads the top directory on, up to entriesPerListing entries. Files, links and the
    // like go at once, in inode order: on ext4 and its kind the inode table is then
    // written front to back rather than all over, which is most of what a huge folder
    // costs. Subdirectories are kept, in listing order, to be taken one by one. Nothing
    // goes while the listing is read: a readdir stream may skip entries when its directory
    // changes under it.
    void readListing(Frame& frame) {
        frame.pending.clear();
        frame.next = 0;
        frame.listingStart = frame.position;
        files_.clear();
        const ListingProgress progress = DirectoryReader().read(
            frame.fd.get(),
            [&](const DirectoryRecord& entry) {
                const auto type = entryType(*frame.node, frame.fd.get(), entry);
                if (type == EntryType::directory) {
                    frame.pending.add(entry.name, entry.inode, entry.positionAfter);
                } else if (type) {
                    files_.add(entry.name, entry.inode, entry.positionAfter);
                }
                return true;
            },
            entriesPerListing);
        if (progress.records > 0) frame.position = progress.position;
        if (progress.atEnd) frame.listed = true;
        if (progress.error) {
            removal_.keep(*frame.node, progress.error.value());
            frame.listed = true;
        }
        files_.sortByInode();
        for (std::size_t index = 0; index < files_.size(); ++index) {
            const int unlinkError = removal_.unlinkIn(*frame.node, frame.fd.get(), files_.name(index), 0);
            if (unlinkError == 0 || unlinkError == ENOENT) continue;
            // Linux says EISDIR when a directory took the name meanwhile: handle it as one.
            if (unlinkError == EISDIR) {
                frame.pending.add(files_.name(index), 0, files_.positionAfter(index));
            } else {
                removal_.keep(*frame.node, unlinkError);
            }
        }
    }

    // An entry's type; where the directory records none and the entry's status cannot be
    // read, one more try with the owner's bits added, else nothing (gone, or it stays).
    std::optional<EntryType> entryType(Node& directory, int fd, const DirectoryRecord& entry) {
        int error = entry.typeError;
        if (error == 0) return entry.type;
        if (permissionDenied(error) && removal_.widen(directory, fd)) {
            const EntryType type = DirectoryReader::typeOf(fd, entry.name, error);
            if (error == 0) return type;
        }
        if (error != ENOENT) removal_.keep(directory, error);
        return std::nullopt;
    }

    // The top directory has been gone through: let go of it. Whoever lets go of a directory
    // last removes it from its parent and lets go of the parent in turn, up to the first
    // directory another walk or frame still holds.
    void finishTop() {
        std::shared_ptr<Node> node = std::move(frames_.back().node);
        Descriptor fd = std::move(frames_.back().fd);
        frames_.pop_back();
        --open_;
        // Within this walk the parent is the frame below; above the walk's first directory
        // (and on the way further up) it is reached through "..", or is the item's parent.
        Frame* parentFrame = frames_.empty() ? nullptr : &frames_.back();
        while (node->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            Node& parent = *node->parent;
            Descriptor ownParent;
            int parentFd = removal_.baseFd();
            int error = 0;
            if (parentFrame) {
                if (!parentFrame->fd.valid() && !reopen(*parentFrame, fd.get(), error)) return abandon(error);
                parentFd = parentFrame->fd.get();
            } else if (parent.parent) {
                ownParent = openParent(fd.get(), parent, error);
                if (!ownParent.valid()) return abandon(error);
                parentFd = ownParent.get();
            }
            error = removal_.unlinkIn(parent, parentFd, node->name.c_str(), AT_REMOVEDIR);
            if ((error == ENOTEMPTY || error == EEXIST) && !node->failed.load() && node->passes < passesPerDirectory) {
                // Nothing in it failed, yet it is not empty: go through it once more.
                ++node->passes;
                node->holders.store(1, std::memory_order_relaxed);
                DirectoryReader::seek(fd.get(), 0);
                push(std::move(node), std::move(fd));
                return;
            }
            if (error != 0 && error != ENOENT) removal_.keep(parent, error);
            fd = std::move(ownParent);
            node = node->parent;
            if (parentFrame || !node->parent) {
                node->holders.fetch_sub(1, std::memory_order_acq_rel);  // never the last: a frame or the base holds it
                return;
            }
        }
    }

    // Opens a closed frame again from its child, and reads on where it left off.
    bool reopen(Frame& frame, int childFd, int& error) {
        Descriptor fd = openParent(childFd, *frame.node, error);
        if (!fd.valid()) return false;
        if (const auto seekError = DirectoryReader::seek(fd.get(), frame.listingStart)) {
            error = seekError.value();
            return false;
        }
        frame.fd = std::move(fd);
        ++open_;
        return true;
    }

    // A directory this walk left cannot be reached again as itself (moved, or out of
    // descriptors): it and everything of the walk above it stay.
    void abandon(int error) {
        removal_.note(error);
        frames_.clear();
        open_ = 0;
    }

    Removal& removal_;
    ListedNames files_;  // the files of the listing being emptied
    std::vector<Frame> frames_;
    std::size_t open_ = 0;  // the open frames are the last open_ of frames_
};

void Removal::removeItem(const std::string& name, bool isDirectory) {
    const char* itemName = name.c_str();
    if (!isDirectory) {
        const int error = unlinkIn(*base_, baseFd(), itemName, 0);
        if (error == 0 || error == ENOENT) return;
        // Linux says EISDIR when a directory took the name meanwhile: handle it as one.
        if (error != EISDIR) return note(error);
    }
    int error = 0;
    auto opened = openChild(*base_, baseFd(), itemName, error);
    if (!opened) return removeUnopened(*base_, baseFd(), itemName, error);
    Walk(*this).run(nodeOf(base_, itemName, *opened), std::move(opened->fd));
    if (options_.sharing.enabled()) options_.sharing.waitForAll();
}

// The components of an absolute, standardised path; nothing for anything else.
std::optional<std::vector<std::string>> componentsOf(const std::filesystem::path& path) {
    const std::string text = path.string();
    if (text.empty() || text.front() != '/') return std::nullopt;
    std::vector<std::string> components;
    std::size_t start = 1;
    while (start <= text.size()) {
        const auto slash = text.find('/', start);
        const auto end = slash == std::string::npos ? text.size() : slash;
        const std::string component = text.substr(start, end - start);
        if (component == "." || component == "..") return std::nullopt;
        if (!component.empty()) components.push_back(component);
        if (slash == std::string::npos) break;
        start = slash + 1;
    }
    if (components.empty()) return std::nullopt;
    return components;
}

}  // namespace

std::error_code removeTree(const std::filesystem::path& path, const TreeRemovalOptions& options) {
    const auto components = componentsOf(path);
    if (!components) return errorOf(EINVAL);
    raiseOpenFileLimit();

    // Walk down from the root without following any link: a link standing anywhere in the
    // parent chain at this moment ends the removal here.
    Descriptor current(::open("/", openFlags::pinnedDirectory));
    if (!current.valid()) return errorOf(errno);
    for (std::size_t index = 0; index + 1 < components->size(); ++index) {
        const char* component = (*components)[index].c_str();
        Descriptor next(::openat(current.get(), component, openFlags::pinnedDirectory));
        if (!next.valid()) return errorOf(openFlags::noFollowError(current.get(), component, errno));
        struct stat status {};
        if (::fstat(next.get(), &status) != 0) return errorOf(errno);
        if (!S_ISDIR(status.st_mode)) return errorOf(S_ISLNK(status.st_mode) ? ELOOP : ENOTDIR);
        current = std::move(next);
    }

    struct stat parentStatus {};
    if (::fstat(current.get(), &parentStatus) != 0) return errorOf(errno);
    Removal removal(options, std::move(current), parentStatus);

    const std::string& name = components->back();
    struct stat itemStatus {};
    if (::fstatat(removal.baseFd(), name.c_str(), &itemStatus, AT_SYMLINK_NOFOLLOW) != 0) return errorOf(errno);

    removal.removeItem(name, S_ISDIR(itemStatus.st_mode));
    return removal.firstError();
}

}  // namespace kelvo::platform
