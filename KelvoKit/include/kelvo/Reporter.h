#pragma once
// Totals of one scan. Families and levels without any target have no entry; one that
// occurs only with size 0 has an entry of 0.
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "kelvo/CleanTarget.h"

namespace kelvo {

struct ScanSummary {
    std::int64_t totalBytes = 0;
    std::map<Family, std::int64_t> byFamily;
    std::map<Level, std::int64_t> byLevel;
    std::vector<CleanTarget> targets;  // the input, unchanged
};

namespace Reporter {
ScanSummary summarize(const std::vector<CleanTarget>& targets);
// The targets largest first; equal sizes keep their order.
std::vector<CleanTarget> largestFirst(std::vector<CleanTarget> targets);
// The targets of each family that has any: families in declaration order, each group
// largest first.
std::vector<std::pair<Family, std::vector<CleanTarget>>> byFamily(const std::vector<CleanTarget>& targets);
}

}  // namespace kelvo
