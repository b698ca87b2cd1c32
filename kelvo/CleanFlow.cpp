#include "CleanFlow.h"

#include <fmt/format.h>

#include <iostream>

#include "PlanOutput.h"
#include "kelvo/Console.h"
#include "kelvo/ExecutionReportJSON.h"
#include "kelvo/L10n.h"
#include "kelvo/PlanSelection.h"
#include "kelvo/Reporter.h"
#include "kelvo/SafetyGuard.h"

namespace kelvo::tool {
namespace {

bool askToProceed() {
    fmt::print("{} ", L10n::t("cli.clean.confirm"));
    std::fflush(stdout);
    std::string answer;
    if (!std::getline(std::cin, answer)) return false;
    return answer == "y" || answer == "Y" || answer == "yes" || answer == L10n::t("cli.clean.yesWord");
}

}  // namespace

void addCleanOptions(CLI::App& command, CleanRequest& request) {
    command.add_option("--id", request.ids, "Clean the target with this id (repeatable)")->type_name("ID");
    command.add_option("--family", request.familyNames, "Clean every target of this family (repeatable)")
        ->type_name("FAMILY");
    command.add_flag("--dry-run", request.dryRun, "Show what would be removed and remove nothing");
    command.add_flag("--yes,-y", request.yes, "Do not ask for confirmation");
    command.add_flag("--force", request.force, "Clean even while the family's programs are running");
    command.add_flag("--json", request.json, "Print the report of the clean as JSON (needs --yes or --dry-run)");
    command.add_flag("--trash", request.trash,
                     "Move path targets into the desktop trash instead of removing them (commands run as usual)");
    command.add_flag("--quiet,-q", request.quiet, "No progress line; the report only when a target was skipped or failed");
}

bool printRefusal(const Environment& env) {
    const auto reason = SafetyGuard::refusalFor(env);
    if (reason) fmt::print(stderr, "{}\n", reason->text());
    return reason.has_value();
}

int runClean(const std::vector<CleanTarget>& scanned, const CleanRequest& request, const std::set<Family>& families,
             CatalogProfile profile, const CleanFunction& clean) {
    PlanSelection plan(Reporter::largestFirst(scanned));
    if (const auto unknown = plan.unknownIDs(request.ids); !unknown.empty()) {
        for (const auto& id : unknown) fmt::print(stderr, "{}\n", L10n::t("cli.clean.unknownID", id));
        return usageErrorStatus;
    }
    if (!request.ids.empty() || !families.empty()) plan.choose(request.ids, families);

    const auto chosen = plan.selectedTargets();
    if (chosen.empty()) {
        if (request.json) fmt::print("{}\n", ExecutionReportJSON::encoded({}, request.dryRun));
        else if (!request.quiet) fmt::print("{}\n", L10n::t("cli.clean.nothing"));
        return 0;
    }
    const bool asks = !request.dryRun && !request.yes;
    if (request.json && asks) {
        fmt::print(stderr, "{}\n", L10n::t("cli.clean.jsonNeedsYes"));
        return usageErrorStatus;
    }
    if (!request.json && (!request.quiet || asks || request.dryRun)) printChosen(plan, profile, request.dryRun, request.trash);
    if (asks) {
        if (!Console::inputIsTerminal()) {
            fmt::print(stderr, "{}\n", L10n::t("cli.clean.needsYes"));
            return usageErrorStatus;
        }
        if (!askToProceed()) {
            fmt::print("{}\n", L10n::t("cli.clean.cancelled"));
            return 0;
        }
    }
    const auto report = clean(chosen, request.dryRun, request.force);
    const bool allWent = report.errors.empty() && report.skipped.empty();
    if (request.json) fmt::print("{}\n", ExecutionReportJSON::encoded(report, request.dryRun));
    else if (!request.quiet || !allWent) printReport(report, request.dryRun);
    return allWent ? 0 : 1;
}

}  // namespace kelvo::tool
