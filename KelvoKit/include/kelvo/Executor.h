#pragma once
// Carries out a clean run: for each target, in order, the guarded-process check (left out
// with force), the running-application check, the protected-application check, then for
// a command the command, for paths the guard and link checks of every path before any is
// removed, then removal. Every target ends deleted, partial, skipped with a reason or
// failed with a message; the run never stops on a bad target. Removal works on directory
// descriptors and never follows a symbolic link, not even one swapped in meanwhile.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/ProcessProbe.h"
#include "kelvo/SafetyGuard.h"

namespace kelvo {

using CommandRunner = std::function<int(const std::string& commandLine)>;

struct RemovalOutcome {
    std::int64_t freed = 0;
    bool fullyRemoved = false;
};

struct Executor {
    SafetyGuard safety;
    bool dryRun = false;
    bool force = false;
    std::shared_ptr<const ProcessProbe> probe;
    CommandRunner runCommand = &Executor::shell;

    ExecutionReport execute(const std::vector<CleanTarget>& targets) const;

    // Runs the line through /bin/sh -c with this process's streams; -1 when it cannot start.
    static int shell(const std::string& commandLine);
    // Removes what it can of a file or tree (adding owner-write where permissions block),
    // going on past what cannot be removed; freed is the allocated size that went.
    static RemovalOutcome removeResiliently(const std::filesystem::path& path);
    // Removes a file or whole tree, adding owner-write throughout and retrying once when a
    // permission error blocks; never follows a link inside the tree.
    static std::error_code removeItemMakingWritable(const std::filesystem::path& path);

    // The checks behind execute, exposed for the front ends' and the tests' sake: each
    // gives the localised reason for refusing, or nothing.
    std::optional<std::string> runningBundle(const CleanTarget& target) const;
    std::optional<std::string> protectedAppReason(const CleanTarget& target) const;
    std::optional<std::string> unsafeToDeleteReason(const std::filesystem::path& path) const;
};

}  // namespace kelvo
