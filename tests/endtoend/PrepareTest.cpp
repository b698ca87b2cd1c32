// The prepare domain end to end: a fake home whose Applications folder holds an old
// application, a protected one and a running one, and whose Library holds leftovers of
// an uninstalled application.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <set>
#include <sstream>

#include "support/AppBundle.h"
#include "support/TempDir.h"
#include "support/ToolRunner.h"

extern char** environ;

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::TempDir;
using testing::writeFile;

std::filesystem::path makeBundle(const std::filesystem::path& folder, const std::string& name, const std::string& bundleID) {
    return testing::makeApp(folder, name, {.bundleID = bundleID, .executable = name, .payloadBytes = 30000});
}

class RunningProgram {
public:
    explicit RunningProgram(const std::filesystem::path& executable) {
        std::filesystem::create_directories(executable.parent_path());
        std::filesystem::copy_file("/bin/sleep", executable);
        std::string program = executable.string();
        std::string seconds = "120";
        char* argv[] = {program.data(), seconds.data(), nullptr};
        if (::posix_spawn(&pid_, program.c_str(), nullptr, nullptr, argv, environ) != 0) pid_ = -1;
    }
    ~RunningProgram() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    bool started() const { return pid_ > 0; }

private:
    pid_t pid_ = -1;
};

TEST(PrepareEndToEnd, OffersAndRemovesOnlyTheOldAppAndTheLeftoversOfAnUninstalledOne) {
    TempDir root;
    const auto home = root / "home";
    const auto apps = home / "Applications";
    const auto old = makeBundle(apps, "OldTool", "com.example.OldTool");
    const auto docker = makeBundle(apps, "Docker", "com.docker.docker");
    const auto running = makeBundle(apps, "Busy", "com.example.Busy");
    writeFile(home / "Library/Caches/com.example.OldTool/cache.db", 8000);
    writeFile(home / "Library/Caches/com.gone.Editor/cache.db", 12000);
    writeFile(home / "Library/Preferences/com.gone.Editor.plist", 300);
    writeFile(home / "Library/Caches/com.example.Busy/cache.db", 1000);
    writeFile(home / "Library/Caches/com.apple.Safari/cache.db", 1000);
    writeFile(home / "Documents/notes.txt", 100);
    std::filesystem::create_directories(root / "tmp");
    const auto longAgo = std::chrono::system_clock::now() - 400 * 24h;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root.path()))
        testing::setModificationTime(entry.path(), longAgo);

    RunningProgram busy(running / "Contents/MacOS/Busy");
    ASSERT_TRUE(busy.started());
    const std::map<std::string, std::string> environment{{"HOME", home.string()},
                                                         {"TMPDIR", (root / "tmp").string()},
                                                         {"PATH", testing::toolFolderWithOnlyRm(root.path()).string()},
                                                         {"LANG", "C"}};

    const auto scan = testing::runTool({"--catalog", "macos", "prepare", "--json"}, environment);
    ASSERT_EQ(scan.exitStatus, 0) << scan.standardError;
    const auto document = nlohmann::json::parse(scan.standardOutput);
    std::set<std::string> ids;
    for (const auto& target : document["targets"]) ids.insert(target["id"]);
    EXPECT_EQ(ids, (std::set<std::string>{"app:com.example.OldTool", "leftover:com.gone.Editor"}));

    const std::string before = testing::listing(root.path());
    const auto clean = testing::runTool({"--catalog", "macos", "prepare", "clean", "--yes", "--id",
                                         "app:com.example.OldTool", "--id", "leftover:com.gone.Editor"},
                                        environment);
    ASSERT_EQ(clean.exitStatus, 0) << clean.standardOutput << clean.standardError;
    // Exactly those are gone: the listing equals the old one minus the removed items.
    std::string expected;
    std::istringstream lines(before);
    for (std::string line; std::getline(lines, line);) {
        bool removed = false;
        for (const auto* prefix : {"home/Applications/OldTool.app/", "home/Library/Caches/com.example.OldTool/",
                                   "home/Library/Caches/com.gone.Editor/", "home/Library/Preferences/com.gone.Editor.plist"})
            removed = removed || line.starts_with(prefix);
        if (!removed) expected += line + "\n";
    }
    EXPECT_EQ(testing::listing(root.path()), expected);
    EXPECT_FALSE(std::filesystem::exists(old));
    EXPECT_TRUE(std::filesystem::exists(docker / "Contents/Info.plist"));
    EXPECT_TRUE(std::filesystem::exists(running / "Contents/MacOS/Busy"));
}

}  // namespace
}  // namespace kelvo
