#pragma once
// The shape the clean and prepare services share, so that a front end drives either the
// same way: an environment, a process probe and a command runner (left out, the live
// ones), the guard of the domain, a scan and a clean. `cleanThrough` is that clean, once
// for both: every target skipped with SafetyGuard::refusalFor's reason when the
// environment anchors no removal, else an executor behind the domain's guard, running
// commands with the environment's HOME and TMPDIR and, when asked, moving path targets
// into the home's trash instead.
#include <concepts>
#include <optional>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/Environment.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/Executor.h"
#include "kelvo/SafetyGuard.h"
#include "kelvo/Scanner.h"

namespace kelvo {

template <class Service>
concept DomainService = requires(const Service& service, const std::vector<CleanTarget>& targets) {
    { service.env } -> std::convertible_to<Environment>;
    { service.probe } -> std::convertible_to<ProbeDependency>;
    { service.runCommand } -> std::convertible_to<CommandRunner>;
    { service.guard() } -> std::same_as<SafetyGuard>;
    { service.scan() } -> std::same_as<std::optional<ScanResult>>;
    { service.clean(targets, true, false) } -> std::same_as<ExecutionReport>;
};

template <class Service>
[[nodiscard]] ExecutionReport cleanThrough(const Service& service, const std::vector<CleanTarget>& targets, bool dryRun,
                                           bool force, bool toTrash) {
    if (auto reason = SafetyGuard::refusalFor(service.env)) return Executor::refusingAll(targets, *reason);
    const Executor executor{.safety = service.guard(),
                            .dryRun = dryRun,
                            .force = force,
                            .probe = service.probe,
                            .runCommand = service.runCommand,
                            .shellVariables = service.env.shellVariables(),
                            .homeTrash = toTrash ? std::optional(service.env.dataHome() / "Trash") : std::nullopt};
    return executor.execute(targets);
}

}  // namespace kelvo
