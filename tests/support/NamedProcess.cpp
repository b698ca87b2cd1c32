#include "support/NamedProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

extern char** environ;

namespace kelvo::testing {

NamedProcess::NamedProcess(const std::filesystem::path& program) {
    std::filesystem::create_directories(program.parent_path());
    std::filesystem::create_symlink("/bin/sh", program);
    int toChild[2], fromChild[2] = {-1, -1};
    if (::pipe2(toChild, O_CLOEXEC) != 0) return;
    if (::pipe2(fromChild, O_CLOEXEC) != 0) {
        ::close(toChild[0]);
        ::close(toChild[1]);
        return;
    }
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, toChild[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, fromChild[1], STDOUT_FILENO);
    std::string path = program.string(), option = "-c", command = script;
    char* argv[] = {path.data(), option.data(), command.data(), nullptr};
    if (::posix_spawn(&pid_, path.c_str(), &actions, nullptr, argv, environ) != 0) pid_ = -1;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(toChild[0]);
    ::close(fromChild[1]);
    input_ = toChild[1];
    // The hand-off: the shell writes only once it runs as itself.
    std::string said;
    char buffer[16];
    for (ssize_t count = 0; pid_ > 0 && said.find('\n') == std::string::npos &&
                            ((count = ::read(fromChild[0], buffer, sizeof buffer)) > 0 || (count < 0 && errno == EINTR));)
        if (count > 0) said.append(buffer, static_cast<std::size_t>(count));
    ::close(fromChild[0]);
    if (said != "ready\n") stop();
}

NamedProcess::~NamedProcess() { stop(); }

void NamedProcess::stop() {
    if (pid_ > 0) ::kill(pid_, SIGKILL), ::waitpid(pid_, nullptr, 0);
    if (input_ >= 0) ::close(input_);
    pid_ = input_ = -1;
}

}  // namespace kelvo::testing
