#pragma once
// The result of one clean run. Why a target was skipped or failed is a Reason, made into
// text by whoever shows the report.
// An id is at most once in deleted, partial and freedUnknown; never in both deleted and
// partial; in freedUnknown only together with deleted; possibly several times in skipped.
#include <cstdint>
#include <string>
#include <vector>

#include "kelvo/Reason.h"

namespace kelvo {

struct ReportEntry {
    std::string id;
    Reason reason;
    friend bool operator==(const ReportEntry&, const ReportEntry&) = default;
};

struct ExecutionReport {
    std::int64_t freedBytes = 0;
    // Moved into the desktop trash (a run with a trash): these stay on disk until it is emptied.
    std::int64_t trashedBytes = 0;
    std::vector<std::string> deleted;       // done completely
    std::vector<std::string> partial;       // path targets of which some but not all went
    std::vector<std::string> freedUnknown;  // done, freed size unknown (successful commands)
    std::vector<ReportEntry> skipped;       // left untouched, with why
    std::vector<ReportEntry> errors;        // failed, with why
};

}  // namespace kelvo
