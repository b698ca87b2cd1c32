#include "ExecutionSupport.h"

#include "kelvo/L10n.h"
#include "support/AppBundle.h"
#include "support/ServiceGuards.h"
#include "support/TempDir.h"

namespace kelvo::testing {

Executor executorFor(const std::filesystem::path& home, const std::filesystem::path& tmp,
                     std::vector<std::string> running, std::vector<std::string> fragments, CommandFunction runner) {
    Executor executor;
    executor.safety = cleanGuard(environmentAt(home, tmp));
    executor.probe = std::make_shared<StubProcessProbe>(running, std::move(fragments));
    executor.runCommand = runner ? std::move(runner) : CommandFunction(RecordingRunner{});
    return executor;
}

CleanTarget pathTarget(const std::string& id, std::vector<std::filesystem::path> paths, Family family,
                       std::int64_t sizeBytes) {
    CleanTarget target;
    target.id = id;
    target.name = id;
    target.family = family;
    target.kind = CleanKind::paths(std::move(paths));
    target.sizeBytes = sizeBytes;
    return target;
}

CleanTarget commandTarget(const std::string& id, const std::string& commandLine, std::int64_t sizeBytes) {
    CleanTarget target = pathTarget(id, {}, Family::devMisc, sizeBytes);
    target.kind = CleanKind::command(commandLine);
    return target;
}

void writeAppBundle(const std::filesystem::path& bundle, const std::string& bundleID, const std::string& executable) {
    writeInfoPlist(bundle, {{"CFBundleIdentifier", bundleID}, {"CFBundleExecutable", executable}});
    writeFile(bundle / "Contents/MacOS" / executable, 4096);
}

bool present(const std::filesystem::path& location) {
    std::error_code error;
    return std::filesystem::symlink_status(location, error).type() != std::filesystem::file_type::not_found;
}

std::string summary(const ExecutionReport& report) {
    std::vector<std::string> out;
    for (const auto& id : report.deleted) out.push_back("deleted " + id);
    for (const auto& id : report.partial) out.push_back("partial " + id);
    for (const auto& id : report.freedUnknown) out.push_back("unknown " + id);
    for (const auto& entry : report.skipped) out.push_back(skipped(entry.id, entry.reason.code, entry.reason.subject));
    for (const auto& entry : report.errors) out.push_back(failed(entry.id, entry.reason.code, entry.reason.subject));
    out.push_back("freed " + std::to_string(report.freedBytes));
    return lines(out);
}

std::string skipped(const std::string& id, Reason::Code code, const std::string& subject) {
    return "skipped " + id + ": " + std::string(Reason::key(code)) + " " + subject;
}

std::string failed(const std::string& id, Reason::Code code, const std::string& subject) {
    return "error " + id + ": " + std::string(Reason::key(code)) + " " + subject;
}

std::string lines(const std::vector<std::string>& expected) {
    std::string text;
    for (const auto& line : expected) text += line + "\n";
    return text;
}

UnprivilegedRun runUnprivileged(const std::function<ExecutionReport()>& work) {
    // Load the texts before the fork: the child may not be allowed to read them.
    L10n::bundle();
    return runAsUnprivileged([&] { return summary(work()); }, nobodyId);
}

}  // namespace kelvo::testing
