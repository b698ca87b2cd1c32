#include "support/ToolRunner.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "support/TempDir.h"

namespace kelvo::testing {
namespace {

std::filesystem::path toolFolderWithOnlyRm(const std::filesystem::path& parent) {
    const auto folder = parent / "bin";
    std::filesystem::create_directories(folder);
    std::filesystem::create_symlink("/bin/rm", folder / "rm");
    return folder;
}

std::string slurp(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

ToolResult runTool(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment) {
    TempDir capture;
    const auto outPath = capture / "stdout";
    const auto errPath = capture / "stderr";
    std::vector<std::string> argumentCopies{KELVO_TOOL_PATH};
    argumentCopies.insert(argumentCopies.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environmentCopies;
    for (const auto& [name, value] : environment) environmentCopies.push_back(name + "=" + value);

    const pid_t child = ::fork();
    if (child == 0) {
        const int in = ::open("/dev/null", O_RDONLY);
        const int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int err = ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(in, 0);
        ::dup2(out, 1);
        ::dup2(err, 2);
        std::vector<char*> argv;
        for (auto& argument : argumentCopies) argv.push_back(argument.data());
        argv.push_back(nullptr);
        std::vector<char*> envp;
        for (auto& entry : environmentCopies) envp.push_back(entry.data());
        envp.push_back(nullptr);
        ::execve(argv[0], argv.data(), envp.data());
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(outPath), slurp(errPath)};
}

std::map<std::string, std::string> toolEnvironment(const std::filesystem::path& parent) {
    std::filesystem::create_directories(parent / "home");
    std::filesystem::create_directories(parent / "tmp");
    return {{"HOME", (parent / "home").string()},
            {"TMPDIR", (parent / "tmp").string()},
            {"PATH", toolFolderWithOnlyRm(parent).string()},
            {"LANG", "C"}};
}

void setTreeModificationTime(const std::filesystem::path& root, std::chrono::system_clock::time_point time) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) setModificationTime(entry.path(), time);
    setModificationTime(root, time);
}

std::string listingWithout(const std::string& listing, const std::vector<std::string>& removedPrefixes) {
    std::string kept;
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);)
        if (std::none_of(removedPrefixes.begin(), removedPrefixes.end(),
                         [&](const std::string& prefix) { return line.starts_with(prefix); }))
            kept += line + "\n";
    return kept;
}

}  // namespace kelvo::testing
