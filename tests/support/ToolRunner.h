#pragma once
// Runs the kelvo tool as a child process with a chosen environment, as a user would.
#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace kelvo::testing {

struct ToolResult {
    int exitStatus = -1;
    std::string standardOutput;
    std::string standardError;
};

// HOME, TMPDIR, PATH and LANG are taken from `environment` when given there; the rest of
// the child's environment is empty, so the machine's settings cannot leak into a test.
// Standard input is /dev/null (not a terminal).
ToolResult runTool(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment);

// The environment of a user whose home is parent/home and temporary folder parent/tmp (both
// made), in the C locale, with a PATH folder (parent/bin) that holds only a link to rm: the
// one command tool every machine has, so scans see the same tools on every machine.
std::map<std::string, std::string> toolEnvironment(const std::filesystem::path& parent);

// Sets the modification time of everything below a folder, the folder included.
void setTreeModificationTime(const std::filesystem::path& root, std::chrono::system_clock::time_point time);

// A listing (TempDir.h) less every line that starts with one of the prefixes: what a tree
// must look like after exactly those items went.
std::string listingWithout(const std::string& listing, const std::vector<std::string>& removedPrefixes);

}  // namespace kelvo::testing
