#include "kelvo/platform/DirectoryHandle.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "StatusFields.h"

#if defined(__linux__)
#include <sys/syscall.h>
#endif

namespace kelvo::platform {
namespace {

constexpr int directoryFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
// A directory passed through on the way down is only pinned: like a path lookup, that needs
// search permission and no read permission. Where O_PATH does not exist, a read-only
// descriptor stands in.
#if defined(O_PATH)
constexpr int passFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
#else
constexpr int passFlags = directoryFlags | O_NOFOLLOW;
#endif

std::error_code lastError() { return {errno, std::generic_category()}; }

std::int64_t allocatedBytesOf(const struct stat& status) { return static_cast<std::int64_t>(status.st_blocks) * 512; }

// The allocated bytes from a status call that returned `result`, or the call's error.
std::optional<std::int64_t> allocatedBytesOrError(int result, const struct stat& status, std::error_code& error) {
    if (result != 0) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return allocatedBytesOf(status);
}

// Copies a child's name into a buffer of NAME_MAX + 1 bytes with its terminating zero, so
// opening or reading a child allocates nothing. Fails for a name no directory can hold.
std::error_code copyName(std::string_view name, char* buffer) {
    if (name.size() > NAME_MAX) return std::make_error_code(std::errc::filename_too_long);
    if (name.empty() || name.find('\0') != std::string_view::npos)
        return std::make_error_code(std::errc::no_such_file_or_directory);
    std::memcpy(buffer, name.data(), name.size());
    buffer[name.size()] = '\0';
    return {};
}

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// The error of an openat(O_NOFOLLOW | O_DIRECTORY) that failed: a link under the name is
// reported as a link (ELOOP), whatever the system said (Linux says ENOTDIR).
std::error_code openError(int directoryFd, const char* name) {
    const std::error_code error = lastError();
    struct stat status {};
    if (error == std::errc::not_a_directory && ::fstatat(directoryFd, name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISLNK(status.st_mode))
        return std::make_error_code(std::errc::too_many_symbolic_link_levels);
    return error;
}

// The type a directory records for an entry; where it records none, the entry's own status.
EntryType entryType(int directoryFd, const char* name, unsigned char recordedType) {
    if (auto type = entryTypeFromRecord(recordedType)) return *type;
    struct stat status {};
    return ::fstatat(directoryFd, name, &status, AT_SYMLINK_NOFOLLOW) == 0 ? entryTypeFromMode(status.st_mode)
                                                                          : EntryType::other;
}

}  // namespace

void raiseOpenFileLimit() {
    static std::once_flag once;
    std::call_once(once, [] {
        struct rlimit limit {};
        if (::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
            limit.rlim_cur = limit.rlim_max;
            ::setrlimit(RLIMIT_NOFILE, &limit);
        }
    });
}

std::optional<DirectoryHandle> DirectoryHandle::open(const std::filesystem::path& path, bool followFinalLink,
                                                     std::error_code& error) {
    raiseOpenFileLimit();
    const int fd = ::open(path.c_str(), directoryFlags | (followFinalLink ? 0 : O_NOFOLLOW));
    if (fd >= 0) {
        error.clear();
        return DirectoryHandle(fd);
    }
    error = lastError();
    if (error != std::errc::filename_too_long || !path.is_absolute()) return std::nullopt;
    const int root = ::open("/", passFlags);
    if (root < 0) {
        error = lastError();
        return std::nullopt;
    }
    return DirectoryHandle(root).openBelow(path.native(), error);
}

std::optional<DirectoryHandle> DirectoryHandle::openBelow(std::string_view relative, std::error_code& error) const {
    std::vector<std::string_view> components;
    for (std::size_t start = 0; start <= relative.size();) {
        const auto slash = std::min(relative.find('/', start), relative.size());
        const auto component = relative.substr(start, slash - start);
        if (component == "..") {
            error = std::make_error_code(std::errc::invalid_argument);
            return std::nullopt;
        }
        if (!component.empty() && component != ".") components.push_back(component);
        start = slash + 1;
    }
    std::optional<DirectoryHandle> current;  // owns every descriptor opened on the way
    for (std::size_t index = 0; index < components.size(); ++index) {
        const bool last = index + 1 == components.size();
        const int flags = last ? directoryFlags | O_NOFOLLOW : passFlags;
        const int from = current ? current->fd_ : fd_;
        char name[NAME_MAX + 1];
        if ((error = copyName(components[index], name))) return std::nullopt;
        const int fd = ::openat(from, name, flags);
        if (fd < 0) {
            error = openError(from, name);
            return std::nullopt;
        }
        current = DirectoryHandle(fd);
    }
    if (!current) {
        const int fd = ::openat(fd_, ".", directoryFlags);
        if (fd < 0) {
            error = lastError();
            return std::nullopt;
        }
        current = DirectoryHandle(fd);
    }
    error.clear();
    return current;
}

std::optional<DirectoryHandle> DirectoryHandle::openChild(std::string_view name, std::error_code& error) const {
    char childName[NAME_MAX + 1];
    if ((error = copyName(name, childName))) return std::nullopt;
    const int fd = ::openat(fd_, childName, directoryFlags | O_NOFOLLOW);
    if (fd < 0) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return DirectoryHandle(fd);
}

DirectoryHandle::DirectoryHandle(DirectoryHandle&& other) noexcept : fd_(other.fd_), listed_(other.listed_) {
    other.fd_ = -1;
}

DirectoryHandle& DirectoryHandle::operator=(DirectoryHandle&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0) ::close(fd_);
        fd_ = other.fd_;
        listed_ = other.listed_;
        other.fd_ = -1;
    }
    return *this;
}

DirectoryHandle::~DirectoryHandle() {
    if (fd_ >= 0) ::close(fd_);
}

