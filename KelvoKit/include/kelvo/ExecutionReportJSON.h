#pragma once
// The machine-readable rendering of a clean run's report, for scripts: in the library's one
// JSON layout (keys sorted, " : ", two-space indentation, "/" escaped), with the members
// "dryRun", "freedBytes", "deleted", "partial", "freedUnknown" (arrays of target ids),
// "skipped" (objects with "id" and "reason") and "errors" (objects with "id" and "message").
// Every member is always present, so an empty run is a complete document too.
#include <string>

#include "kelvo/ExecutionReport.h"

namespace kelvo::ExecutionReportJSON {

std::string encoded(const ExecutionReport& report, bool dryRun);

}  // namespace kelvo::ExecutionReportJSON
