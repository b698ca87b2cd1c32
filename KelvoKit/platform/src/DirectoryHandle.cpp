#include "kelvo/platform/DirectoryHandle.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <mutex>

#if defined(__linux__)
#include <sys/syscall.h>
#endif

namespace kelvo::platform {
namespace {

constexpr int directoryFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

std::error_code lastError() { return {errno, std::generic_category()}; }

void fillFromStatus(EntryInfo& info, int parentFd, const char* name) {
    struct stat status {};
    if (::fstatat(parentFd, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        info.statFailed = true;
        return;
    }
    info.isDirectory = S_ISDIR(status.st_mode);
    info.isSymlink = S_ISLNK(status.st_mode);
    info.allocatedBytes = static_cast<std::int64_t>(status.st_blocks) * 512;
    info.permissionBits = static_cast<unsigned>(status.st_mode & 07777);
}

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
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
    if (fd < 0) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return DirectoryHandle(fd);
}

std::optional<DirectoryHandle> DirectoryHandle::openChild(std::string_view name, std::error_code& error) const {
    const std::string childName(name);
    const int fd = ::openat(fd_, childName.c_str(), directoryFlags | O_NOFOLLOW);
    if (fd < 0) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return DirectoryHandle(fd);
}

DirectoryHandle::DirectoryHandle(DirectoryHandle&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }

DirectoryHandle& DirectoryHandle::operator=(DirectoryHandle&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0) ::close(fd_);
        fd_ = other.fd_;
        other.fd_ = -1;
    }
    return *this;
}

DirectoryHandle::~DirectoryHandle() {
    if (fd_ >= 0) ::close(fd_);
}

#if defined(__linux__)
// Reads the directory with getdents64 and a large buffer: few system calls even for a
// directory of a million entries, and no DIR stream bound to the descriptor.
std::error_code DirectoryHandle::forEachEntry(const std::function<bool(const EntryInfo&)>& visit) const {
    struct LinuxDirent {
        ino64_t inode;
        off64_t offset;
        unsigned short length;
        unsigned char type;
        char name[1];  // really as long as the record says
    };
    constexpr std::size_t bufferSize = 64 * 1024;
    const auto buffer = std::make_unique<char[]>(bufferSize);
    // Reading restarts from the descriptor's current offset; rewind so a handle can be
    // listed more than once.
    ::lseek(fd_, 0, SEEK_SET);
    while (true) {
        const long count = ::syscall(SYS_getdents64, fd_, buffer.get(), bufferSize);
        if (count < 0) {
            if (errno == EINTR) continue;
            return lastError();
        }
        if (count == 0) return {};
        for (long offset = 0; offset < count;) {
            const auto* entry = reinterpret_cast<const LinuxDirent*>(buffer.get() + offset);
            offset += entry->length;
            if (isDotOrDotDot(entry->name)) continue;
            EntryInfo info;
            info.name = entry->name;
            fillFromStatus(info, fd_, entry->name);
            if (!visit(info)) return {};
        }
    }
}
#else
std::error_code DirectoryHandle::forEachEntry(const std::function<bool(const EntryInfo&)>& visit) const {
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
        EntryInfo info;
        info.name = entry->d_name;
        fillFromStatus(info, fd_, entry->d_name);
        if (!visit(info)) break;
    }
    ::closedir(directory);
    return error;
}
#endif

std::optional<std::chrono::system_clock::time_point> DirectoryHandle::childModificationTime(
    std::string_view name) const {
    const std::string childName(name);
    struct stat status {};
    if (::fstatat(fd_, childName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    using Clock = std::chrono::system_clock;
    const auto sinceEpoch = std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
    return Clock::time_point(std::chrono::duration_cast<Clock::duration>(sinceEpoch));
}

std::error_code DirectoryHandle::removeChild(std::string_view name, bool isDirectory) const {
    const std::string childName(name);
    if (::unlinkat(fd_, childName.c_str(), isDirectory ? AT_REMOVEDIR : 0) != 0) return lastError();
    return {};
}

std::optional<unsigned> DirectoryHandle::permissionBits() const {
    struct stat status {};
    if (::fstat(fd_, &status) != 0) return std::nullopt;
    return static_cast<unsigned>(status.st_mode & 07777);
}

std::error_code DirectoryHandle::setPermissionBits(unsigned bits) const {
    if (::fchmod(fd_, static_cast<mode_t>(bits)) != 0) return lastError();
    return {};
}

}  // namespace kelvo::platform
