#pragma once
// A process running under a chosen program name, for tests of process checks: a shell
// started through a link of that name. The constructor returns only once the shell has
// said it runs (its name and command line are then final); the process lives until stop()
// or the end of the object, and is gone from the process table when stop() returns.
#include <sys/types.h>

#include <filesystem>

namespace kelvo::testing {

class NamedProcess {
public:
    // Makes the link `program` to /bin/sh (its folder created) and runs it.
    explicit NamedProcess(const std::filesystem::path& program);
    ~NamedProcess();
    NamedProcess(const NamedProcess&) = delete;
    NamedProcess& operator=(const NamedProcess&) = delete;

    // -1 when the process could not be started or did not report.
    pid_t pid() const { return pid_; }
    // What the shell runs: its command line is the program, "-c" and this.
    static constexpr const char* script = "echo ready; read line";
    void stop();

private:
    pid_t pid_ = -1;
    int input_ = -1;
};

}  // namespace kelvo::testing
