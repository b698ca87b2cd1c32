#include "kelvo/platform/Trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <linux/fs.h>
#include <optional>
#include <sstream>

#include "kelvo/platform/DirectoryHandle.h"

namespace kelvo::platform {
namespace {

using std::filesystem::path;

std::error_code lastError() { return {errno, std::generic_category()}; }

std::optional<struct stat> statusOf(const path& location) {
    struct stat status {};
    if (::lstat(location.c_str(), &status) != 0) return std::nullopt;
    return status;
}

// A directory of our own, no link: what a trash folder must be before anything goes in.
bool isOwnDirectory(const path& location) {
    const auto status = statusOf(location);
    return status && S_ISDIR(status->st_mode) && status->st_uid == ::getuid();
}

bool makeOwnDirectory(const path& location) {
    if (::mkdir(location.c_str(), 0700) != 0 && errno != EEXIST) return false;
    return isOwnDirectory(location);
}

// The highest directory above the item still on the item's file system: where the
// volume's trash lives.
path topDirectoryOf(const path& item, dev_t device) {
    path top = item.parent_path();
    while (top.has_relative_path()) {
        const auto above = statusOf(top.parent_path());
        if (!above || above->st_dev != device) break;
        top = top.parent_path();
    }
    return top;
}

// The trash folder for an item on `device`, or nothing when its volume offers none.
std::optional<path> trashFor(dev_t device, const path& item, const path& homeTrash) {
    std::error_code ignored;
    std::filesystem::create_directories(homeTrash, ignored);
    if (const auto home = statusOf(homeTrash); home && S_ISDIR(home->st_mode) && home->st_dev == device)
        return homeTrash;
    const path top = topDirectoryOf(item, device);
    const std::string uid = std::to_string(::getuid());
    // A shared .Trash counts only when its sticky bit keeps users from each other's folders.
    if (const auto shared = statusOf(top / ".Trash");
        shared && S_ISDIR(shared->st_mode) && (shared->st_mode & S_ISVTX) && makeOwnDirectory(top / ".Trash" / uid))
        return top / ".Trash" / uid;
    if (makeOwnDirectory(top / (".Trash-" + uid))) return top / (".Trash-" + uid);
    return std::nullopt;
}

std::optional<DirectoryHandle> openOwnChild(const DirectoryHandle& parent, const char* name, std::error_code& error) {
    if (::mkdirat(parent.fd(), name, 0700) != 0 && errno != EEXIST) {
        error = lastError();
        return std::nullopt;
    }
    return parent.openChild(name, error);
}

bool writeAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(fd, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        done += static_cast<std::size_t>(written);
    }
    return true;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::string trashInfoText(const path& original, std::chrono::system_clock::time_point deleted) {
    std::string encoded;
    for (const unsigned char c : original.string()) {
        if (std::isalnum(c) || c == '/' || c == '-' || c == '_' || c == '.' || c == '~') {
            encoded += static_cast<char>(c);
        } else {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%02X", c);
            encoded += escape;
        }
    }
    const std::time_t seconds = std::chrono::system_clock::to_time_t(deleted);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + encoded + "\nDeletionDate=" + date + "\n";
}

path originalPathIn(const std::string& trashInfo) {
    std::istringstream lines(trashInfo);
    std::string line;
    bool inGroup = false;
    while (std::getline(lines, line)) {
        if (line.starts_with("[")) {
            inGroup = line == "[Trash Info]";
            continue;
        }
        if (!inGroup || !line.starts_with("Path=")) continue;
        std::string decoded;
        for (std::size_t at = 5; at < line.size(); ++at) {
            if (line[at] != '%') {
                decoded += line[at];
                continue;
            }
            if (at + 2 >= line.size() || hexValue(line[at + 1]) < 0 || hexValue(line[at + 2]) < 0) return {};
            decoded += static_cast<char>(hexValue(line[at + 1]) * 16 + hexValue(line[at + 2]));
            at += 2;
        }
        return decoded;
    }
    return {};
}

std::error_code moveToTrash(const path& item, const path& homeTrash, TrashedItem& trashed) {
    if (!item.is_absolute() || !item.has_relative_path()) return std::make_error_code(std::errc::invalid_argument);
    std::error_code error;
    // Reached from "/" one component at a time: a link anywhere above the item stops here.
    auto root = DirectoryHandle::open("/", true, error);
    if (!root) return error;
    auto parent = root->openBelow(item.parent_path().relative_path().string(), error);
    if (!parent) return error;
    const std::string name = item.filename().string();
    struct stat status {};
    if (::fstatat(parent->fd(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return lastError();

    const auto trash = trashFor(status.st_dev, item, homeTrash);
    if (!trash) return std::make_error_code(std::errc::cross_device_link);
    auto trashDirectory = DirectoryHandle::open(*trash, false, error);
    if (!trashDirectory) return error;
    auto files = openOwnChild(*trashDirectory, "files", error);
    if (!files) return error;
    auto info = openOwnChild(*trashDirectory, "info", error);
    if (!info) return error;
    const std::string text = trashInfoText(item, std::chrono::system_clock::now());

    for (int attempt = 1; attempt <= 10000; ++attempt) {
        const std::string candidate = attempt == 1 ? name : name + "." + std::to_string(attempt);
        const std::string infoName = candidate + ".trashinfo";
        const int fd = ::openat(info->fd(), infoName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                0600);
        if (fd < 0 && errno == EEXIST) continue;
        if (fd < 0) return lastError();
        const bool written = writeAll(fd, text);
        ::close(fd);
        if (!written) {
            error = std::make_error_code(std::errc::io_error);
            ::unlinkat(info->fd(), infoName.c_str(), 0);
            return error;
        }
        if (::syscall(SYS_renameat2, parent->fd(), name.c_str(), files->fd(), candidate.c_str(), RENAME_NOREPLACE) ==
            0) {
            trashed = {*trash, candidate};
            return {};
        }
        error = lastError();
        ::unlinkat(info->fd(), infoName.c_str(), 0);
        if (error != std::errc::file_exists) return error;
    }
    return std::make_error_code(std::errc::file_exists);
}

}  // namespace kelvo::platform