#if defined(__linux__)
namespace {

// One listing buffer per thread, reused from directory to directory: a walk lists tens of
// thousands of directories, most of them small, and neither allocating nor clearing 64 KiB
// for each is free. A listing that starts while another runs on the same thread (a visitor
// that lists a subdirectory) gets a buffer of its own.
class ListingBuffer {
public:
    static constexpr std::size_t size = 64 * 1024;

    ListingBuffer() {
        Slot& slot = threadSlot();
        if (slot.inUse) {
            owned_ = std::make_unique_for_overwrite<char[]>(size);
            data_ = owned_.get();
            return;
        }
        if (!slot.data) slot.data = std::make_unique_for_overwrite<char[]>(size);
        slot.inUse = true;
        data_ = slot.data.get();
    }
    ~ListingBuffer() {
        if (!owned_) threadSlot().inUse = false;
    }
    ListingBuffer(const ListingBuffer&) = delete;
    ListingBuffer& operator=(const ListingBuffer&) = delete;

    char* data() const { return data_; }

private:
    struct Slot {
        std::unique_ptr<char[]> data;
        bool inUse = false;
    };
    static Slot& threadSlot() {
        thread_local Slot slot;
        return slot;
    }
    std::unique_ptr<char[]> owned_;
    char* data_ = nullptr;
};

struct LinuxDirent {
    ino64_t inode;
    off64_t offset;
    unsigned short length;
    unsigned char type;
    char name[1];  // really as long as the record says
};

// Reads the directory with getdents64 and a large buffer: few system calls even for a
// directory of a million entries, and no DIR stream bound to the descriptor. Calls
// onEntry(record) for each entry but "." and ".." until it returns false.
template <class OnEntry>
std::error_code readEntries(int fd, OnEntry&& onEntry) {
    const ListingBuffer buffer;
    while (true) {
        const long count = ::syscall(SYS_getdents64, fd, buffer.data(), ListingBuffer::size);
        if (count < 0) {
            if (errno == EINTR) continue;
            return lastError();
        }
        if (count == 0) return {};
        for (long offset = 0; offset < count;) {
            const auto* entry = reinterpret_cast<const LinuxDirent*>(buffer.data() + offset);
            offset += entry->length;
            if (isDotOrDotDot(entry->name)) continue;
            if (!onEntry(*entry)) return {};
        }
    }
}

}  // namespace

std::error_code DirectoryHandle::forEachNameThrough(void* target, NameVisitor visitor) const {
    rewindIfListed();
    return readEntries(fd_, [&](const LinuxDirent& entry) {
        return visitor(target, entry.name, entryType(fd_, entry.name, entry.type));
    });
}
#else
// Elsewhere a DIR stream over a duplicate of the descriptor, so the handle keeps its own.
std::error_code DirectoryHandle::forEachNameThrough(void* target, NameVisitor visitor) const {
    const int copy = ::dup(fd_);
    if (copy < 0) return lastError();
    DIR* directory = ::fdopendir(copy);
    if (!directory) {
        const auto error = lastError();
        ::close(copy);
        return error;
    }
    ::rewinddir(directory);
    std::error_code error;
    while (true) {
        errno = 0;
        const dirent* entry = ::readdir(directory);
        if (!entry) {
            if (errno != 0) error = lastError();
            break;
        }
        if (isDotOrDotDot(entry->d_name)) continue;
        if (!visitor(target, entry->d_name, entryType(fd_, entry->d_name, entry->d_type))) break;
    }
    ::closedir(directory);
    return error;
}
#endif

std::optional<std::chrono::system_clock::time_point> DirectoryHandle::childModificationTime(
    std::string_view name) const {
    char childName[NAME_MAX + 1];
    if (copyName(name, childName)) return std::nullopt;
    struct stat status {};
    if (::fstatat(fd_, childName, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    return modificationTimeOf(status);
}

std::optional<std::string> DirectoryHandle::childFileStart(std::string_view name, std::size_t maxBytes) const {
    char childName[NAME_MAX + 1];
    if (copyName(name, childName)) return std::nullopt;
    // O_NONBLOCK: a FIFO swapped in under the name must not stall the walk.
    const int file = ::openat(fd_, childName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) return std::nullopt;
    std::optional<std::string> start;
    struct stat status {};
    if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
        std::string buffer(maxBytes, '\0');
        std::size_t filled = 0;
        while (filled < maxBytes) {
            const ssize_t count = ::read(file, buffer.data() + filled, maxBytes - filled);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) break;
            filled += static_cast<std::size_t>(count);
        }
        buffer.resize(filled);
        start = std::move(buffer);
    }
    ::close(file);
    return start;
}

void DirectoryHandle::rewindIfListed() const {
    if (listed_) ::lseek(fd_, 0, SEEK_SET);
    listed_ = true;
}

std::optional<std::int64_t> DirectoryHandle::allocatedBytes(std::error_code& error) const {
    struct stat status {};
    return allocatedBytesOrError(::fstat(fd_, &status), status, error);
}

std::optional<std::int64_t> DirectoryHandle::childAllocatedBytes(std::string_view name, std::error_code& error) const {
    char childName[NAME_MAX + 1];
    if ((error = copyName(name, childName))) return std::nullopt;
    struct stat status {};
    return allocatedBytesOrError(::fstatat(fd_, childName, &status, AT_SYMLINK_NOFOLLOW), status, error);
}

std::optional<StoredItem> DirectoryHandle::childStoredItem(std::string_view name, std::error_code& error) const {
    char childName[NAME_MAX + 1];
    if ((error = copyName(name, childName))) return std::nullopt;
    struct stat status {};
    if (::fstatat(fd_, childName, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return storedItemOf(status);
}

}  // namespace kelvo::platform
