#pragma once
// Starting child processes and waiting for them, without a time limit.
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::platform {

struct ProcessOutcome {
    int exitStatus = 0;             // the exit code; 128 + signal number when killed
    std::string standardOutput;     // empty unless captured
};

// Runs a program with arguments (no shell), standard input read from /dev/null and
// standard error written to it; standard output captured when asked, else discarded
// likewise. Nothing when the program cannot be started.
std::optional<ProcessOutcome> runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                                         bool captureOutput);
// Starts a program with arguments (no shell) in a session of its own, its standard streams
// on /dev/null, and does not wait for it: it outlives this process. False when it cannot
// be started.
bool startProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments);
// Runs "/bin/sh -c commandLine" with this process's standard streams and environment,
// the given variables set over it, and returns its exit status; -1 when it cannot be started.
int runShell(const std::string& commandLine, const std::map<std::string, std::string>& variables = {});

}  // namespace kelvo::platform
