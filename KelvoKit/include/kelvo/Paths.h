#pragma once
// The string rules by which paths are compared everywhere in the library: a path is
// standardised lexically ("." dropped, ".." folded, no repeated or trailing separator,
// no link resolved) and lies inside another when it starts with it followed by "/".
#include <filesystem>
#include <string>

namespace kelvo::Paths {

std::filesystem::path standardized(const std::filesystem::path& path);
// Strictly inside, on whole components: no path lies inside itself, /a/bc is not inside /a/b.
bool isInside(const std::string& path, const std::string& root);
// A relative path appended to a base the way a URL appends a path component: a leading
// "/" in the relative part does not replace the base ("~//x" stays under home), and
// nothing is standardised.
std::filesystem::path appending(const std::filesystem::path& base, const std::string& relative);
// The last component of a path ("" for the root).
std::string lastComponent(const std::filesystem::path& path);
// The extension without its dot, exactly as written ("app" for Foo.app, "" for none).
std::string extensionOf(const std::filesystem::path& path);

}  // namespace kelvo::Paths
