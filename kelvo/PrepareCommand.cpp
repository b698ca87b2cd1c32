// kelvo prepare and kelvo prepare clean: leftovers of removed applications, applications
// unused for six months and old simulator runtimes.
#include <fmt/format.h>

#include "CleanFlow.h"
#include "Commands.h"
#include "PlanOutput.h"
#include "kelvo/PlanSelection.h"
#include "kelvo/PrepareService.h"
#include "kelvo/PrepareSummary.h"
#include "kelvo/Reporter.h"
#include "kelvo/ScanPlanJSON.h"

namespace kelvo::tool {
namespace {

constexpr int unusedForMonths = 6;

// Everything else left out is the live one.
PrepareService liveService() { return PrepareService{.env = liveEnvironment(), .olderThanMonths = unusedForMonths}; }

std::vector<CleanTarget> scanWithProgress(const PrepareService& service) {
    ProgressLine progress;
    return Reporter::largestFirst(service.scan({.progress = progress.callback()}).value_or(std::vector<CleanTarget>{}));
}

}  // namespace

void registerPrepareCommand(CLI::App& app) {
    auto* command = app.add_subcommand("prepare", "Show leftovers of removed apps, unused apps and old simulator runtimes");
    static bool json = false;
    command->add_flag("--json", json, "Print the scan plan as JSON");
    auto* clean = command->add_subcommand("clean", "Remove the preselected or named prepare targets");
    static CleanRequest request;
    addCleanOptions(*clean, request);

    command->callback([clean] {
        if (clean->parsed()) return;
        const auto service = liveService();
        if (json) {
            const auto targets = Reporter::largestFirst(service.scan().value_or(std::vector<CleanTarget>{}));
            fmt::print("{}\n", ScanPlanJSON(targets).encoded());
        } else {
            const auto targets = scanWithProgress(service);
            printPlan(PlanSelection(targets));
            fmt::print("{}\n", PrepareSummary::line(targets));
        }
        setExitStatus(0);
    });
    clean->callback([] {
        const auto families = parseFamilies(request.familyNames);
        if (!families) return setExitStatus(usageErrorStatus);
        const auto service = liveService();
        if (printRefusal(service.env)) return setExitStatus(usageErrorStatus);
        const auto targets = scanWithProgress(service);
        setExitStatus(runClean(targets, request, *families, [&](const auto& chosen, bool dryRun, bool force) {
            return service.clean(chosen, dryRun, force);
        }));
    });
}

}  // namespace kelvo::tool
