// What the tool says about itself and about words it does not know, and how its report
// counts: one target, nothing freed.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "kelvo/Format.h"
#include "kelvo/KelvoKit.h"
#include "support/NamedProcess.h"
#include "support/TempDir.h"
#include "support/ToolRunner.h"

namespace kelvo {
namespace {

using testing::TempDir;

class CommandLine : public ::testing::Test {
protected:
    TempDir root;
    std::map<std::string, std::string> environment = testing::toolEnvironment(root.path());
};

TEST_F(CommandLine, VersionIsPrinted) {
    const auto result = testing::runTool({"--version"}, environment);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.standardOutput, "kelvo " + std::string(KelvoKit::version()) + "\n");
}

TEST_F(CommandLine, AnUnknownSubcommandIsCalledUnknown) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{{"bogus"}, {"config", "bogus"}}) {
        const auto result = testing::runTool(arguments, environment);
        EXPECT_EQ(result.exitStatus, 2) << arguments.size();
        EXPECT_NE(result.standardError.find("Unknown command: bogus"), std::string::npos) << result.standardError;
    }
    const auto none = testing::runTool({}, environment);
    EXPECT_EQ(none.exitStatus, 2);
    EXPECT_NE(none.standardError.find("A subcommand is required"), std::string::npos) << none.standardError;
}

TEST_F(CommandLine, ScanSaysWhatAnExclusionLeftOutOfAGroupAndCleanRemovesTheRest) {
    const auto home = root / "home";
    testing::writeText(home / ".config/kelvo/config.json",
                       R"({"projectRoots": ["~/p"], "extraExclusions": ["~/p/b"], "defaultLevel": "moderate",
                           "keepRecentDays": 0})");
    for (const char* project : {"a", "b"}) testing::writeFile(home / "p" / project / "node_modules/m/index.js", 8000);
    const auto scan = testing::runTool({"--catalog", "linux", "scan"}, environment);
    ASSERT_EQ(scan.exitStatus, 0) << scan.standardError;
    EXPECT_NE(scan.standardOutput.find("inside your exclusions and is not offered: " + (home / "p/b/node_modules").string()),
              std::string::npos) << scan.standardOutput;

    const auto clean = testing::runTool({"--catalog", "linux", "clean", "--yes", "--family", "projects"}, environment);
    EXPECT_EQ(clean.exitStatus, 0) << clean.standardOutput << clean.standardError;
    EXPECT_FALSE(std::filesystem::exists(home / "p/a/node_modules"));
    EXPECT_TRUE(std::filesystem::exists(home / "p/b/node_modules/m/index.js"));
}

TEST_F(CommandLine, ReportCountsOneTargetAndNamesBytesOnlyWhenRounded) {
    const auto derivedData = root / "home/Library/Developer/Xcode/DerivedData";
    testing::writeFile(derivedData / "App-abc/Build/out.o", 20000);
    const auto scan = testing::runTool({"--catalog", "macos", "scan", "--json"}, environment);
    ASSERT_EQ(scan.exitStatus, 0) << scan.standardError;
    std::int64_t size = 0;
    const auto plan = nlohmann::json::parse(scan.standardOutput);
    for (const auto& target : plan["targets"])
        if (target["id"] == "derived-data") size = target["sizeBytes"];
    ASSERT_GE(size, 20000);

    // While Xcode runs its data is skipped: one target chosen, nothing freed.
    testing::NamedProcess xcode(root / "bin/Xcode");
    ASSERT_GT(xcode.pid(), 0);
    const auto skipped = testing::runTool({"--catalog", "macos", "clean", "--yes", "--id", "derived-data"}, environment);
    EXPECT_EQ(skipped.exitStatus, 1) << skipped.standardError;  // something was skipped
    EXPECT_NE(skipped.standardOutput.find("Will remove 1 target, " + Format::bytes(size) + ":"), std::string::npos)
        << skipped.standardOutput;
    EXPECT_NE(skipped.standardOutput.find("Freed: 0 B\n"), std::string::npos) << skipped.standardOutput;
    EXPECT_TRUE(std::filesystem::exists(derivedData / "App-abc/Build/out.o"));

    xcode.stop();
    const auto removed = testing::runTool({"--catalog", "macos", "clean", "--yes", "--id", "derived-data"}, environment);
    EXPECT_EQ(removed.exitStatus, 0) << removed.standardError;
    EXPECT_NE(removed.standardOutput.find("Freed: " + Format::bytes(size) + " (" + std::to_string(size) + " bytes)\n"),
              std::string::npos)
        << removed.standardOutput;
    EXPECT_FALSE(std::filesystem::exists(derivedData / "App-abc"));
    EXPECT_TRUE(std::filesystem::exists(root / "bin/Xcode"));
}

}  // namespace
}  // namespace kelvo
