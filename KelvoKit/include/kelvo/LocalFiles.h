#pragma once
// The few file operations the front ends need for their own files (a desktop entry, a
// link to the tool, a path to measure), so they never call the operating system
// themselves. Failures are values: nothing, false or the error.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace kelvo::LocalFiles {

// Something exists at the path, links followed (a dangling link does not exist).
bool exists(const std::filesystem::path& path);
// Anything stands at the path, a dangling link included; false when it is missing or its
// status cannot be read.
bool standsAt(const std::filesystem::path& path);
// The whole content; nothing when it cannot be read.
std::optional<std::string> read(const std::filesystem::path& path);
// Creates the missing folders of the path.
std::error_code createDirectories(const std::filesystem::path& path);
// Creates the file's missing folders, then replaces the file whole or not at all, even
// across a crash: readers see the old content or the new one, never a mix.
std::error_code writeAtomically(const std::filesystem::path& path, const std::string& content);
// The named item in the running executable's directory (the working directory when that
// cannot be found): where the resource bundles and the tool travel.
std::filesystem::path besideExecutable(std::string_view name);
// The named item in the installed programs' data folder, found from the running
// executable's directory (<prefix>/bin/../share/kelvo), so an installation under any
// prefix finds its own text bundles.
std::filesystem::path installedData(std::string_view name);

}  // namespace kelvo::LocalFiles
