#pragma once
// Whether a program is running: by its exact name, or by a fragment of its command line.
// The live probe reads the process table afresh at every question: a name matches the
// kernel's name or the uncut last component of the first command-line word, so
// "com.docker.backend" is found although Linux keeps only 15 characters of it, and the
// first word of a title a program gave itself, so npm is found while it shows itself as
// "npm install"; where no
// table can be read it asks /usr/bin/pgrep (-x name, -f fragment; exit 0 = running, a tool
// that cannot start = not running). The stub answers from fixed lists, for tests. Both
// are immutable and safe to share between threads.
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "kelvo/Dependency.h"

namespace kelvo {

class ProcessProbe {
public:
    virtual ~ProcessProbe() = default;
    // Some process has exactly this name. False for an empty name.
    virtual bool isRunning(const std::string& name) const = 0;
    // Some process's full command line contains the fragment. False for an empty fragment.
    virtual bool isRunningUnder(const std::string& pathFragment) const = 0;
    // Some process runs a program inside the folder (its executable lies there) or names the
    // folder in its command line. The base answer is isRunningUnder(folder + "/").
    virtual bool isRunningFrom(const std::string& folder) const;
};

class LiveProcessProbe final : public ProcessProbe {
public:
    bool isRunning(const std::string& name) const override;
    bool isRunningUnder(const std::string& pathFragment) const override;
    bool isRunningFrom(const std::string& folder) const override;
};

// One live probe, shared (it holds no state).
std::shared_ptr<const ProcessProbe> liveProcessProbe();
using ProbeDependency = Dependency<std::shared_ptr<const ProcessProbe>, &liveProcessProbe>;

class StubProcessProbe final : public ProcessProbe {
public:
    StubProcessProbe(const std::vector<std::string>& running = {},
                              std::vector<std::string> runningPathFragments = {});
    // Membership in `running`.
    bool isRunning(const std::string& name) const override;
    // True when the fragment and one of the stored fragments contain one another.
    bool isRunningUnder(const std::string& pathFragment) const override;

    std::set<std::string> running;
    std::vector<std::string> runningPathFragments;
};

}  // namespace kelvo
