#include "ExecutionSupport.h"

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>

#include "kelvo/L10n.h"
#include "support/AppBundle.h"
#include "support/TempDir.h"

namespace kelvo::testing {

std::vector<std::filesystem::path> protectedPathsUnder(const std::filesystem::path& home) {
    return {home / "Library/Developer/Xcode/Archives", home / "Library/Developer/Xcode/UserData",
            home / "Library/Developer/CoreSimulator/Devices", home / ".android/avd", home / ".flutter",
            home / ".swiftpm"};
}

SafetyGuard guardFor(const std::filesystem::path& home, std::vector<std::filesystem::path> roots) {
    return {home, std::move(roots), protectedPathsUnder(home), {}};
}

CleanTarget pathTarget(const std::string& id, Family family, std::vector<std::filesystem::path> paths,
                       std::int64_t sizeBytes) {
    CleanTarget target;
    target.id = id;
    target.name = id;
    target.family = family;
    target.kind = CleanKind::paths(std::move(paths));
    target.sizeBytes = sizeBytes;
    return target;
}

CleanTarget commandTarget(const std::string& id, Family family, const std::string& commandLine, std::int64_t sizeBytes) {
    CleanTarget target;
    target.id = id;
    target.name = id;
    target.family = family;
    target.kind = CleanKind::command(commandLine);
    target.sizeBytes = sizeBytes;
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

std::vector<std::string> texts(const std::vector<ReportEntry>& entries) {
    std::vector<std::string> result;
    for (const auto& entry : entries) result.push_back(entry.id + ": " + entry.text);
    return result;
}

namespace {

// One line per entry; ids and texts hold no tabs or line breaks.
std::string encode(const ExecutionReport& report) {
    std::ostringstream out;
    out << "freed\t" << report.freedBytes << "\n";
    for (const auto& id : report.deleted) out << "deleted\t" << id << "\n";
    for (const auto& id : report.partial) out << "partial\t" << id << "\n";
    for (const auto& id : report.freedUnknown) out << "unknown\t" << id << "\n";
    for (const auto& entry : report.skipped) out << "skipped\t" << entry.id << "\t" << entry.text << "\n";
    for (const auto& entry : report.errors) out << "error\t" << entry.id << "\t" << entry.text << "\n";
    out << "end\n";
    return out.str();
}

std::optional<ExecutionReport> decode(const std::string& text) {
    ExecutionReport report;
    std::istringstream in(text);
    std::string line;
    bool ended = false;
    while (std::getline(in, line)) {
        const auto tab = line.find('\t');
        const std::string kind = line.substr(0, tab);
        const std::string rest = tab == std::string::npos ? "" : line.substr(tab + 1);
        const auto secondTab = rest.find('\t');
        const std::string id = rest.substr(0, secondTab);
        const std::string message = secondTab == std::string::npos ? "" : rest.substr(secondTab + 1);
        if (kind == "freed") report.freedBytes = std::stoll(rest);
        else if (kind == "deleted") report.deleted.push_back(rest);
        else if (kind == "partial") report.partial.push_back(rest);
        else if (kind == "unknown") report.freedUnknown.push_back(rest);
        else if (kind == "skipped") report.skipped.push_back({id, message});
        else if (kind == "error") report.errors.push_back({id, message});
        else if (kind == "end") ended = true;
    }
    if (!ended) return std::nullopt;
    return report;
}

constexpr int couldNotDrop = 91;

}  // namespace

UnprivilegedRun runUnprivileged(const std::function<ExecutionReport()>& work) {
    // Load the texts before the fork: the child may not be allowed to read them.
    L10n::bundle();
    int fds[2];
    if (::pipe(fds) != 0) return {std::nullopt, "pipe failed"};
    const pid_t child = ::fork();
    if (child < 0) return {std::nullopt, "fork failed"};
    if (child == 0) {
        ::close(fds[0]);
        if (::geteuid() == 0) {
            const gid_t groups[] = {nobodyId};
            if (::setgroups(1, groups) != 0 || ::setresgid(nobodyId, nobodyId, nobodyId) != 0 ||
                ::setresuid(nobodyId, nobodyId, nobodyId) != 0 || ::geteuid() != nobodyId)
                ::_exit(couldNotDrop);
        }
        const std::string text = encode(work());
        std::size_t written = 0;
        while (written < text.size()) {
            const ssize_t count = ::write(fds[1], text.data() + written, text.size() - written);
            if (count <= 0) ::_exit(2);
            written += static_cast<std::size_t>(count);
        }
        ::_exit(0);
    }
    ::close(fds[1]);
    std::string text;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = ::read(fds[0], buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<std::size_t>(count));
    ::close(fds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == couldNotDrop) return {std::nullopt, "could not switch to uid 65534"};
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return {std::nullopt, "the unprivileged run did not finish"};
    auto report = decode(text);
    if (!report) return {std::nullopt, "the unprivileged run sent no report"};
    return {std::move(report), ""};
}

}  // namespace kelvo::testing
