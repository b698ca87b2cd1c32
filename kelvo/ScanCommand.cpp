// kelvo scan and kelvo clean: the clean domain of the current user.
#include <fmt/format.h>

#include "CleanFlow.h"
#include "Commands.h"
#include "PlanOutput.h"
#include "kelvo/CleanService.h"
#include "kelvo/CleanerRegistry.h"
#include "kelvo/L10n.h"
#include "kelvo/PlanSelection.h"
#include "kelvo/Reporter.h"
#include "kelvo/ScanNotice.h"
#include "kelvo/ScanPlanJSON.h"

namespace kelvo::tool {
namespace {

ScanResult scanWithProgress(const CleanService& service, bool quiet = false) {
    if (quiet) return service.scan().value_or(ScanResult{});
    ProgressLine progress;
    return service.scan(progress.options()).value_or(ScanResult{});
}

}  // namespace

Command addScanCommand(CLI::App& app, ScanCommandOptions& options, const GlobalOptions& global) {
    auto* command = app.add_subcommand("scan", "Show what can be cleaned, with the preselection");
    command->add_option("--family", options.familyNames, "Scan only this family (repeatable)")->type_name("FAMILY");
    command->add_flag("--json", options.json, "Print the scan plan as JSON");
    command->add_flag("--paths", options.paths, "List under each target the paths it removes, with their sizes");
    command->add_flag("--quiet,-q", options.quiet, "No progress line");
    command->add_option("--notify-above", options.notifyAbove,
                        "After the scan, send a desktop notification when the preselection frees at least SIZE "
                        "(500M, 5G, 5GB; bytes without a unit)")
        ->type_name("SIZE");
    return {command, [&options, &global] {
                std::optional<std::int64_t> threshold;
                if (!options.notifyAbove.empty() && !(threshold = parseNotifyAbove(options.notifyAbove)))
                    return usageErrorStatus;
                const auto env = global.liveEnvironment();
                const auto families = parseFamilies(options.familyNames, CleanerRegistry::familiesWithDetectors(env));
                if (!families) return usageErrorStatus;
                const auto service = CleanService{.env = env}.narrowedTo(*families);
                const auto scanned = scanWithProgress(service, options.json || options.quiet);
                const auto targets = Reporter::largestFirst(scanned.targets);
                if (options.json) {
                    ScanPlanJSON plan(targets);
                    plan.notes = scanned.notes;
                    fmt::print("{}\n", plan.encoded());
                } else {
                    printPlan(PlanSelection(targets), global.profile(), options.paths);
                    for (const auto& note : scanned.notes) fmt::print("{}\n", note);
                }
                if (threshold) {
                    std::fflush(stdout);
                    ScanNotice notice;
                    notice.thresholdBytes = *threshold;
                    const auto outcome = notice.after(targets);
                    if (outcome == ScanNotice::Outcome::noService)
                        fmt::print(stderr, "{}\n", L10n::t("cli.scan.notice.noService"));
                    else if (outcome == ScanNotice::Outcome::panelFailed)
                        fmt::print(stderr, "{}\n", L10n::t("cli.scan.notice.panelFailed"));
                }
                return 0;
            }};
}

Command addCleanCommand(CLI::App& app, CleanRequest& request, const GlobalOptions& global) {
    auto* command = app.add_subcommand("clean", "Remove the preselected or named targets");
    addCleanOptions(*command, request);
    return {command, [&request, &global] {
                const auto env = global.liveEnvironment();
                const auto families = parseFamilies(request.familyNames, CleanerRegistry::familiesWithDetectors(env));
                if (!families) return usageErrorStatus;
                const auto service = CleanService{.env = env}.narrowedTo(*families, request.ids);
                if (printRefusal(service.env)) return usageErrorStatus;
                return runClean(scanWithProgress(service, request.json || request.quiet).targets, request, *families,
                                global.profile(),
                                [&](const auto& chosen, bool dryRun, bool force) {
                                    return service.clean(chosen, dryRun, force, request.trash);
                                });
            }};
}

}  // namespace kelvo::tool
