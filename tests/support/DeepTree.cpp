#include "support/DeepTree.h"
#include "support/TempDir.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace kelvo::testing {
namespace {

namespace fs = std::filesystem;

struct Fd {
    int fd;
    explicit Fd(int descriptor) : fd(descriptor) {}
    Fd(Fd&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    Fd& operator=(Fd&& other) noexcept { return std::swap(fd, other.fd), *this; }
    ~Fd() { if (fd >= 0) ::close(fd); }
};

Fd openDirectoryAt(int parent, const std::string& name, bool create) {
    if (create) ::mkdirat(parent, name.c_str(), 0755);
    Fd fd(::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (fd.fd < 0) throw std::runtime_error("cannot open " + name);
    return fd;
}

// The directory at `path`, reached from "/".
Fd openDeep(const fs::path& path, bool create) {
    if (!path.is_absolute()) throw std::invalid_argument("not absolute: " + path.string());
    Fd current(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (const auto& component : path.relative_path())
        if (!component.empty()) current = openDirectoryAt(current.fd, component.string(), create);
    return current;
}

std::int64_t allocatedBelow(int directory) {
    std::int64_t sum = 0;
    DIR* stream = ::fdopendir(::dup(directory));
    if (!stream) throw std::runtime_error("cannot list a directory");
    while (const dirent* entry = ::readdir(stream)) {
        const std::string name = entry->d_name;
        struct stat status {};
        if (name == "." || name == ".." || ::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
        sum += static_cast<std::int64_t>(status.st_blocks) * 512;
        if (S_ISDIR(status.st_mode)) sum += allocatedBelow(openDirectoryAt(directory, name, false).fd);
    }
    ::closedir(stream);
    return sum;
}

}  // namespace

fs::path makeFolderChain(const fs::path& base, std::size_t levels, const std::string& name) {
    Fd current = openDeep(base, true);
    fs::path bottom = base;
    for (std::size_t level = 0; level < levels; ++level, bottom /= name) current = openDirectoryAt(current.fd, name, true);
    return bottom;
}

fs::path writeDeepFile(const fs::path& path, std::size_t size) {
    const Fd parent = openDeep(path.parent_path(), true);
    const Fd file(::openat(parent.fd, path.filename().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    const std::string bytes(size, 'k');
    if (::write(file.fd, bytes.data(), size) != static_cast<ssize_t>(size))
        throw std::runtime_error("cannot write " + path.filename().string());
    return path;
}

void makeDeepSymlink(const fs::path& target, const fs::path& link) {
    if (::symlinkat(target.c_str(), openDeep(link.parent_path(), true).fd, link.filename().c_str()) != 0)
        throw std::runtime_error("cannot make the link " + link.filename().string());
}

bool deepExists(const fs::path& path) try {
    struct stat status {};
    return ::fstatat(openDeep(path.parent_path(), false).fd, path.filename().c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
} catch (const std::runtime_error&) {
    return false;
}

std::int64_t allocatedBytesBelow(const fs::path& directory) { return allocatedBelow(openDeep(directory, false).fd); }

}  // namespace kelvo::testing
