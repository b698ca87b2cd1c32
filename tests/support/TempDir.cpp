#include "support/TempDir.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace kelvo::testing {

TempDir::TempDir(Backing backing) {
    const bool inMemory = backing == memory && std::filesystem::is_directory("/dev/shm") && ::access("/dev/shm", W_OK) == 0;
    std::string pattern =
        ((inMemory ? std::filesystem::path("/dev/shm") : std::filesystem::temp_directory_path()) / "kelvo-test-XXXXXX")
            .string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
    // Readable and enterable by the unprivileged user some tests switch to.
    ::chmod(path_.c_str(), 0755);
}

TempDir::~TempDir() {
    std::error_code error;
    for (auto it = std::filesystem::recursive_directory_iterator(
             path_, std::filesystem::directory_options::skip_permission_denied, error);
         !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
        if (it->is_directory(error) && !it->is_symlink(error)) ::chmod(it->path().c_str(), 0755);
    }
    ::chmod(path_.c_str(), 0755);
    std::filesystem::remove_all(path_, error);
}

std::filesystem::path writeFile(const std::filesystem::path& path, std::size_t size) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    const std::string chunk(4096, 'k');
    for (std::size_t written = 0; written < size; written += chunk.size())
        out.write(chunk.data(), static_cast<std::streamsize>(std::min(chunk.size(), size - written)));
    return path;
}

std::filesystem::path writeText(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    return path;
}

std::filesystem::path makeDirectory(const std::filesystem::path& path) {
    std::filesystem::create_directories(path);
    return path;
}

void setModificationTime(const std::filesystem::path& path, std::chrono::system_clock::time_point time) {
    const auto since = time.time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since);
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(since - seconds);
    struct timespec times[2];
    times[0].tv_sec = times[1].tv_sec = seconds.count();
    times[0].tv_nsec = times[1].tv_nsec = nanoseconds.count();
    ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

std::int64_t allocatedBytes(const std::filesystem::path& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return 0;
    return static_cast<std::int64_t>(status.st_blocks) * 512;
}

std::int64_t allocatedBytesBelow(const std::filesystem::path& directory) {
    std::int64_t sum = 0;
    std::error_code error;
    for (auto it = std::filesystem::recursive_directory_iterator(directory, error);
         !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error))
        sum += allocatedBytes(it->path());
    return sum;
}

std::string listing(const std::filesystem::path& directory) {
    std::vector<std::string> lines;
    std::error_code error;
    for (auto it = std::filesystem::recursive_directory_iterator(directory, error);
         !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
        std::string line = it->path().lexically_relative(directory).string();
        if (it->is_directory(error) && !it->is_symlink(error)) line += "/";
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    std::string out;
    for (const auto& line : lines) out += line + "\n";
    return out;
}

void chownTree(const std::filesystem::path& root, uid_t owner, gid_t group) {
    ::lchown(root.c_str(), owner, group);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
        ::lchown(entry.path().c_str(), owner, group);
}

bool runningAsRoot() { return ::geteuid() == 0; }

}  // namespace kelvo::testing
