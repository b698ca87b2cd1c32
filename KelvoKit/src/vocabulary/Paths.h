#pragma once
// The string rules by which paths are compared everywhere in the library: a path is
// standardised lexically ("." dropped, ".." folded, no repeated or trailing separator,
// no link resolved) and lies inside another when it starts with it followed by "/".
// Every comparison that decides whether a path is another or lies inside it goes through
// `same` or `isInside`: canonically equivalent Unicode (an accent as one character or as
// a letter and a combining mark) is the same text there, case still counts, and bytes that
// are not valid UTF-8 are compared as they are.
#include <filesystem>
#include <string>
#include <string_view>

namespace kelvo::Paths {

std::filesystem::path standardized(const std::filesystem::path& path);
// The text in which paths are compared: each run of valid UTF-8 in its composed canonical
// form (NFC), every invalid byte kept as it is. Two paths are the same path exactly when
// these texts are equal.
std::string comparable(std::string_view path);
bool same(std::string_view path, std::string_view other);
// Strictly inside, on whole components, in comparable text: no path lies inside itself,
// /a/bc is not inside /a/b. Nothing lies inside "/" (the root followed by a slash is "//",
// which begins no standardised path) nor inside the empty path.
bool isInside(std::string_view path, std::string_view root);
// A relative path appended to a base the way a URL appends a path component: a leading
// "/" in the relative part does not replace the base ("~//x" stays under home), and
// nothing is standardised.
std::filesystem::path appending(const std::filesystem::path& base, const std::string& relative);
// The last component of a path ("" for the root).
std::string lastComponent(const std::filesystem::path& path);
// The extension without its dot, exactly as written ("app" for Foo.app, "" for none).
std::string extensionOf(const std::filesystem::path& path);

}  // namespace kelvo::Paths
