#include "support/TempDir.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace kelvo::testing {

namespace fs = std::filesystem;

TempDir::TempDir(Backing backing) {
    const bool inMemory = backing == memory && fs::is_directory("/dev/shm") && ::access("/dev/shm", W_OK) == 0;
    std::string pattern = ((inMemory ? fs::path("/dev/shm") : fs::temp_directory_path()) / "kelvo-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
    ::chmod(path_.c_str(), 0755);  // readable and enterable by the unprivileged user some tests switch to
}

TempDir::~TempDir() {
    std::error_code error;
    for (fs::recursive_directory_iterator it(path_, fs::directory_options::skip_permission_denied, error), end;
         !error && it != end; it.increment(error))
        if (it->is_directory(error) && !it->is_symlink(error)) ::chmod(it->path().c_str(), 0755);
    ::chmod(path_.c_str(), 0755);
    fs::remove_all(path_, error);
}

fs::path writeFile(const fs::path& path, std::size_t size) { return writeText(path, std::string(size, 'k')); }

fs::path writeText(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    return path;
}

fs::path makeDirectory(const fs::path& path) { return fs::create_directories(path), path; }

std::int64_t allocatedBytes(const fs::path& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 ? static_cast<std::int64_t>(status.st_blocks) * 512 : 0;
}

std::string listing(const fs::path& directory) {
    std::vector<std::pair<std::string, bool>> lines;  // sorted by name, "/" marking folders afterwards
    std::error_code error;
    for (fs::recursive_directory_iterator it(directory, error), end; !error && it != end; it.increment(error))
        lines.emplace_back(it->path().lexically_relative(directory).string(), it->is_directory(error) && !it->is_symlink(error));
    std::sort(lines.begin(), lines.end());
    std::string out;
    for (const auto& [line, folder] : lines) out += line + (folder ? "/\n" : "\n");
    return out;
}

void chownTree(const fs::path& root, uid_t owner, gid_t group) {
    ::lchown(root.c_str(), owner, group);
    for (const auto& entry : fs::recursive_directory_iterator(root)) ::lchown(entry.path().c_str(), owner, group);
}

bool runningAsRoot() { return ::geteuid() == 0; }

}  // namespace kelvo::testing
