#include "kelvo/platform/TreeRemoval.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#if defined(__linux__)
#include <sys/syscall.h>
#endif

#include "kelvo/platform/DirectoryHandle.h"

namespace kelvo::platform {
namespace {

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            if (fd_ >= 0) ::close(fd_);
            fd_ = other.fd_;
            other.fd_ = -1;
        }
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }

private:
    int fd_ = -1;
};

// Descriptors that pin a directory without reading it: they need no read permission on
// the directory, only search permission on the way to it, and serve as the base of the
// *at calls. Where O_PATH does not exist a plain read-only descriptor stands in.
#if defined(O_PATH)
constexpr int pinFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
#else
constexpr int pinFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
#endif
constexpr int readFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

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

struct Entry {
    std::string name;
    unsigned char type = DT_UNKNOWN;
};

// One directory being emptied. Its name in the parent is kept so the directory itself can
// be removed relative to the parent's descriptor once it is empty.
struct Level {
    Descriptor fd;
    dev_t device = 0;
    bool mayWiden = true;  // false only for the item's parent, which is outside the tree
    bool widened = false;
    std::string nameInParent;
    bool listed = false;
    std::vector<Entry> entries;
    std::size_t next = 0;
};

class Removal {
public:
    explicit Removal(const TreeRemovalOptions& options) : options_(options) {}

    // Removes one named entry of `parent`; a directory is opened and pushed, to be emptied
    // and removed by drain().
    void removeNamed(Level& parent, const std::string& name, unsigned char typeHint) {
        if (typeHint == DT_UNKNOWN) {
            struct stat status {};
            int result = ::fstatat(parent.fd.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW);
            if (result != 0 && permissionDenied(errno) && widen(parent))
                result = ::fstatat(parent.fd.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW);
            if (result != 0) {
                if (errno != ENOENT) note(errno);
                return;
            }
            typeHint = S_ISDIR(status.st_mode) ? DT_DIR : DT_REG;
        }
        if (typeHint != DT_DIR) {
            const int error = unlinkIn(parent, name, 0);
            if (error == 0 || error == ENOENT) return;
            // Linux says EISDIR when a directory took the name meanwhile: handle it as one.
            if (error != EISDIR) {
                note(error);
                return;
            }
        }
        int error = 0;
        auto child = openChild(parent, name, error);
        if (child) {
            stack_.push_back(std::move(*child));
            return;
        }
        if (error == ENOENT) return;
        if (error == ENOTDIR || error == ELOOP) {
            // A link or a file stands under the name now: it goes as itself, never followed.
            const int unlinkError = unlinkIn(parent, name, 0);
            if (unlinkError != 0 && unlinkError != ENOENT) note(unlinkError);
            return;
        }
        note(error);
        // A directory that cannot be entered may still be empty and removable; a mount
        // root is left alone altogether.
        if (error != EXDEV) unlinkIn(parent, name, AT_REMOVEDIR);
    }

    // Empties and removes every directory pushed so far, depth first, with an explicit
    // stack so the depth of the tree is bounded by descriptors, not by the call stack.
    void drain(Level& base) {
        while (!stack_.empty()) {
            Level& current = stack_.back();
            if (!current.listed) list(current);
            if (current.next < current.entries.size()) {
                const Entry entry = current.entries[current.next++];
                // A deque keeps references valid across push_back, so `current` may be
                // handed on even though removeNamed can push.
                removeNamed(current, entry.name, entry.type);
                continue;
            }
            const std::string name = std::move(current.nameInParent);
            stack_.pop_back();  // closes its descriptor before it is removed
            Level& parent = stack_.empty() ? base : stack_.back();
            const int error = unlinkIn(parent, name, AT_REMOVEDIR);
            if (error != 0 && error != ENOENT) note(error);
        }
    }

    std::error_code firstError() const { return first_; }

private:
    void note(int error) {
        if (!first_) first_ = errorOf(error);
    }

    // Adds the owner's read, write and search bits to a directory of the tree, once.
    bool widen(Level& level) {
        if (!options_.addOwnerPermissions || !level.mayWiden || level.widened) return false;
        level.widened = true;
        return addModeBits(level.fd.get(), S_IRWXU);
    }

    int unlinkIn(Level& parent, const std::string& name, int flags) {
        if (::unlinkat(parent.fd.get(), name.c_str(), flags) == 0) return 0;
        int error = errno;
        if (permissionDenied(error) && widen(parent)) {
            if (::unlinkat(parent.fd.get(), name.c_str(), flags) == 0) return 0;
            error = errno;
        }
        return error;
    }

