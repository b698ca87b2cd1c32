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
    const fs::path program = root / "com.docker.backend-test run";
    testing::NamedProcess process(program);
    ASSERT_GT(process.pid(), 0);
    const std::string commandLine = program.string() + " -c " + testing::NamedProcess::script;

    const LiveProcessProbe probe;
    // By its whole name, the first word of a title it rewrote ("npm install") and the name the
    // kernel cuts at 15 characters.
    const struct { std::string name; bool byCommandLine, expected; } rows[] = {
        {"com.docker.backend-test run", false, true}, {"com.docker.backend-test", false, true},
        {"com.docker.back", false, true}, {commandLine, true, true}, {root.path().filename().string(), true, true},
        {"com.docker.backend", false, false}, {"docker.backend-test", false, false}, {"", false, false}, {"", true, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.byCommandLine ? probe.isRunningUnder(row.name) : probe.isRunning(row.name), row.expected) << row.name;
    process.stop();
    EXPECT_FALSE(probe.isRunning("com.docker.backend-test"));
    EXPECT_FALSE(probe.isRunningUnder(commandLine));
}

}  // namespace
}  // namespace kelvo
