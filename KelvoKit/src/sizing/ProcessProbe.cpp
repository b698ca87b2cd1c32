#include "kelvo/ProcessProbe.h"

#include "kelvo/platform/Process.h"
#include "kelvo/platform/ProcessTable.h"

namespace kelvo {
namespace {

std::optional<std::vector<platform::RunningProcess>> processTable() {
    auto processes = platform::listRunningProcesses();
    // An empty table cannot be right (we run ourselves): treat it like a missing one.
    if (!processes || processes->empty()) return std::nullopt;
    return processes;
}

bool pgrepFinds(const std::string& option, const std::string& pattern) {
    const auto outcome = platform::runProgram("/usr/bin/pgrep", {option, pattern}, false);
    return outcome && outcome->exitStatus == 0;
}

// A program that rewrites its title to its name and arguments ("npm install") is named by
// the title's first word.
bool titleBegins(const std::string& title, const std::string& name) {
    return title.size() > name.size() && title.starts_with(name) && title[name.size()] == ' ';
}

}  // namespace

bool LiveProcessProbe::isRunning(const std::string& name) const {
    if (name.empty()) return false;
    const auto processes = processTable();
    if (!processes) return pgrepFinds("-x", name);
    for (const auto& process : *processes)
        if (process.shortName == name || process.programName == name || titleBegins(process.shortName, name) ||
            titleBegins(process.programName, name))
            return true;
    return false;
}

bool LiveProcessProbe::isRunningUnder(const std::string& pathFragment) const {
    if (pathFragment.empty()) return false;
    const auto processes = processTable();
    if (!processes) return pgrepFinds("-f", pathFragment);
    for (const auto& process : *processes)
        if (process.commandLine.find(pathFragment) != std::string::npos) return true;
    return false;
}

bool ProcessProbe::isRunningFrom(const std::string& folder) const {
    return !folder.empty() && isRunningUnder(folder + "/");
}

bool LiveProcessProbe::isRunningFrom(const std::string& folder) const {
    if (folder.empty()) return false;
    const auto processes = processTable();
    if (!processes) return pgrepFinds("-f", folder + "/");
    const std::string inside = folder + "/";
    for (const auto& process : *processes)
        if (process.executable.starts_with(inside) || process.commandLine.find(inside) != std::string::npos)
            return true;
    return false;
}

std::shared_ptr<const ProcessProbe> liveProcessProbe() {
    static const auto live = std::make_shared<const LiveProcessProbe>();
    return live;
}

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
