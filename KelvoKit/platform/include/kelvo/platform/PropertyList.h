#pragma once
// Reading property lists for their top-level string values, in every encoding a bundle may
// carry: binary; XML in UTF-8 (a byte-order mark allowed) or in UTF-16 of either byte order
// (with its byte-order mark); and the older OpenStep text form ({ Key = value; ... }, also
// in UTF-16 with a byte-order mark), read by a small reader of our own since libplist
// reads only the first two.
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace kelvo::platform {

// The largest property-list file read; anything larger counts as unreadable.
inline constexpr std::size_t maximumPropertyListBytes = 8 << 20;

// The string-valued members of a top-level dictionary; members of other types are left
// out. Nothing when the bytes are not a property list whose top level is a dictionary
// (invalid UTF-16, a syntax error, OpenStep nesting deeper than 512 levels included).
std::optional<std::map<std::string, std::string>> readTopLevelStrings(const std::string& bytes);
// The same for a regular file of at most maximumPropertyListBytes; nothing for anything else.
std::optional<std::map<std::string, std::string>> readTopLevelStrings(const std::filesystem::path& file);

}  // namespace kelvo::platform
