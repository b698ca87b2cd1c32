#include "kelvo/ProcessProbe.h"

namespace kelvo {

StubProcessProbe::StubProcessProbe(const std::vector<std::string>& running, std::vector<std::string> runningPathFragments)
    : running(running.begin(), running.end()), runningPathFragments(std::move(runningPathFragments)) {}

bool StubProcessProbe::isRunning(const std::string& name) const { return running.contains(name); }

bool StubProcessProbe::isRunningUnder(const std::string& pathFragment) const {
    if (pathFragment.empty()) return false;
    for (const auto& fragment : runningPathFragments)
        if (fragment.find(pathFragment) != std::string::npos || pathFragment.find(fragment) != std::string::npos)
            return true;
    return false;
}

}  // namespace kelvo
