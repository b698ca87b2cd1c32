#include "kelvo/platform/FileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "StatusFields.h"
#include "kelvo/Paths.h"

namespace kelvo::platform {
namespace {

std::optional<struct stat> statOf(const std::filesystem::path& path, bool followLinks) {
    struct stat status {};
    const int result = followLinks ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
    if (result != 0) return std::nullopt;
    return status;
}

std::error_code lastError() { return {errno, std::generic_category()}; }

std::error_code writeAll(int fd, const std::string& content) {
    std::size_t written = 0;
    while (written < content.size()) {
        const ssize_t count = ::write(fd, content.data() + written, content.size() - written);
        if (count < 0) {
            if (errno == EINTR) continue;
            return lastError();
        }
        written += static_cast<std::size_t>(count);
    }
    return {};
}

}  // namespace

bool exists(const std::filesystem::path& path) { return statOf(path, true).has_value(); }

bool isDirectory(const std::filesystem::path& path) {
    const auto status = statOf(path, true);
    return status && S_ISDIR(status->st_mode);
}

std::optional<bool> isSymbolicLink(const std::filesystem::path& path) {
    const auto status = statOf(path, false);
    if (!status) return std::nullopt;
    return S_ISLNK(status->st_mode);
}

std::optional<std::vector<ListedEntry>> listDirectory(const std::filesystem::path& path, bool skipHidden) {
    DIR* directory = ::opendir(path.c_str());
    if (!directory) return std::nullopt;
    std::vector<ListedEntry> entries;
    errno = 0;
    while (const dirent* entry = ::readdir(directory)) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (skipHidden && name.front() == '.') continue;
        auto type = entryTypeFromRecord(entry->d_type);
        if (!type) {
            struct stat status {};
            if (::fstatat(::dirfd(directory), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
                type = entryTypeFromMode(status.st_mode);
        }
        entries.push_back({std::string(name), type});
    }
    const bool failed = errno != 0;
    ::closedir(directory);
    if (failed) return std::nullopt;
    return entries;
}

std::optional<TimePoint> modificationTime(const std::filesystem::path& path, bool followLinks) {
    const auto status = statOf(path, followLinks);
    if (!status) return std::nullopt;
    return modificationTimeOf(*status);
}

std::int64_t allocatedSize(const std::filesystem::path& path) {
    const auto status = statOf(path, true);
    return status ? static_cast<std::int64_t>(status->st_blocks) * 512 : 0;
}

std::optional<unsigned> permissionBits(const std::filesystem::path& path) {
    const auto status = statOf(path, false);
    if (!status) return std::nullopt;
    return static_cast<unsigned>(status->st_mode & 07777);
}

std::optional<unsigned> ownerOf(const std::filesystem::path& path, std::error_code& error) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        error = {errno, std::generic_category()};
        return std::nullopt;
    }
    error.clear();
    return static_cast<unsigned>(status.st_uid);
}

std::error_code setPermissionBits(const std::filesystem::path& path, unsigned bits) {
    if (::chmod(path.c_str(), static_cast<mode_t>(bits)) != 0) return {errno, std::generic_category()};
    return {};
}

std::optional<std::filesystem::path> readSymlink(const std::filesystem::path& path) {
    std::string buffer(PATH_MAX, '\0');
    const ssize_t length = ::readlink(path.c_str(), buffer.data(), buffer.size());
    if (length < 0) return std::nullopt;
    buffer.resize(static_cast<std::size_t>(length));
    return std::filesystem::path(buffer);
}

std::filesystem::path resolveSymlinks(const std::filesystem::path& path) {
    std::filesystem::path absolute = path;
    if (!path.is_absolute()) {
        std::error_code error;  // a working directory that was removed leaves the path as given
        const auto workingDirectory = std::filesystem::current_path(error);
        if (!error) absolute = workingDirectory / path;
    }
    absolute = Paths::standardized(absolute);
    // realpath() of the longest existing prefix, then the rest as written.
    std::filesystem::path existing = absolute;
    std::vector<std::filesystem::path> missing;
    while (true) {
        char resolved[PATH_MAX];
        if (::realpath(existing.c_str(), resolved)) {
            std::filesystem::path result = resolved;
            for (auto it = missing.rbegin(); it != missing.rend(); ++it) result /= *it;
            return Paths::standardized(result);
        }
        if (!existing.has_relative_path()) return absolute;
        missing.push_back(existing.filename());
        existing = existing.parent_path();
    }
}

namespace {

// Reads to the end, or until more than `limit` bytes came (then nothing).
std::optional<std::string> readOpenFile(int fd, std::size_t limit) {
    std::string content;
    char buffer[65536];
    while (true) {
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        if (count == 0) return content;
        if (static_cast<std::size_t>(count) > limit - content.size()) return std::nullopt;
        content.append(buffer, static_cast<std::size_t>(count));
    }
}

}  // namespace

std::optional<std::string> readFile(const std::filesystem::path& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    auto content = readOpenFile(fd, std::string().max_size());
    ::close(fd);
    return content;
}

std::optional<std::string> readRegularFile(const std::filesystem::path& path, std::size_t maxBytes) {
    // Opening some devices has effects of its own, so only what looks like a regular file is
    // opened; the status of the open descriptor then decides.
    const auto before = statOf(path, true);
    if (!before || !S_ISREG(before->st_mode)) return std::nullopt;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) return std::nullopt;
    struct stat status {};
    std::optional<std::string> content;
    if (::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size >= 0 &&
        static_cast<std::uint64_t>(status.st_size) <= maxBytes)
        content = readOpenFile(fd, maxBytes);
    ::close(fd);
    return content;
}

std::error_code writeFile(const std::filesystem::path& path, const std::string& content) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return lastError();
    if (auto error = writeAll(fd, content)) {
        ::close(fd);
        return error;
    }
    if (::close(fd) != 0) return lastError();
    return {};
}

std::error_code writeFileAtomically(const std::filesystem::path& path, const std::string& content) {
    std::string temporary = path.string() + ".XXXXXX";
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) return lastError();
    std::error_code error = writeAll(fd, content);
    if (!error && ::fsync(fd) != 0) error = lastError();
    if (::close(fd) != 0 && !error) error = lastError();
    if (!error && ::rename(temporary.c_str(), path.c_str()) != 0) error = lastError();
    if (error) {
        ::unlink(temporary.c_str());
        return error;
    }
    // The new name is durable only once the directory that holds it is flushed.
    const auto parent = path.parent_path().empty() ? std::filesystem::path(".") : path.parent_path();
    const int directory = ::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0) {
        ::fsync(directory);
        ::close(directory);
    }
    return {};
}

std::error_code createDirectories(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return error;
}

}  // namespace kelvo::platform
