#include "kelvo/platform/FileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "OpenFlags.h"
#include "StatusFields.h"
#include "kelvo/platform/Descriptor.h"
#include "kelvo/platform/DirectoryHandle.h"
#include "kelvo/platform/DirectoryReader.h"

namespace kelvo::platform {
namespace {

// The status of the item at the path; when it cannot be read, nothing and the reason. A
// path too long for the system is read relative to its parent, opened one component at a
// time (see DirectoryHandle::open).
std::optional<struct stat> statOf(const std::filesystem::path& path, bool followLinks, std::error_code& error) {
    struct stat status {};
    int result = followLinks ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
    if (result != 0 && errno == ENAMETOOLONG && path.is_absolute() && path.has_relative_path()) {
        const auto parent = DirectoryHandle::open(path.parent_path(), true, error);
        if (!parent) return std::nullopt;
        result = ::fstatat(parent->fd(), path.filename().c_str(), &status, followLinks ? 0 : AT_SYMLINK_NOFOLLOW);
    }
    if (result != 0) {
        error = {errno, std::generic_category()};
        return std::nullopt;
    }
    error.clear();
    return status;
}

std::optional<struct stat> statOf(const std::filesystem::path& path, bool followLinks) {
    std::error_code error;
    return statOf(path, followLinks, error);
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

// As many links as the system follows in one path before it gives up (ELOOP).
constexpr int maxLinkHops = 40;

}  // namespace

bool exists(const std::filesystem::path& path) { return statOf(path, true).has_value(); }

std::optional<bool> isPresent(const std::filesystem::path& path) {
    std::error_code error;
    if (statOf(path, false, error)) return true;
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) return false;
    return std::nullopt;
}

std::optional<bool> isSymbolicLink(const std::filesystem::path& path) {
    const auto status = statOf(path, false);
    if (!status) return std::nullopt;
    return S_ISLNK(status->st_mode);
}

std::optional<std::vector<ListedEntry>> listDirectory(const std::filesystem::path& path, bool skipHidden) {
    const Descriptor directory(::open(path.c_str(), openFlags::directory));
    if (!directory.valid()) return std::nullopt;
    std::vector<ListedEntry> entries;
    const auto progress = DirectoryReader().read(directory.get(), [&](const DirectoryRecord& entry) {
        if (skipHidden && entry.name[0] == '.') return true;
        entries.push_back({entry.name, entry.typeError == 0 ? std::optional(entry.type) : std::nullopt});
        return true;
    });
    if (progress.error) return std::nullopt;
    return entries;
}

std::optional<TimePoint> modificationTime(const std::filesystem::path& path, bool followLinks) {
    const auto status = statOf(path, followLinks);
    if (!status) return std::nullopt;
    return modificationTimeOf(*status);
}

std::optional<TimePoint> accessTime(const std::filesystem::path& path) {
    const auto status = statOf(path, true);
    if (!status) return std::nullopt;
    using Clock = std::chrono::system_clock;
#if defined(__APPLE__)
    const struct timespec& accessed = status->st_atimespec;
#else
    const struct timespec& accessed = status->st_atim;
#endif
    return Clock::time_point(std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(accessed.tv_sec) +
                                                                         std::chrono::nanoseconds(accessed.tv_nsec)));
}

std::optional<bool> recordsAccessTimes(const std::filesystem::path& path) {
    // Fields of /proc/self/mountinfo: id, parent, major:minor, root, mount point, options, ...
    const auto table = readFile("/proc/self/mountinfo");
    if (!table) return std::nullopt;
    const std::string target = standardized(resolveSymlinks(path)).string();
    std::size_t bestLength = 0;
    std::optional<bool> records;
    std::size_t start = 0;
    while (start < table->size()) {
        auto end = table->find('\n', start);
        if (end == std::string::npos) end = table->size();
        std::vector<std::string> fields;
        std::size_t at = start;
        while (at < end && fields.size() < 6) {
            const auto space = std::min(table->find(' ', at), end);
            fields.push_back(table->substr(at, space - at));
            at = space + 1;
        }
        start = end + 1;
        if (fields.size() < 6) continue;
        // Mount points escape blanks as octal (\040); such a point simply never matches.
        const std::string& point = fields[4];
        const bool covers = point == "/" || target == point || target.starts_with(point + "/");
        if (!covers || point.size() < bestLength) continue;
        bestLength = point.size();
        const std::string options = "," + fields[5] + ",";
        records = options.find(",noatime,") == std::string::npos;
    }
    return records;
}

