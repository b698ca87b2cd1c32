// kelvo scan and kelvo clean: the clean domain of the current user.
#include <fmt/format.h>

#include "CleanFlow.h"
#include "Commands.h"
#include "PlanOutput.h"
#include "kelvo/CleanService.h"
#include "kelvo/L10n.h"
#include "kelvo/PlanSelection.h"
#include "kelvo/Reporter.h"
#include "kelvo/ScanPlanJSON.h"

namespace kelvo::tool {
namespace {

// The live service; families named on the command line replace the configured choice.
CleanService liveService(const std::set<Family>& families) {
    Environment env = liveEnvironment();
    if (!families.empty()) env.enabledFamilies = families;
    return CleanService{.env = env};
}

std::vector<CleanTarget> scanWithProgress(const CleanService& service) {
    ProgressLine progress;
    return service.scan({.progress = progress.callback()}).value_or(std::vector<CleanTarget>{});
}

}  // namespace

void registerScanCommand(CLI::App& app) {
    auto* command = app.add_subcommand("scan", "Show what can be cleaned, with the preselection");
    static std::vector<std::string> familyNames;
    static bool json = false;
    command->add_option("--family", familyNames, "Scan only this family (repeatable)");
    command->add_flag("--json", json, "Print the scan plan as JSON");
    command->callback([] {
        const auto families = parseFamilies(familyNames);
        if (!families) return setExitStatus(usageErrorStatus);
        const auto service = liveService(*families);
        const auto targets = Reporter::largestFirst(json ? service.scan().value_or(std::vector<CleanTarget>{})
                                                         : scanWithProgress(service));
        const auto notes = service.catalogNotes();
        if (json) {
            ScanPlanJSON plan(targets);
            plan.notes = notes;
            fmt::print("{}\n", plan.encoded());
        } else {
            printPlan(PlanSelection(targets));
            for (const auto& note : notes) fmt::print("{}\n", note);
        }
        setExitStatus(0);
    });
}

void registerCleanCommand(CLI::App& app) {
    auto* command = app.add_subcommand("clean", "Remove the preselected or named targets");
    static CleanRequest request;
    addCleanOptions(*command, request);
    command->callback([] {
        const auto families = parseFamilies(request.familyNames);
        if (!families) return setExitStatus(usageErrorStatus);
        // Ids may name targets of any family, so only a family-only request narrows the scan.
        const auto service = liveService(request.ids.empty() ? *families : std::set<Family>{});
        if (printRefusal(service.env)) return setExitStatus(usageErrorStatus);
        const auto targets = scanWithProgress(service);
        setExitStatus(runClean(targets, request, *families, [&](const auto& chosen, bool dryRun, bool force) {
            return service.clean(chosen, dryRun, force);
        }));
    });
}

}  // namespace kelvo::tool
