#pragma once
// One thing the user can remove, as found by a scan. A target is identified by its id
// alone: selections, reports and de-duplication compare ids, so no equality is defined.
#include <cstdint>
#include <string>
#include <vector>

#include "kelvo/CleanKind.h"
#include "kelvo/Family.h"
#include "kelvo/RiskAxes.h"

namespace kelvo {

struct CleanTarget {
    std::string id;
    std::string name;
    Family family = Family::devMisc;
    CleanKind kind = CleanKind::paths({});
    std::int64_t sizeBytes = 0;  // bytes that removal frees; 0 when unknown
    Reversibility reversibility = Reversibility::regenerable;
    RegenCost regenCost = RegenCost::rebuild;
    Level level = Level::safe;
    std::string notes;  // localised remark, empty when there is none
    // The executor will refuse it for a link (a path is a symbolic link or reached through
    // one): it is offered so the user sees it, with a note saying why, and never preselected.
    bool blockedByLink = false;
    // Programs besides those of its family (kelvo/Family.h guardedProcesses) that write its
    // data while they run: the executor leaves it alone while one runs, unless forced.
    std::vector<std::string> guardedProcesses;

    // A command whose tool tells nothing of the space it frees before it runs.
    bool sizeUnknown() const { return kind.isCommand() && sizeBytes == 0; }

    // The text used as notes when a size could be measured only in part (looked up each call).
    static std::string partialSizeNote();
    // What the front ends say of a size that is unknown (sizeUnknown) instead of "0 B".
    static std::string unknownSizeNote();
};

}  // namespace kelvo
