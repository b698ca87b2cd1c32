#pragma once
// The clean both domains carry out, written once: every target skipped with
// SafetyGuard::refusalFor's reason when the environment anchors no removal, else an
// executor behind the domain's own guard, running commands with the environment's HOME and
// TMPDIR and, when asked, moving path targets into the home's trash instead.
#include <optional>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/Executor.h"
#include "kelvo/SafetyGuard.h"

namespace kelvo {

template <class Service>
ExecutionReport cleanThrough(const Service& service, const std::vector<CleanTarget>& targets, bool dryRun, bool force,
                             bool toTrash) {
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
