#pragma once
// The part of `kelvo clean` and `kelvo prepare clean` that is the same: choose the targets
// (preselection, --id, --family), show them, ask on a terminal, clean, report.
#include <CLI/CLI.hpp>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "kelvo/CatalogProfile.h"
#include "kelvo/CleanTarget.h"
#include "kelvo/Environment.h"
#include "kelvo/ExecutionReport.h"

namespace kelvo::tool {

// The exit status of a usage error, and of a clean the library refuses before it starts.
inline constexpr int usageErrorStatus = 2;

struct CleanRequest {
    std::vector<std::string> ids;
    std::vector<std::string> familyNames;
    bool dryRun = false;
    bool yes = false;
    bool force = false;
    // The report as JSON on standard output, and nothing else there; asks nothing, so a
    // clean needs --yes (a dry run does not).
    bool json = false;
    // No progress line, no list of targets before a clean that asks nothing, and the
    // report only when a target was skipped or failed.
    bool quiet = false;
};

// Adds --id, --family, --dry-run, --yes, --force, --json and --quiet to a command.
void addCleanOptions(CLI::App& command, CleanRequest& request);

// When no clean may run in this environment (SafetyGuard::refusalFor), prints why on
// standard error and returns true.
bool printRefusal(const Environment& env);

using CleanFunction = std::function<ExecutionReport(const std::vector<CleanTarget>&, bool dryRun, bool force)>;

// Returns the exit status: 0 nothing failed, 1 a target failed or was skipped, 2 usage.
// Families are named under the profile's catalog.
int runClean(const std::vector<CleanTarget>& scanned, const CleanRequest& request, const std::set<Family>& families,
             CatalogProfile profile, const CleanFunction& clean);

}  // namespace kelvo::tool
