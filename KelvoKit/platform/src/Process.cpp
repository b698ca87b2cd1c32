#include "kelvo/platform/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "kelvo/platform/Descriptor.h"

extern char** environ;

namespace kelvo::platform {
namespace {

int statusOf(int waitStatus) {
    if (WIFEXITED(waitStatus)) return WEXITSTATUS(waitStatus);
    if (WIFSIGNALED(waitStatus)) return 128 + WTERMSIG(waitStatus);
    return -1;
}

std::optional<int> waitFor(pid_t child) {
    int waitStatus = 0;
    while (::waitpid(child, &waitStatus, 0) < 0) {
        if (errno != EINTR) return std::nullopt;
    }
    return statusOf(waitStatus);
}

struct Pipe {
    Descriptor read;
    Descriptor write;
    bool open() {
        int fds[2];
        if (::pipe2(fds, O_CLOEXEC) != 0) return false;
        read.reset(fds[0]);
        write.reset(fds[1]);
        return true;
    }
};

}  // namespace

std::optional<ProcessOutcome> runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                                         bool captureOutput) {
    // Standard error (and output when not captured) goes to /dev/null rather than to a pipe
    // nobody reads: the effect is the same and a chatty tool can never block on a full pipe.
    Pipe output;
    if (captureOutput && !output.open()) return std::nullopt;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (captureOutput)
        posix_spawn_file_actions_adddup2(&actions, output.write.get(), STDOUT_FILENO);
    else
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    std::vector<char*> argv;
    std::string programText = program.string();
    argv.push_back(programText.data());
    std::vector<std::string> copies = arguments;
    for (auto& argument : copies) argv.push_back(argument.data());
    argv.push_back(nullptr);

    pid_t child = 0;
    const int spawnError = ::posix_spawn(&child, programText.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawnError != 0) return std::nullopt;

    ProcessOutcome outcome;
    if (captureOutput) {
        // Only the child may hold the writing end now, so the reading one sees its end.
        output.write.reset();
        char buffer[8192];
        while (true) {
            const ssize_t count = ::read(output.read.get(), buffer, sizeof buffer);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) break;
            outcome.standardOutput.append(buffer, static_cast<std::size_t>(count));
        }
        output.read.reset();
    }
    const auto status = waitFor(child);
    if (!status) return std::nullopt;
    // A program that exists but cannot be executed comes back from the child as 127.
    outcome.exitStatus = *status;
    return outcome;
}

bool startProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);

    std::string programText = program.string();
    std::vector<std::string> copies = arguments;
    std::vector<char*> argv{programText.data()};
    for (auto& argument : copies) argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_t child = 0;
    const int spawnError = ::posix_spawn(&child, programText.c_str(), &actions, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return spawnError == 0;
}

int runShell(const std::string& commandLine, const std::map<std::string, std::string>& variables) {
    std::string shell = "/bin/sh";
    std::string flag = "-c";
    std::string line = commandLine;
    char* argv[] = {shell.data(), flag.data(), line.data(), nullptr};

    // This process's environment without the variables given, then those.
    std::vector<std::string> settings;
    for (char** entry = environ; *entry; ++entry) {
        const std::string_view setting = *entry;
        if (!variables.contains(std::string(setting.substr(0, setting.find('='))))) settings.emplace_back(setting);
    }
    for (const auto& [name, value] : variables) settings.push_back(name + "=" + value);
    std::vector<char*> envp;
    for (auto& setting : settings) envp.push_back(setting.data());
    envp.push_back(nullptr);

    pid_t child = 0;
    if (::posix_spawn(&child, shell.c_str(), nullptr, nullptr, argv, envp.data()) != 0) return -1;
    return waitFor(child).value_or(-1);
}

}  // namespace kelvo::platform
