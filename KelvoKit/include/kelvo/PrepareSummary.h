#pragma once
// One localised sentence about a list of prepare targets: the space they free, how many
// leftovers, applications and runtimes they are, how many commands of unknown size, that
// removal is permanent, and how many applications are uninstalled.
#include <string>
#include <vector>

#include "kelvo/CleanTarget.h"

namespace kelvo::PrepareSummary {

std::string line(const std::vector<CleanTarget>& targets);

}  // namespace kelvo::PrepareSummary
