#pragma once
// Runs a piece of a test as the unprivileged user 65534, in-process code rather than a
// command line: the test forks, the child drops to uid/gid 65534 without supplementary
// groups, runs the work and sends back the string it returns. This is how a test that
// runs as root (which reads every file) sees what an ordinary user sees, e.g. a folder
// locked with chmod 000. When the test already runs unprivileged the child keeps its user.
//
// Fork from a test that has no other threads running: the child is a copy of this one
// thread only. The work must not use gtest assertions (they would be lost in the child);
// it reports through the returned text, and the parent test asserts on it.
#include <functional>
#include <optional>
#include <string>

namespace kelvo::testing {

struct UnprivilegedRun {
    std::optional<std::string> output;  // what the work returned; nothing when it did not run to the end
    std::string failure;                // why there is no output
};

// `user` is the uid (and gid) to drop to; any id, one without a password entry included.
UnprivilegedRun runAsUnprivileged(const std::function<std::string()>& work, unsigned user = 65534);

}  // namespace kelvo::testing
