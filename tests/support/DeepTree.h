#pragma once
// Trees deeper than PATH_MAX, where every call that takes a whole path fails with
// ENAMETOOLONG: made and read here through directory descriptors, one component at a time
// from "/", without following links. Paths must be absolute.
#include <cstdint>
#include <filesystem>
#include <string>

namespace kelvo::testing {

// Makes `levels` nested folders named `name` below the folder `base` (made if missing)
// and returns the deepest one's path.
std::filesystem::path makeFolderChain(const std::filesystem::path& base, std::size_t levels,
                                      const std::string& name = "d");
// Writes a file of `size` bytes (parents made) and returns its path.
std::filesystem::path writeDeepFile(const std::filesystem::path& path, std::size_t size);
// Makes a symbolic link at `link` (parents made) that points to `target` as written.
void makeDeepSymlink(const std::filesystem::path& target, const std::filesystem::path& link);
// Whether anything stands at the path (links not followed).
bool deepExists(const std::filesystem::path& path);

}  // namespace kelvo::testing
