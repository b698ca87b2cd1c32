#include "kelvo/Reporter.h"

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

}  // namespace kelvo
