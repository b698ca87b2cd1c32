#include "support/Unprivileged.h"

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kelvo::testing {
namespace {

// First byte of the child's message: what the rest of it is.
constexpr char outputTag = 'O';
constexpr char refusedTag = 'R';
constexpr char failedTag = 'F';

void writeAll(int fd, const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(fd, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        written += static_cast<std::size_t>(count);
    }
}

[[noreturn]] void runChild(int fd, const std::function<std::string()>& work, uid_t user) {
    if (::geteuid() == 0) {
        if (::setgroups(0, nullptr) != 0 || ::setresgid(user, user, user) != 0 || ::setresuid(user, user, user) != 0) {
            writeAll(fd, std::string(1, refusedTag) + std::strerror(errno));
            ::_exit(0);
        }
        // A root that could change back, or kept its capabilities, would read everything.
        if (::geteuid() != user || ::setuid(0) == 0) {
            writeAll(fd, std::string(1, failedTag) + "still privileged after the switch");
            ::_exit(0);
        }
    }
    std::string message(1, outputTag);
    try {
        message += work();
    } catch (const std::exception& error) {
        message = std::string(1, failedTag) + "the work threw: " + error.what();
    } catch (...) {
        message = std::string(1, failedTag) + "the work threw";
    }
    writeAll(fd, message);
    ::_exit(0);
}

}  // namespace

UnprivilegedRun runAsUnprivileged(const std::function<std::string()>& work, unsigned user) {
    UnprivilegedRun run;
    int fds[2];
    if (::pipe(fds) != 0) {
        run.failure = std::string("pipe: ") + std::strerror(errno);
        return run;
    }
    const pid_t child = ::fork();
    if (child < 0) {
        run.failure = std::string("fork: ") + std::strerror(errno);
        ::close(fds[0]);
        ::close(fds[1]);
        return run;
    }
    if (child == 0) {
        ::close(fds[0]);
        runChild(fds[1], work, static_cast<uid_t>(user));
    }
    ::close(fds[1]);
    std::string message;
    char buffer[4096];
    while (true) {
        const ssize_t count = ::read(fds[0], buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        message.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(fds[0]);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (message.empty()) {
        run.failure = "the child ended without an answer (status " + std::to_string(status) + ")";
        return run;
    }
    const std::string rest = message.substr(1);
    switch (message.front()) {
        case outputTag: run.output = rest; break;
        case refusedTag:
            run.switchRefused = true;
            run.failure = "cannot switch to uid " + std::to_string(user) + ": " + rest;
            break;
        default: run.failure = rest;
    }
    return run;
}

}  // namespace kelvo::testing
