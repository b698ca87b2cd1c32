#pragma once
// The machine-readable rendering of a scan plan: totals by family and level, and every
// target with its risk axes and whether it is chosen. Written in the library's one JSON
// layout (keys sorted, " : ", two-space indentation, "/" escaped), so two encodings of one
// plan are byte-identical. Each target also says what a clean would do to it: "paths",
// the absolute paths it removes (a path target), or "command", the command line it runs
// (a command target); never both.
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/Reporter.h"

namespace kelvo {

struct ScanPlanJSON {
    struct Target {
        std::string id;
        std::string name;
        std::string family;
        std::int64_t sizeBytes = 0;
        std::string level;
        std::string reversibility;
        std::string regenCost;
        bool preselected = false;
        std::string notes;
        std::optional<std::vector<std::string>> paths;  // path targets
        std::optional<std::string> command;             // command targets
    };

    std::int64_t totalBytes = 0;
    std::map<std::string, std::int64_t> byFamily;
    std::map<std::string, std::int64_t> byLevel;
    std::vector<Target> targets;
    // Remarks on the scan as a whole (places the catalog or the scan left out, and why); the document
    // has a "notes" array only when there is one.
    std::vector<std::string> notes;

    // Totals from the summary as given; the targets argument alone decides the array.
    ScanPlanJSON(const std::vector<CleanTarget>& targets, const ScanSummary& summary,
                 const std::set<std::string>& selectedIDs);
    // With the summary of the targets and the default preselection.
    explicit ScanPlanJSON(const std::vector<CleanTarget>& targets);

    std::string encoded() const;
};

}  // namespace kelvo
