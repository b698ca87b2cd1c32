#include <gtest/gtest.h>

#include <filesystem>

#include "kelvo/ProcessProbe.h"
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
    // By its whole name and by the one the kernel cuts at 15 characters.
    EXPECT_TRUE(probe.isRunning("com.docker.backend-test"));
    EXPECT_TRUE(probe.isRunning("com.docker.back"));
    EXPECT_TRUE(probe.isRunningUnder(commandLine));
    EXPECT_TRUE(probe.isRunningUnder(root.path().filename().string()));
    EXPECT_FALSE(probe.isRunning("com.docker.backend"));
    EXPECT_FALSE(probe.isRunning("docker.backend-test"));
    EXPECT_FALSE(probe.isRunning(""));
    EXPECT_FALSE(probe.isRunningUnder(""));


    process.stop();
    EXPECT_FALSE(probe.isRunning("com.docker.backend-test"));
    EXPECT_FALSE(probe.isRunningUnder(commandLine));
}

}  // namespace
}  // namespace kelvo
