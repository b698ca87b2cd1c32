#include "support/Unprivileged.h"

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kelvo::testing {
namespace {

// The child's message starts with what the rest of it is: 'O' output, 'F' a failure.
[[noreturn]] void runChild(int fd, const std::function<std::string()>& work, uid_t user) {
    std::string message = "O";
    const bool root = ::geteuid() == 0;
    if (root && (::setgroups(0, nullptr) != 0 || ::setresgid(user, user, user) != 0 || ::setresuid(user, user, user) != 0))
        message = "Fcannot switch to uid " + std::to_string(user) + ": " + std::strerror(errno);
    else if (root && (::geteuid() != user || ::setuid(0) == 0))
        message = "Fstill privileged after the switch";  // a root that could change back would read everything
    else
        try {
            message += work();
        } catch (const std::exception& error) {  // anything else ends the child: no answer, a failure too
            message = std::string("Fthe work threw: ") + error.what();
        }
    FILE* out = ::fdopen(fd, "w");
    std::fwrite(message.data(), 1, message.size(), out);
    std::fclose(out);
    ::_exit(0);
}

}  // namespace

UnprivilegedRun runAsUnprivileged(const std::function<std::string()>& work, unsigned user) {
    UnprivilegedRun run;
    int fds[2];
    if (::pipe(fds) != 0) return run.failure = std::string("pipe: ") + std::strerror(errno), run;
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(fds[0]);
        runChild(fds[1], work, static_cast<uid_t>(user));
    }
    ::close(fds[1]);
    FILE* in = ::fdopen(fds[0], "r");
    std::string message;
    for (int c; child > 0 && (c = std::fgetc(in)) != EOF;) message += static_cast<char>(c);
    std::fclose(in);
    int status = 0;
    if (child > 0) ::waitpid(child, &status, 0);
    if (child < 0) run.failure = std::string("fork: ") + std::strerror(errno);
    else if (message.empty()) run.failure = "the child ended without an answer (status " + std::to_string(status) + ")";
    else if (message[0] == 'O') run.output = message.substr(1);
    else run.failure = message.substr(1);
    return run;
}

}  // namespace kelvo::testing
