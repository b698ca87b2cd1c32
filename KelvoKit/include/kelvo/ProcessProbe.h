#pragma once
// Whether a program is running: by its exact name, or by a fragment of its command line.
// The live probe reads the process table (uncut names, so "com.docker.backend" is found
// although the kernel keeps only 15 characters), falling back to /usr/bin/pgrep where no
// table can be read. The stub answers from fixed lists, for tests.
#include <set>
#include <string>
#include <vector>

namespace kelvo {

class ProcessProbe {
public:
    virtual ~ProcessProbe() = default;
    virtual bool isRunning(const std::string& name) const = 0;
    // False for an empty fragment.
    virtual bool isRunningUnder(const std::string& pathFragment) const = 0;
};

class LiveProcessProbe final : public ProcessProbe {
public:
    bool isRunning(const std::string& name) const override;
    bool isRunningUnder(const std::string& pathFragment) const override;
};

class StubProcessProbe final : public ProcessProbe {
public:
    StubProcessProbe(const std::vector<std::string>& running = {}, std::vector<std::string> runningPathFragments = {});
    bool isRunning(const std::string& name) const override;
    // True when the fragment and one of the stored fragments contain one another.
    bool isRunningUnder(const std::string& pathFragment) const override;

    std::set<std::string> running;
    std::vector<std::string> runningPathFragments;
};

}  // namespace kelvo
