#pragma once
// Shared pieces of the executor tests: an executor behind the clean service's guard for a
// home and temporary folder of the test's own, target builders, a command runner that
// records what it was asked, the whole report as text for one comparison, and a run as the
// unprivileged user 65534 (root ignores permission bits) with that text passed back.
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/Executor.h"
#include "support/Unprivileged.h"

namespace kelvo::testing {

constexpr unsigned nobodyId = 65534;

// No process runs unless named; commands answer 0 unless a runner is given.
Executor executorFor(const std::filesystem::path& home, const std::filesystem::path& tmp,
                     std::vector<std::string> running = {}, std::vector<std::string> fragments = {},
                     CommandFunction runner = {});

CleanTarget pathTarget(const std::string& id, std::vector<std::filesystem::path> paths, Family family = Family::devMisc,
                       std::int64_t sizeBytes = 0);
CleanTarget commandTarget(const std::string& id, const std::string& commandLine, std::int64_t sizeBytes = 0);

// Answers with a fixed status and remembers every command line it was given, with the
// variables it was to run with.
struct RecordingRunner {
    int status = 0;
    std::shared_ptr<std::vector<std::string>> calls = std::make_shared<std::vector<std::string>>();
    std::shared_ptr<std::vector<ShellVariables>> variables = std::make_shared<std::vector<ShellVariables>>();
    int operator()(const std::string& commandLine, const ShellVariables& given) const {
        calls->push_back(commandLine);
        variables->push_back(given);
        return status;
    }
};

// Writes a bundle's Contents/Info.plist with the given identifier and executable name.
void writeAppBundle(const std::filesystem::path& bundle, const std::string& bundleID, const std::string& executable);

// Whether anything, a dangling link included, is at the location.
bool present(const std::filesystem::path& location);

// The whole report, one line per entry in its order: "deleted id", "partial id",
// "unknown id", "skipped id: why", "error id: why", then "freed N"; why is the reason's
// key and subject, so that a comparison never depends on a sentence.
std::string summary(const ExecutionReport& report);
// The line of a target skipped, or failed, for the reason.
std::string skipped(const std::string& id, Reason::Code code, const std::string& subject);
std::string failed(const std::string& id, Reason::Code code, const std::string& subject = {});
// The lines a test expects, joined the same way.
std::string lines(const std::vector<std::string>& expected);

// Runs `work` as uid/gid 65534 (runAsUnprivileged) and hands back the summary of its report.
UnprivilegedRun runUnprivileged(const std::function<ExecutionReport()>& work);

}  // namespace kelvo::testing
