// What the tool says about itself and about words it does not know, and how its report
// counts: one target, nothing freed.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <set>

#include "kelvo/Config.h"
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
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{"bogus"}, {"config", "bogus"}, {"help", "bogus"}, {"help", "prepare", "bogus"}}) {
        const auto result = testing::runTool(arguments, environment);
        EXPECT_EQ(result.exitStatus, 2) << arguments.size();
        EXPECT_NE(result.standardError.find("Unknown command: bogus"), std::string::npos) << result.standardError;
    }
    const auto none = testing::runTool({}, environment);
    EXPECT_EQ(none.exitStatus, 2);
    EXPECT_NE(none.standardError.find("A subcommand is required"), std::string::npos) << none.standardError;
}

TEST_F(CommandLine, HelpOfACommandIsItsOwnHelpAndNamesTheProgramKelvoWhateverPathStartedIt) {
    for (const auto& words : std::vector<std::vector<std::string>>{{}, {"clean"}, {"prepare", "clean"}}) {
        auto asked = words;
        asked.insert(asked.begin(), "help");
        auto flagged = words;
        flagged.push_back("--help");
        const auto help = testing::runTool(asked, environment);
        EXPECT_EQ(help.exitStatus, 0) << help.standardError;
        EXPECT_EQ(help.standardOutput, testing::runTool(flagged, environment).standardOutput) << words.size();
        EXPECT_NE(help.standardOutput.find("Usage: kelvo "), std::string::npos) << help.standardOutput;
    }
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

TEST_F(CommandLine, AConfigurationThatCannotBeUsedIsNamedWithItsKeyOnEveryCommandAndTheDefaultsApply) {
    const auto file = root / "home/.config/kelvo/config.json";
    const std::string keys = R"({"projectRoots": [], "extraExclusions": [], "defaultLevel": "safe")";
    for (const auto& [text, reason] : std::vector<std::pair<std::string, std::string>>{
             {keys + "}", "the key \"keepRecentDays\" is missing"},
             {keys + R"(, "keepRecentDays": "7"})", "the value of the key \"keepRecentDays\" is not a whole number"},
             {keys, "it is cut short: its JSON ends before it is complete"},
             {keys + R"(, "keepRecentDays": 7})", ""}}) {  // a good file: nothing to say
        testing::writeText(file, text);
        const auto size = testing::runTool({"size", file.string()}, environment);
        const auto show = testing::runTool({"config", "show"}, environment);
        const std::string said = "The configuration file " + file.string() + " cannot be used: " + reason + ". The defaults are used instead.\n";
        EXPECT_EQ(size.standardError + show.standardError, reason.empty() ? "" : said + said);
        const Config shown = reason.empty() ? Config{{}, {}, "safe", 7, std::nullopt} : Config::defaults();
        const std::string why = reason.empty() ? "" : " (cannot be used: " + reason + "; these are the defaults)";
        EXPECT_EQ(show.standardOutput, "Configuration file: " + file.string() + why + "\n" + shown.encoded() + "\n");
    }
}

TEST_F(CommandLine, WithoutConfiguredFoldersTheProjectsUnderTheHomeAreFoundShownAndScanned) {
    const auto home = root / "home";
    for (const auto* file : {"code/web/package.json", "code/web/node_modules/x/index.js", "code/crate/Cargo.toml",
                             "code/crate/target/debug/crate", "code/py/pyproject.toml", "code/py/.venv/lib/site.py"})
        testing::writeFile(home / file, 5000);
    testing::setTreeModificationTime(home / "code", std::chrono::system_clock::now() - std::chrono::hours(24 * 30));
    for (const bool configured : {false, true}) {
        if (configured) testing::writeText(home / ".config/kelvo/config.json", R"({"projectRoots": ["~/elsewhere"],
            "extraExclusions": [], "defaultLevel": "moderate", "keepRecentDays": 3})");
        const auto scan = testing::runTool({"--catalog", "linux", "scan", "--json"}, environment);
        std::set<std::string> ids;
        for (const auto& target : nlohmann::json::parse(scan.standardOutput)["targets"]) ids.insert(target["id"]);
        for (const auto* id : {"per-project-node_modules", "per-project-target", "per-project-.venv"})
            EXPECT_EQ(ids.contains(id), !configured) << id;
        const auto show = testing::runTool({"--catalog", "linux", "config", "show"}, environment).standardOutput;
        EXPECT_EQ(show.find("\n  " + (home / "code").string() + "  (found)\n") != std::string::npos, !configured) << show;
    }
}

}  // namespace
}  // namespace kelvo
