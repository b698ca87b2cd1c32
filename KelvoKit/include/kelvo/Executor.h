#pragma once
// Carries out a clean run. For each target, in the given order: the guarded processes of
// its family, then its own (left out with force), a running application bundle among its paths, a
// protected application (prepare families only), then for a command the places it names,
// then the command; for paths the guard, link and owner checks of every path before any of
// them is removed, then removal.
// Every target ends deleted, partial, skipped with a reason or failed with a message; the
// run never stops on a bad target, and what went before a failure stays gone.
//
// Removal never follows a symbolic link, not even one swapped in while it runs: it works
// on directory descriptors (platform TreeRemoval). A path that belongs to another user, or
// whose owner cannot be read, is never removed. A command runs with `shellVariables` set
// over Kelvo's own environment, and only when every place it names (safety/ShellCommand.h),
// expanded with those variables, passes the checks a path target's paths pass; a line that
// cannot be read that far is refused. A dry run removes nothing, runs no command and counts
// every target that passes the checks with its estimated size.
//
// Targets are checked on the calling thread in order; each removal then starts on the
// worker pool while the next targets are checked, and its subtrees are spread over the
// pool too. A target whose paths overlap a removal still running, and every command,
// first waits for the removals before it, so the report (kept in target order) is the
// one handling the targets one after another would give.
//
// Given a home trash, path targets are moved into the desktop trash instead of removed
// (platform Trash), after the same checks: each path goes whole or stays, one that would have
// to be copied to another file system stays with the reason, and the bytes moved count as
// trashed, not freed. Commands run as usual: what a tool removes has no way back.
//
// The executor is an immutable value holding its dependencies, so tests inject a stub
// probe and command runner (left out, the live ones); it keeps no state between runs.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/Dependency.h"
#include "kelvo/Environment.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/ProcessProbe.h"
#include "kelvo/SafetyGuard.h"

namespace kelvo {

// Runs a command line with the variables set over the process's own environment and gives
// its exit status (127: the tool is missing; -1: could not start). The live one is Executor::shell.
using CommandFunction = std::function<int(const std::string& commandLine, const ShellVariables& variables)>;
CommandFunction liveCommandRunner();
using CommandRunner = Dependency<CommandFunction, &liveCommandRunner>;

struct RemovalOutcome {
    std::int64_t freed = 0;     // allocated bytes measured before minus after, never negative
    bool fullyRemoved = false;  // nothing exists at the path any longer
};

class WorkerPool;

struct Executor {
    SafetyGuard safety;
    bool dryRun = false;
    bool force = false;
    ProbeDependency probe;
    CommandRunner runCommand;
    ShellVariables shellVariables;  // HOME and TMPDIR of the run (Environment::shellVariables)
    WorkerPool* pool = nullptr;     // nothing: a run that removes anything makes its own
    // Set: path targets go into the desktop trash; this is the home trash ($XDG_DATA_HOME/Trash).
    std::optional<std::filesystem::path> homeTrash;

    [[nodiscard]] ExecutionReport execute(const std::vector<CleanTarget>& targets) const;
    // Every target skipped with the same reason, nothing looked at: a run that must not start.
    [[nodiscard]] static ExecutionReport refusingAll(const std::vector<CleanTarget>& targets, const Reason& reason);

    // Runs the line through /bin/sh -c with this process's streams and environment, the
    // variables set over it, and waits for it; -1 when it cannot start.
    static int shell(const std::string& commandLine, const ShellVariables& variables);
    // Removes what it can of a file, link or tree, adding the owner's permission bits where
    // they block and going on past what cannot be removed. With a pool, the measuring and
    // the removal are spread over it; without, both run on the calling thread.
    [[nodiscard]] static RemovalOutcome removeResiliently(const std::filesystem::path& path, WorkerPool* pool = nullptr);
    // Removes a file, link (as a link) or whole tree; when a permission error blocks, adds
    // the owner's bits to the directories involved and tries once more. Nothing when the
    // item is gone, else the first error met (ENOENT when nothing was there).
    [[nodiscard]] static std::error_code removeItemMakingWritable(const std::filesystem::path& path, WorkerPool* pool = nullptr);

    // The checks behind execute; each gives the reason for refusing, or nothing.
    // The path of a running ".app" bundle among the target's paths (none for commands).
    [[nodiscard]] std::optional<std::string> runningBundle(const CleanTarget& target) const;
    // Why a target of appLeftovers or unusedApps touches a protected application.
    [[nodiscard]] std::optional<Reason> protectedAppReason(const CleanTarget& target) const;
    // The path is itself a link, its parent chain holds a link, the resolved path is refused
    // by the guard, or the item belongs to another user (safety/RemovalChecks.h).
    [[nodiscard]] std::optional<Reason> unsafeToDeleteReason(const std::filesystem::path& path) const;
    // The guard's decision, then unsafeToDeleteReason: what every path of a target passes.
    [[nodiscard]] std::optional<Reason> pathRefusal(const std::filesystem::path& path) const;
    // A place the command names is refused, or the line cannot be read (safety/ShellCommand.h).
    [[nodiscard]] std::optional<Reason> commandRefusal(const std::string& commandLine) const;
};

}  // namespace kelvo
