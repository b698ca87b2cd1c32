#pragma once
// Test fixtures on real file-system trees: a temporary folder removed afterwards (made
// writable first, so tests that lock folders clean up too), and small tree builders.
#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace kelvo::testing {

class TempDir {
public:
    enum Backing { disk, memory };
    // In memory when the machine has a writable /dev/shm (for tests that make and remove
    // hundreds of thousands of names), else on disk.
    explicit TempDir(Backing backing = disk);
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& relative) const { return path_ / relative; }

private:
    std::filesystem::path path_;
};

// Writes a file of `size` bytes (parents created) and returns its path.
std::filesystem::path writeFile(const std::filesystem::path& path, std::size_t size = 0);
// Writes a file with the given text.
std::filesystem::path writeText(const std::filesystem::path& path, const std::string& text);
std::filesystem::path makeDirectory(const std::filesystem::path& path);
// The allocated size (blocks x 512) of one item, links not followed.
std::int64_t allocatedBytes(const std::filesystem::path& path);
// Sum of allocatedBytes over every entry below a directory, however deep (paths past
// PATH_MAX too: the walk goes by descriptors).
std::int64_t allocatedBytesBelow(const std::filesystem::path& directory);
// Every path below a directory (relative, sorted), with "/" after directories; links listed, not followed.
std::string listing(const std::filesystem::path& directory);

// Changes the owner of a tree (links themselves, never their targets).
void chownTree(const std::filesystem::path& root, uid_t owner, gid_t group);

// Whether this process runs as root: only root can give files to another user.
bool runningAsRoot();

}  // namespace kelvo::testing
