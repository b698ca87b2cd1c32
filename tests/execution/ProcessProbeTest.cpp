#include <gtest/gtest.h>

#include <filesystem>

#include "kelvo/ProcessProbe.h"
#include "kelvo/platform/ProcessTable.h"
#include "support/NamedProcess.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

TEST(LiveProcessProbe, FindsLongNamesAndCommandLineFragments) {
    testing::TempDir root;
    const fs::path program = root / "com.docker.backend-test";
    testing::NamedProcess process(program);
    ASSERT_GT(process.pid(), 0);
    const std::string commandLine = program.string() + " -c " + testing::NamedProcess::script;

    const LiveProcessProbe probe;
    EXPECT_TRUE(probe.isRunning("com.docker.backend-test"));
    EXPECT_TRUE(probe.isRunningUnder(commandLine));
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
            EXPECT_EQ(entry.commandLine, commandLine);
        }
    EXPECT_TRUE(listed);

    process.stop();
    EXPECT_FALSE(probe.isRunning("com.docker.backend-test"));
    EXPECT_FALSE(probe.isRunningUnder(commandLine));
}

}  // namespace
}  // namespace kelvo
