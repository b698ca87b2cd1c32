// kelvo prepare and kelvo prepare clean: leftovers of removed applications, applications
// long unused and old simulator runtimes.
#include <fmt/format.h>

#include <optional>

#include "CleanFlow.h"
#include "Commands.h"
#include "PlanOutput.h"
#include "kelvo/PlanSelection.h"
#include "kelvo/PrepareRegistry.h"
#include "kelvo/PrepareService.h"
#include "kelvo/PrepareSummary.h"
#include "kelvo/Reporter.h"
#include "kelvo/ScanPlanJSON.h"

namespace kelvo::tool {
namespace {

ScanResult scanWithProgress(const PrepareService& service, bool quiet) {
    // The line is cleared when the scan is over, so it lives as long as the scan.
    std::optional<ProgressLine> progress;
    auto scanned = service.scan(quiet ? ScanOptions() : progress.emplace().options()).value_or(ScanResult{});
    scanned.targets = Reporter::largestFirst(std::move(scanned.targets));
    return scanned;
}

}  // namespace

std::vector<Command> addPrepareCommands(CLI::App& app, PrepareCommandOptions& options, CleanRequest& request,
                                        const GlobalOptions& global) {
    // Described for the running system: Linux keeps no record of use and has no simulator runtimes.
    auto* command = app.add_subcommand("prepare", runningSystemProfile() == CatalogProfile::gnuLinux
                                                      ? "Show the data left behind by removed Flatpak and Snap applications, and old runtimes of the version managers"
                                                      : "Show leftovers of removed apps, unused apps and old simulator runtimes");
    command->add_flag("--json", options.json, "Print the scan plan as JSON");
    command->add_flag("--quiet,-q", options.quiet, "No progress line");
    auto* clean = command->add_subcommand("clean", "Remove the preselected or named prepare targets");
    addCleanOptions(*clean, request);

    // Everything left out of the service is the live one.
    const Command show{command, [&options, &global] {
                           const PrepareService service{.env = global.liveEnvironment()};
                           const auto notes = std::make_shared<ScanNotes>();
                           if (options.json) {
                               const auto scanned = scanWithProgress(service, true);
                               ScanPlanJSON plan(scanned.targets);
                               plan.notes = scanned.notes;
                               fmt::print("{}\n", plan.encoded());
                           } else {
                               const auto scanned = scanWithProgress(service, options.quiet);
                               printPlan(PlanSelection(scanned.targets), global.profile());
                               fmt::print("{}\n", PrepareSummary::line(scanned.targets));
                               for (const auto& note : scanned.notes) fmt::print("{}\n", note);
                           }
                           return 0;
                       }};
    const Command remove{clean, [&request, &global] {
                             const auto families =
                                 parseFamilies(request.familyNames, PrepareRegistry::families(global.profile()));
                             if (!families) return usageErrorStatus;
                             const PrepareService service{.env = global.liveEnvironment()};
                             if (printRefusal(service.env)) return usageErrorStatus;
                             return runClean(scanWithProgress(service, request.json || request.quiet).targets, request,
                                             *families, global.profile(),
                                             [&](const auto& chosen, bool dryRun, bool force) {
                                                 return service.clean(chosen, dryRun, force);
                                             });
                         }};
    return {remove, show};
}

}  // namespace kelvo::tool