    std::optional<Level> openChild(Level& parent, const std::string& name, int& error) {
        Descriptor fd(::openat(parent.fd.get(), name.c_str(), readFlags));
        bool widenedChild = false;
        if (!fd.valid()) {
            error = errno;
            if (permissionDenied(error) && widen(parent)) {
                fd = Descriptor(::openat(parent.fd.get(), name.c_str(), readFlags));
                if (!fd.valid()) error = errno;
            }
            if (!fd.valid() && permissionDenied(error) && options_.addOwnerPermissions) {
                // The directory withholds reading or searching from its owner: pin it
                // without reading, add the bits through that descriptor, then open it for
                // reading through the pinned descriptor itself, so nothing can be swapped
                // in between.
                Descriptor pinned(::openat(parent.fd.get(), name.c_str(), pinFlags));
                if (pinned.valid() && addModeBits(pinned.get(), S_IRWXU)) {
                    widenedChild = true;
                    fd = Descriptor(::openat(pinned.get(), ".", readFlags));
                    if (!fd.valid()) error = errno;
                }
            }
            if (!fd.valid()) return std::nullopt;
        }
        struct stat status {};
        if (::fstat(fd.get(), &status) != 0) {
            error = errno;
            return std::nullopt;
        }
        if (!S_ISDIR(status.st_mode)) {
            error = ENOTDIR;
            return std::nullopt;
        }
        if (isMountRoot(fd.get(), status, parent.device)) {
            error = EXDEV;
            return std::nullopt;
        }
        Level level;
        level.fd = std::move(fd);
        level.device = status.st_dev;
        level.widened = widenedChild;
        level.nameInParent = name;
        return level;
    }

    // Reads every entry before any is removed: removing while a directory stream is open
    // may skip entries.
    void list(Level& level) {
        level.listed = true;
        const int copy = ::dup(level.fd.get());
        if (copy < 0) {
            note(errno);
            return;
        }
        DIR* directory = ::fdopendir(copy);
        if (!directory) {
            note(errno);
            ::close(copy);
            return;
        }
        ::rewinddir(directory);
        while (true) {
            errno = 0;
            const dirent* entry = ::readdir(directory);
            if (!entry) {
                if (errno != 0) note(errno);
                break;
            }
            const char* name = entry->d_name;
            if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) continue;
            level.entries.push_back({name, entry->d_type});
        }
        ::closedir(directory);
    }

    TreeRemovalOptions options_;
    std::deque<Level> stack_;
    std::error_code first_;
};

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

bool isPermissionError(const std::error_code& error) {
    return error.category() == std::generic_category() && permissionDenied(error.value());
}

std::error_code removeTree(const std::filesystem::path& path, const TreeRemovalOptions& options) {
    const auto components = componentsOf(path);
    if (!components) return errorOf(EINVAL);
    raiseOpenFileLimit();

    // Walk down from the root without following any link: a link standing anywhere in the
    // parent chain at this moment ends the removal here.
    Descriptor current(::open("/", pinFlags));
    if (!current.valid()) return errorOf(errno);
    for (std::size_t index = 0; index + 1 < components->size(); ++index) {
        const char* component = (*components)[index].c_str();
        Descriptor next(::openat(current.get(), component, pinFlags));
        if (!next.valid()) {
            const int error = errno;
            struct stat status {};
            // O_NOFOLLOW with O_DIRECTORY reports a link as "not a directory"; say what it is.
            if (error == ENOTDIR && ::fstatat(current.get(), component, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                S_ISLNK(status.st_mode))
                return errorOf(ELOOP);
            return errorOf(error);
        }
        struct stat status {};
        if (::fstat(next.get(), &status) != 0) return errorOf(errno);
        if (!S_ISDIR(status.st_mode)) return errorOf(S_ISLNK(status.st_mode) ? ELOOP : ENOTDIR);
        current = std::move(next);
    }

    Level parent;
    struct stat parentStatus {};
    if (::fstat(current.get(), &parentStatus) != 0) return errorOf(errno);
    parent.fd = std::move(current);
    parent.device = parentStatus.st_dev;
    parent.mayWiden = false;

    const std::string& name = components->back();
    struct stat itemStatus {};
    if (::fstatat(parent.fd.get(), name.c_str(), &itemStatus, AT_SYMLINK_NOFOLLOW) != 0) return errorOf(errno);

    Removal removal(options);
    removal.removeNamed(parent, name, S_ISDIR(itemStatus.st_mode) ? DT_DIR : DT_REG);
    removal.drain(parent);
    return removal.firstError();
}

}  // namespace kelvo::platform
