#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "kelvo/ProcessProbe.h"
#include "kelvo/platform/ProcessTable.h"
#include "support/TempDir.h"

extern char** environ;

namespace kelvo {
namespace {

namespace fs = std::filesystem;

// A copy of sleep under a name longer than the kernel's 15 characters.
class LongNamedProcess {
public:
    explicit LongNamedProcess(const fs::path& program) {
        std::string programText = program.string();
        std::string seconds = "30";
        char* argv[] = {programText.data(), seconds.data(), nullptr};
        if (::posix_spawn(&pid_, programText.c_str(), nullptr, nullptr, argv, environ) != 0) pid_ = -1;
    }
    ~LongNamedProcess() { stop(); }
    void stop() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }
    pid_t pid() const { return pid_; }

private:
    pid_t pid_ = -1;
};

bool eventually(const std::function<bool()>& condition) {
    for (int attempt = 0; attempt < 200; ++attempt) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

TEST(LiveProcessProbe, FindsLongNamesAndCommandLineFragments) {
    testing::TempDir root;
    const fs::path program = root / "com.docker.backend-test";
    fs::copy_file("/bin/sleep", program);
    fs::permissions(program, fs::perms(0755));
    LongNamedProcess process(program);
    ASSERT_GT(process.pid(), 0);

    const LiveProcessProbe probe;
    ASSERT_TRUE(eventually([&] { return probe.isRunning("com.docker.backend-test"); }));
    EXPECT_TRUE(probe.isRunningUnder(root.path().string() + "/com.docker.backend-test 30"));
    EXPECT_TRUE(probe.isRunningUnder(root.path().filename().string()));
    EXPECT_FALSE(probe.isRunning("com.docker.backend"));
    EXPECT_FALSE(probe.isRunning("docker.backend-test"));
    EXPECT_FALSE(probe.isRunning(""));
    EXPECT_FALSE(probe.isRunningUnder(""));

    // The process table shows the uncut program name beside the kernel's cut one.
    const auto table = platform::listRunningProcesses();
    ASSERT_TRUE(table.has_value());
    bool listed = false;
    for (const auto& entry : *table)
        if (entry.programName == "com.docker.backend-test") {
            listed = true;
            EXPECT_EQ(entry.shortName, "com.docker.back");
            EXPECT_EQ(entry.commandLine, program.string() + " 30");
        }
    EXPECT_TRUE(listed);

    process.stop();
    EXPECT_TRUE(eventually([&] { return !probe.isRunning("com.docker.backend-test"); }));
    EXPECT_FALSE(probe.isRunningUnder(root.path().string() + "/com.docker.backend-test"));
}

}  // namespace
}  // namespace kelvo
