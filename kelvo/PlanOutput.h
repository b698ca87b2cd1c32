#pragma once
// Text renderings shared by the scan, clean and prepare commands.
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "kelvo/CatalogProfile.h"
#include "kelvo/CleanTarget.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/PlanSelection.h"
#include "kelvo/Scanner.h"

namespace kelvo::tool {

// Targets grouped by family (families in declaration order, targets largest first), each
// with size, level, regeneration cost and a mark when chosen; then totals by family and
// level and the chosen total. Families are named under the profile's catalog. With paths,
// under each target the paths it removes, each with its size, or the command it runs.
void printPlan(const PlanSelection& plan, CatalogProfile profile, bool withPaths = false);
// Only the chosen targets, as a list of what a clean will remove; a dry run says what it
// would remove, and lists the paths.
void printChosen(const PlanSelection& plan, CatalogProfile profile, bool dryRun = false);
// A dry run says what it would have freed and removed, never what it freed.
void printReport(const ExecutionReport& report, bool dryRun);

// A progress line on standard error while a scan runs, only when it is a terminal.
// Gives the scan options that draw it, and clears the line when destroyed.
class ProgressLine {
public:
    ProgressLine();
    ~ProgressLine();
    ScanOptions options() const;

private:
    bool enabled_;
};

// Parses --family names among the families the catalog offers; on any other name prints
// the names accepted for those families and returns nothing.
std::optional<std::set<Family>> parseFamilies(const std::vector<std::string>& names, const std::vector<Family>& offered);

}  // namespace kelvo::tool
