#include "kelvo/PlanSelection.h"

namespace kelvo {

PlanSelection::PlanSelection(std::vector<CleanTarget> targetList) : targets(std::move(targetList)) {
    for (const auto& target : targets)
        if (isPreselected(target)) selectedIDs.insert(target.id);
}

bool PlanSelection::isPreselected(const CleanTarget& target) {
    if (target.reversibility != Reversibility::regenerable) return false;
    if (target.level == Level::aggressive || target.blockedByLink) return false;
    return !target.sizeUnknown();
}

void PlanSelection::toggle(long index) {
    if (index < 0 || static_cast<std::size_t>(index) >= targets.size()) return;
    const auto& id = targets[static_cast<std::size_t>(index)].id;
    if (!selectedIDs.erase(id)) selectedIDs.insert(id);
}

std::vector<CleanTarget> PlanSelection::selectedTargets() const {
    std::vector<CleanTarget> chosen;
    for (const auto& target : targets)
        if (selectedIDs.contains(target.id)) chosen.push_back(target);
    return chosen;
}

std::vector<std::string> PlanSelection::unknownIDs(const std::vector<std::string>& ids) const {
    std::set<std::string> known;
    for (const auto& target : targets) known.insert(target.id);
    std::vector<std::string> unknown;
    for (const auto& id : ids)
        if (!known.contains(id)) unknown.push_back(id);
    return unknown;
}

void PlanSelection::choose(const std::vector<std::string>& ids, const std::set<Family>& families) {
    selectedIDs = std::set<std::string>(ids.begin(), ids.end());
    for (const auto& target : targets)
        if (families.contains(target.family)) selectedIDs.insert(target.id);
}

}  // namespace kelvo
