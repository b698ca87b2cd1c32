#pragma once
// The result of one clean run. Why a target was skipped or failed is a Reason, made into
// text by whoever shows the report.
// An id is at most once in deleted, partial and freedUnknown; never in both deleted and
// partial; in freedUnknown and trashed only together with deleted; possibly several times
// in skipped.
#include <cstdint>
#include <iterator>
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
    std::vector<std::string> trashed;       // done, moved whole into the trash rather than removed
    std::vector<ReportEntry> skipped;       // left untouched, with why
    std::vector<ReportEntry> errors;        // failed, with why

    // Adds another run's report to this one, as if both had been one run.
    void append(ExecutionReport part) {
        freedBytes += part.freedBytes;
        trashedBytes += part.trashedBytes;
        const auto add = [](auto& into, auto& from) {
            into.insert(into.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
        };
        add(deleted, part.deleted);
        add(partial, part.partial);
        add(freedUnknown, part.freedUnknown);
        add(trashed, part.trashed);
        add(skipped, part.skipped);
        add(errors, part.errors);
    }
};

}  // namespace kelvo
