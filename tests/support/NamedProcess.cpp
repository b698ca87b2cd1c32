#include "support/NamedProcess.h"

#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

extern char** environ;

namespace kelvo::testing {

NamedProcess::NamedProcess(const std::filesystem::path& program) {
    std::filesystem::create_directories(program.parent_path());
    std::filesystem::create_symlink("/bin/sh", program);
    // One socket is the shell's input and output: closing our end ends its read.
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::string path = program.string(), option = "-c", command = script;
    char* argv[] = {path.data(), option.data(), command.data(), nullptr};
    if (::posix_spawn(&pid_, path.c_str(), &actions, nullptr, argv, environ) != 0) pid_ = -1;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    input_ = ends[0];
    // The hand-off: the shell writes only once it runs as itself.
    char said[6] = {};
    if (pid_ <= 0 || ::recv(input_, said, sizeof said, MSG_WAITALL) != 6 || std::string(said, 6) != "ready\n") stop();
}

NamedProcess::~NamedProcess() { stop(); }

void NamedProcess::stop() {
    if (pid_ > 0) ::kill(pid_, SIGKILL), ::waitpid(pid_, nullptr, 0);
    if (input_ >= 0) ::close(input_);
    pid_ = input_ = -1;
}

}  // namespace kelvo::testing
