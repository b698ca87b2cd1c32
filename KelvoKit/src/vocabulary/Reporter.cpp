#include "kelvo/Reporter.h"

#include <algorithm>

namespace kelvo {

ScanSummary Reporter::summarize(const std::vector<CleanTarget>& targets) {
    ScanSummary summary;
    for (const auto& target : targets) {
        summary.totalBytes += target.sizeBytes;
        summary.byFamily[target.family] += target.sizeBytes;
        summary.byLevel[target.level] += target.sizeBytes;
    }
    summary.targets = targets;
    return summary;
}

std::vector<CleanTarget> Reporter::largestFirst(std::vector<CleanTarget> targets) {
    std::stable_sort(targets.begin(), targets.end(),
                     [](const CleanTarget& a, const CleanTarget& b) { return a.sizeBytes > b.sizeBytes; });
    return targets;
}

std::vector<std::pair<Family, std::vector<CleanTarget>>> Reporter::byFamily(const std::vector<CleanTarget>& targets) {
    std::vector<std::pair<Family, std::vector<CleanTarget>>> groups;
    const auto sorted = largestFirst(targets);
    for (Family family : allFamilies()) {
        std::vector<CleanTarget> members;
        for (const auto& target : sorted)
            if (target.family == family) members.push_back(target);
        if (!members.empty()) groups.emplace_back(family, std::move(members));
    }
    return groups;
}

}  // namespace kelvo
