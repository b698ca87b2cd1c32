#pragma once
// The ids of targets, in their order or as a set: what most assertions on a list of
// targets compare, so a failure prints names rather than whole structs.
#include <set>
#include <string>
#include <vector>

#include "kelvo/CleanTarget.h"

namespace kelvo::testing {

inline std::vector<std::string> idsOf(const std::vector<CleanTarget>& targets) {
    std::vector<std::string> ids;
    for (const auto& target : targets) ids.push_back(target.id);
    return ids;
}

inline std::set<std::string> idSetOf(const std::vector<CleanTarget>& targets) {
    const auto ids = idsOf(targets);
    return {ids.begin(), ids.end()};
}

}  // namespace kelvo::testing
