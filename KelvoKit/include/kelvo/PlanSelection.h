#pragma once
// The targets of one scan and the ids the user has chosen. The preselection chooses what
// is safe to remove without looking: regenerable, not aggressive, not a command whose
// effect cannot be estimated, and not a target the executor will refuse for a link.
// Targets sharing an id share one choice.
#include <set>
#include <string>
#include <vector>

#include "kelvo/CleanTarget.h"

namespace kelvo {

struct PlanSelection {
    std::vector<CleanTarget> targets;
    std::set<std::string> selectedIDs;

    // Stores the targets and preselects them.
    explicit PlanSelection(std::vector<CleanTarget> targets);

    static bool isPreselected(const CleanTarget& target);
    // Flips the choice of the target at a position; out of range does nothing.
    void toggle(long index);
    // The chosen targets, in the order of targets.
    std::vector<CleanTarget> selectedTargets() const;

    // The given ids that name no target, in the order given (a front end reports them).
    std::vector<std::string> unknownIDs(const std::vector<std::string>& ids) const;
    // Replaces the choice: exactly the given ids, plus every target of the given families.
    void choose(const std::vector<std::string>& ids, const std::set<Family>& families);
};

}  // namespace kelvo
