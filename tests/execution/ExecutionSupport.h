#pragma once
// Shared pieces of the executor tests: an executor behind the clean service's guard for a
// home and temporary folder of the test's own, target builders, the whole report as text
// for one comparison, and a private mount for a file system of a test's own.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include "kelvo/Executor.h"
#include "support/DeepTree.h"
#include "support/ServiceGuards.h"
#include "support/TempDir.h"

namespace kelvo::testing {

constexpr unsigned nobodyId = 65534;

inline CleanTarget pathTarget(const std::string& id, std::vector<std::filesystem::path> paths,
                              Family family = Family::devMisc, std::int64_t sizeBytes = 0) {
    return {.id = id, .name = id, .family = family, .kind = CleanKind::paths(std::move(paths)), .sizeBytes = sizeBytes};
}

inline CleanTarget commandTarget(const std::string& id, const std::string& commandLine, std::int64_t sizeBytes = 0) {
    return {.id = id, .name = id, .kind = CleanKind::command(commandLine), .sizeBytes = sizeBytes};
}

// The line of a target skipped, or failed (as "error "), for the reason: the reason's key and subject, so
// that a comparison never depends on a sentence.
inline std::string skipped(const std::string& id, Reason::Code code, const std::string& subject, const char* as = "skipped ") {
    return as + id + ": " + std::string(Reason::key(code)) + " " + subject;
}

// The lines a test expects, joined one per line.
inline std::string lines(const std::vector<std::string>& expected) {
    std::string text;
    for (const auto& line : expected) text += line + "\n";
    return text;
}

// The whole report in its order: "deleted id", "partial id", "unknown id", the skipped and
// failed lines, then "freed N".
inline std::string summary(const ExecutionReport& report) {
    std::vector<std::string> out;
    for (const auto& [prefix, ids] : {std::pair{"deleted ", &report.deleted}, {"partial ", &report.partial},
                                      {"unknown ", &report.freedUnknown}})
        for (const auto& id : *ids) out.push_back(prefix + id);
    for (const auto& entry : report.skipped) out.push_back(skipped(entry.id, entry.reason.code, entry.reason.subject));
    for (const auto& entry : report.errors)
        out.push_back(skipped(entry.id, entry.reason.code, entry.reason.subject, "error "));
    out.push_back("freed " + std::to_string(report.freedBytes));
    return lines(out);
}

// Runs `work` in a child with a mount namespace of its own and a small tmpfs at the mount
// point, so the mount goes with the child whatever happens: the child's exit status, 0 when
// the work held, 77 when no private mount namespace can be made here (it needs root).
inline int inPrivateMount(const std::filesystem::path& mountPoint, const std::function<bool()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", mountPoint.c_str(), "tmpfs", 0, "size=4m") != 0)
            ::_exit(77);
        ::_exit(work() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A home and a temporary folder as allowed roots, and a folder outside both, in memory where
// possible (the race rounds build and remove tens of thousands of folders).
struct ExecutionTest : ::testing::Test {
    // No process runs unless named; commands answer 0 unless a runner is given.
    Executor executor(std::vector<std::string> running = {}, std::vector<std::string> fragments = {},
                      CommandFunction runner = {}) const {
        return {.safety = cleanGuard(environmentAt(home, tmp)),
                .probe = std::make_shared<StubProcessProbe>(running, std::move(fragments)),
                .runCommand = runner ? std::move(runner) : [](const std::string&, const ShellVariables&) { return 0; }};
    }
    TempDir root{TempDir::memory};
    std::filesystem::path home = makeDirectory(root / "home"), tmp = makeDirectory(root / "tmp"),
                          outside = makeDirectory(root / "outside");
};

}  // namespace kelvo::testing
