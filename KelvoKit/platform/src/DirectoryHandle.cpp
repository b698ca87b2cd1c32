#include "kelvo/platform/DirectoryHandle.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <mutex>
#include <vector>

#include "OpenFlags.h"
#include "StatusFields.h"
#include "kelvo/platform/DirectoryReader.h"

namespace kelvo::platform {
namespace {

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
    Descriptor opened(::open(path.c_str(), followFinalLink ? openFlags::directory : openFlags::directoryNoFollow));
    if (opened.valid()) {
        error.clear();
        return DirectoryHandle(std::move(opened));
    }
    error = lastError();
    if (error != std::errc::filename_too_long || !path.is_absolute()) return std::nullopt;
    Descriptor root(::open("/", openFlags::pinnedDirectory));
    if (!root.valid()) {
        error = lastError();
        return std::nullopt;
    }
    return DirectoryHandle(std::move(root)).openBelow(path.native(), error);
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
        const int from = current ? current->fd() : fd();
        char name[NAME_MAX + 1];
        if ((error = copyName(components[index], name))) return std::nullopt;
        Descriptor opened(::openat(from, name, last ? openFlags::directoryNoFollow : openFlags::pinnedDirectory));
        if (!opened.valid()) {
            error = {openFlags::noFollowError(from, name, errno), std::generic_category()};
            return std::nullopt;
        }
        current = DirectoryHandle(std::move(opened));
    }
    if (!current) {
        Descriptor again(::openat(fd(), ".", openFlags::directory));
        if (!again.valid()) {
            error = lastError();
            return std::nullopt;
        }
        current = DirectoryHandle(std::move(again));
    }
    error.clear();
    return current;
}

std::optional<DirectoryHandle> DirectoryHandle::openChild(std::string_view name, std::error_code& error) const {
    char childName[NAME_MAX + 1];
    if ((error = copyName(name, childName))) return std::nullopt;
    Descriptor child(::openat(fd(), childName, openFlags::directoryNoFollow));
    if (!child.valid()) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return DirectoryHandle(std::move(child));
}

std::optional<DirectoryHandle> DirectoryHandle::openParent(std::error_code& error) const {
    Descriptor parent(::openat(fd(), "..", openFlags::directory));
    if (!parent.valid()) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return DirectoryHandle(std::move(parent));
}

DirectoryHandle::DirectoryHandle(DirectoryHandle&& other) noexcept = default;
DirectoryHandle& DirectoryHandle::operator=(DirectoryHandle&& other) noexcept = default;
DirectoryHandle::~DirectoryHandle() = default;

std::error_code DirectoryHandle::forEachNameThrough(void* target, NameVisitor visitor) const {
    rewindIfListed();
    return DirectoryReader()
        .read(fd(), [&](const DirectoryRecord& record) { return visitor(target, record.name, record.type); })
        .error;
}

std::optional<std::chrono::system_clock::time_point> DirectoryHandle::newestChildModificationTime() const {
    std::optional<std::chrono::system_clock::time_point> newest;
    forEachName([&](std::string_view name, EntryType) {
        const auto modified = childModificationTime(name);
        if (modified && (!newest || *modified > *newest)) newest = modified;
        return true;
    });
    return newest;
}

std::optional<EntryType> DirectoryHandle::childType(std::string_view name) const {
    char childName[NAME_MAX + 1];
    if (copyName(name, childName)) return std::nullopt;
    struct stat status {};
    if (::fstatat(fd(), childName, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    return entryTypeFromMode(status.st_mode);
}

std::optional<std::chrono::system_clock::time_point> DirectoryHandle::childModificationTime(
    std::string_view name) const {
    char childName[NAME_MAX + 1];
    if (copyName(name, childName)) return std::nullopt;
    struct stat status {};
    if (::fstatat(fd(), childName, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    return modificationTimeOf(status);
}

std::optional<std::string> DirectoryHandle::childFileStart(std::string_view name, std::size_t maxBytes) const {
    char childName[NAME_MAX + 1];
    if (copyName(name, childName)) return std::nullopt;
    // O_NONBLOCK: a FIFO swapped in under the name must not stall the walk.
    const Descriptor file(::openat(fd(), childName, openFlags::fileNoFollow));
    if (!file.valid()) return std::nullopt;
    std::optional<std::string> start;
    struct stat status {};
    if (::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) {
        std::string buffer(maxBytes, '\0');
        std::size_t filled = 0;
        while (filled < maxBytes) {
            const ssize_t count = ::read(file.get(), buffer.data() + filled, maxBytes - filled);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) break;
            filled += static_cast<std::size_t>(count);
        }
        buffer.resize(filled);
        start = std::move(buffer);
    }
    return start;
}

void DirectoryHandle::rewindIfListed() const {
    if (listed_) DirectoryReader::seek(fd(), 0);
    listed_ = true;
}

std::optional<std::int64_t> DirectoryHandle::allocatedBytes(std::error_code& error) const {
    struct stat status {};
    return allocatedBytesOrError(::fstat(fd(), &status), status, error);
}

std::optional<StoredItem> DirectoryHandle::childStoredItem(std::string_view name, std::error_code& error) const {
    char childName[NAME_MAX + 1];
    if ((error = copyName(name, childName))) return std::nullopt;
    struct stat status {};
    if (::fstatat(fd(), childName, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return storedItemOf(status);
}

}  // namespace kelvo::platform
