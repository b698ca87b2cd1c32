#pragma once
// Reading property lists (XML or binary encoding) for their top-level string values.
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace kelvo::platform {

// The string-valued members of a top-level dictionary; members of other types are left
// out. Nothing when the bytes are not a property list whose top level is a dictionary.
std::optional<std::map<std::string, std::string>> readTopLevelStrings(const std::string& bytes);
std::optional<std::map<std::string, std::string>> readTopLevelStrings(const std::filesystem::path& file);

}  // namespace kelvo::platform
