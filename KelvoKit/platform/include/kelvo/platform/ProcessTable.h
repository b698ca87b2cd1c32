#pragma once
// The running processes of the machine, as the process probe needs them.
#include <optional>
#include <string>
#include <vector>

namespace kelvo::platform {

struct RunningProcess {
    std::string shortName;    // the kernel's name (cut to 15 characters on Linux)
    std::string programName;  // the last component of the first command-line word, uncut
    std::string commandLine;  // every argument, joined by single spaces
    std::string executable;   // the program file it runs (/proc/<pid>/exe); empty when unreadable
};

// Nothing when the process table cannot be read (no /proc); callers then fall back to pgrep.
std::optional<std::vector<RunningProcess>> listRunningProcesses();

}  // namespace kelvo::platform
