#pragma once
// Shared pieces of the executor tests: a home with the protected paths of both domains, target
// builders, a command runner that records what it was asked, and a way to run an executor
// as the unprivileged user 65534 (root ignores permission bits) with the report passed back.
#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/Executor.h"
#include "kelvo/SafetyGuard.h"

namespace kelvo::testing {

constexpr uid_t nobodyId = 65534;

std::vector<std::filesystem::path> protectedPathsUnder(const std::filesystem::path& home);
SafetyGuard guardFor(const std::filesystem::path& home, std::vector<std::filesystem::path> roots);

CleanTarget pathTarget(const std::string& id, Family family, std::vector<std::filesystem::path> paths,
                       std::int64_t sizeBytes = 0);
CleanTarget commandTarget(const std::string& id, Family family, const std::string& commandLine, std::int64_t sizeBytes);

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
// Each report entry as "id: text", for readable comparisons.
std::vector<std::string> texts(const std::vector<ReportEntry>& entries);

// Runs `work` in a forked child that has dropped to uid/gid 65534 (when this process is
// root; otherwise it keeps its own unprivileged identity) and hands the report back. An
// error text when the child could not drop its rights or did not finish.
struct UnprivilegedRun {
    std::optional<ExecutionReport> report;
    std::string failure;
};
UnprivilegedRun runUnprivileged(const std::function<ExecutionReport()>& work);

}  // namespace kelvo::testing
