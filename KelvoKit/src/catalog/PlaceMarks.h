#pragma once
// How a catalog place shows that it is a tool's own folder and not one of the user's,
// whatever its name: it holds no git work tree at its top (a clone is never a cache), and
// it carries the tool's marks. Marks are written like a project folder's sibling patterns:
// every element must be matched, "|" separates alternatives, and an alternative is a path
// relative to the place, matched when anything stands there (links not followed). A place
// whose top cannot be read carries nothing and may hold a work tree: it is not offered.
#include <filesystem>
#include <string>
#include <vector>

namespace kelvo::PlaceMarks {

using Marks = std::vector<std::string>;

// True when ".git" (a folder, or the file of a linked work tree) stands at the top of the
// place, or when that cannot be told.
bool holdsWorkTree(const std::filesystem::path& place);
// True when every element of marks is matched; always true for no marks.
bool carries(const std::filesystem::path& place, const Marks& marks);
// Both rules at once: no work tree at the top, and the marks.
bool offerable(const std::filesystem::path& place, const Marks& marks);

}  // namespace kelvo::PlaceMarks
