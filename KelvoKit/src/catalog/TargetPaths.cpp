#include "kelvo/TargetPaths.h"

namespace kelvo::TargetPaths {

std::vector<MeasuredPath> measured(const CleanTarget& target, const DirectorySizer& sizer) {
    std::vector<MeasuredPath> sizes;
    if (target.kind.isCommand()) return sizes;
    for (const auto& path : target.kind.pathList()) sizes.push_back({path, sizer.measure(path)});
    return sizes;
}

Preview preview(const CleanTarget& target, std::size_t limit) {
    if (target.kind.isCommand()) return {{target.kind.commandLine()}, 0};
    const auto& paths = target.kind.pathList();
    const std::size_t shown = paths.size() <= limit + 1 ? paths.size() : limit;
    Preview result;
    for (std::size_t index = 0; index < shown; ++index) result.lines.push_back(paths[index].string());
    result.more = paths.size() - shown;
    return result;
}

}  // namespace kelvo::TargetPaths
