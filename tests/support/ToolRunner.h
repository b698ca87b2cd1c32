#pragma once
// Runs the kelvo tool as a child process with a chosen environment, as a user would.
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

// A folder holding only a link to rm, for PATH: the one command tool every machine has,
// so scans see the same tools on every machine.
std::filesystem::path toolFolderWithOnlyRm(const std::filesystem::path& parent);

}  // namespace kelvo::testing