std::optional<std::filesystem::path> linkText(const std::filesystem::path& path) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0 || static_cast<std::size_t>(length) >= target.size()) return std::nullopt;
    target.resize(static_cast<std::size_t>(length));
    return std::filesystem::path(target);
}

std::optional<StoredItem> storedItem(const std::filesystem::path& path) {
    const auto status = statOf(path, true);
    if (!status) return std::nullopt;
    return storedItemOf(*status);
}

std::optional<unsigned> ownerOf(const std::filesystem::path& path, std::error_code& error) {
    const auto status = statOf(path, false, error);
    if (!status) return std::nullopt;
    return static_cast<unsigned>(status->st_uid);
}

std::filesystem::path standardized(const std::filesystem::path& path) {
    if (path.empty()) return path;
    std::string text = path.lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
}

std::filesystem::path resolveSymlinks(const std::filesystem::path& path) {
    std::filesystem::path absolute = path;
    if (!path.is_absolute()) {
        std::error_code error;  // a working directory that was removed leaves the path as given
        const auto workingDirectory = std::filesystem::current_path(error);
        if (!error) absolute = workingDirectory / path;
    }
    std::string text = standardized(absolute).native();
    for (int hop = 0; hop < maxLinkHops; ++hop) {
        // realpath() of the longest prefix that exists and is short enough for the system.
        std::size_t end = text.size();
        char resolved[PATH_MAX];
        while (end >= PATH_MAX || !::realpath(end == 0 ? "/" : text.substr(0, end).c_str(), resolved)) {
            if (end == 0) return text;
            end = text.rfind('/', end - 1);
        }
        // The rest either does not exist (appended as written) or was too long for the
        // system: then it is followed here, one component at a time.
        std::string result = resolved;
        std::error_code error;
        std::optional<DirectoryHandle> directory;
        if (end < text.size()) directory = DirectoryHandle::open(result, true, error);
        while (directory && end < text.size()) {
            const auto next = std::min(text.find('/', end + 1), text.size());
            const std::string name = text.substr(end + 1, next - end - 1);
            struct stat status {};
            if (::fstatat(directory->fd(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) break;
            if (S_ISLNK(status.st_mode)) {
                std::string target(PATH_MAX, '\0');
                const ssize_t length = ::readlinkat(directory->fd(), name.c_str(), target.data(), target.size());
                if (length <= 0) break;
                target.resize(static_cast<std::size_t>(length));
                if (target.front() != '/') target = result + "/" + target;
                text = standardized(target + text.substr(next)).native();
                end = std::string::npos;  // resolve the new text from the start
                break;
            }
            if (!S_ISDIR(status.st_mode)) break;
            directory = directory->openChild(name, error);
            result += "/" + name;
            end = next;
        }
        if (end != std::string::npos) return standardized(result + text.substr(end));
    }
    return text;  // a loop of links
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

std::error_code notRegularFileError() {
    static const struct : std::error_category {
        const char* name() const noexcept override { return "kelvo.file"; }
        std::string message(int) const override { return "not a regular file"; }
    } category;
    return {1, category};
}

std::error_code writeFileAtomically(const std::filesystem::path& target, const std::string& content) {
    // A file kept elsewhere and linked here (a dotfiles checkout) is replaced where it lives.
    const auto path = isSymbolicLink(target).value_or(false) ? resolveSymlinks(target) : target;
    std::error_code statusError;
    const auto existing = statOf(path, true, statusError);
    if (existing && !S_ISREG(existing->st_mode)) return notRegularFileError();
    if (!existing && statusError != std::errc::no_such_file_or_directory) return statusError;
    std::string temporary = path.string() + ".XXXXXX";
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) return lastError();
    std::error_code error = writeAll(fd, content);
    if (!error && existing && ::fchmod(fd, existing->st_mode & 07777) != 0) error = lastError();
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

std::error_code removeFile(const std::filesystem::path& path) {
    if (::unlink(path.c_str()) == 0 || errno == ENOENT) return {};
    return {errno, std::generic_category()};
}

std::error_code createDirectories(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return error;
}

}  // namespace kelvo::platform
