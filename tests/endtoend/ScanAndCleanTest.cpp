// The tool end to end on a small fake home made by the test: what a scan offers, and what
// a clean removes and, above all, leaves alone.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <array>
#include <map>
#include <regex>
#include <set>

#include "kelvo/Format.h"

#include "support/TempDir.h"
#include "support/ToolRunner.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using std::filesystem::path;
using testing::TempDir;
using testing::writeFile;

class FakeHome : public ::testing::Test {
protected:
    void SetUp() override {
        environment = testing::toolEnvironment(root.path());
        home = root / "home";
        tmp = root / "tmp";
        writeFile(home / "Library/Developer/Xcode/DerivedData/App-abc/Build/out.o", 20000);
        writeFile(home / "Library/Logs/CoreSimulator/sim.log", 3000);
        writeFile(home / "Library/Logs/other.log", 1000);
        writeFile(home / ".npm/_cacache/content-v2/sha512/aa/bb/cc", 9000);
        writeFile(home / ".konan/dependencies/llvm/bin/clang", 50000);  // aggressive: offered, not chosen
        writeFile(home / "Library/Android/sdk/ndk/26.1.10909125/source.properties", 7000);
        writeFile(home / "Library/Developer/Xcode/Archives/2024-01-01/App.xcarchive/Info.plist", 500);
        writeFile(home / ".android/avd/Pixel.avd/config.ini", 500);
        writeFile(home / "Documents/thesis.tex", 5000);
        writeFile(home / "workspace/old/package.json", 100);
        writeFile(home / "workspace/old/node_modules/left-pad/index.js", 4000);
        writeFile(home / "workspace/young/package.json", 100);
        writeFile(home / "workspace/young/node_modules/right-pad/index.js", 4000);
        writeFile(home / "workspace/dotnet/App.csproj", 100);
        writeFile(home / "workspace/dotnet/bin/Debug/App.dll", 6000);
        writeFile(home / "workspace/tool/bin/run.sh", 100);  // no project file beside it
        writeFile(tmp / "metro-abc/cache.bin", 2000);
        writeFile(tmp / "unrelated/keep.txt", 100);
        testing::setTreeModificationTime(root.path(), std::chrono::system_clock::now() - 40 * 24h);
        testing::setModificationTime(home / "workspace/young/node_modules", std::chrono::system_clock::now() - 24h);
    }

    std::map<std::string, nlohmann::json> scanPlan() {
        const auto result = testing::runTool({"--catalog", "macos", "scan", "--json"}, environment);
        EXPECT_EQ(result.exitStatus, 0) << result.standardError;
        const auto document = nlohmann::json::parse(result.standardOutput);
        std::map<std::string, nlohmann::json> byId;
        for (const auto& target : document["targets"]) byId[target["id"].get<std::string>()] = target;
        return byId;
    }

    std::int64_t sizeOf(const std::string& relative) const { return testing::allocatedBytesBelow(home / relative); }

    TempDir root;
    std::filesystem::path home;
    std::filesystem::path tmp;
    std::map<std::string, std::string> environment;
};

TEST_F(FakeHome, FamilyOptionLimitsTheScanAndRejectsUnknownNames) {
    const auto limited = testing::runTool(
        {"--catalog", "macos", "scan", "--json", "--family", "xcode", "--family", "projects"}, environment);
    ASSERT_EQ(limited.exitStatus, 0) << limited.standardError;
    const auto document = nlohmann::json::parse(limited.standardOutput);
    std::set<std::string> ids;
    for (const auto& target : document["targets"]) ids.insert(target["id"]);
    EXPECT_EQ(ids, (std::set<std::string>{"derived-data", "per-project-node_modules", "per-project-bin"}));

    const auto unknown = testing::runTool({"--catalog", "macos", "scan", "--family", "cobol"}, environment);
    EXPECT_EQ(unknown.exitStatus, 2);
    EXPECT_NE(unknown.standardError.find("cobol"), std::string::npos);
    EXPECT_NE(unknown.standardError.find("xcode"), std::string::npos);  // the accepted names are listed
}

TEST_F(FakeHome, ScanOffersWhatTheCatalogDefinesAtAllocatedSizesAndCleanRemovesThePreselectionAndNothingElse) {
    const auto plan = scanPlan();
    std::set<std::string> ids;
    for (const auto& [id, target] : plan) ids.insert(id);
    EXPECT_EQ(ids, (std::set<std::string>{"derived-data", "user-logs", "npm-cache", "konan",
                                          "android-ndk/26.1.10909125", "tmpdir-scratch/metro-abc", "metro-cache",
                                          "per-project-node_modules", "per-project-bin"}));
    EXPECT_EQ(plan.at("derived-data")["sizeBytes"], sizeOf("Library/Developer/Xcode/DerivedData"));
    // coresimulator-logs lies inside user-logs, which takes it whole.
    EXPECT_EQ(plan.at("user-logs")["sizeBytes"], sizeOf("Library/Logs"));
    EXPECT_EQ(plan.at("npm-cache")["sizeBytes"], sizeOf(".npm/_cacache"));
    EXPECT_EQ(plan.at("per-project-node_modules")["sizeBytes"], sizeOf("workspace/old/node_modules"));
    EXPECT_EQ(plan.at("per-project-bin")["sizeBytes"], sizeOf("workspace/dotnet/bin"));
    EXPECT_EQ(plan.at("android-ndk/26.1.10909125")["sizeBytes"], sizeOf("Library/Android/sdk/ndk/26.1.10909125"));
    EXPECT_EQ(plan.at("tmpdir-scratch/metro-abc")["sizeBytes"], testing::allocatedBytesBelow(tmp / "metro-abc"));
    EXPECT_EQ(plan.at("konan")["preselected"], false);
    EXPECT_EQ(plan.at("metro-cache")["preselected"], false);  // a command of unknown size
    EXPECT_EQ(plan.at("metro-cache")["sizeBytes"], 0);
    EXPECT_EQ(plan.at("derived-data")["preselected"], true);
    const std::string before = testing::listing(root.path());
    const auto result = testing::runTool({"--catalog", "macos", "clean", "--yes"}, environment);
    ASSERT_EQ(result.exitStatus, 0) << result.standardOutput << result.standardError;

    // What was chosen is gone.
    for (const auto* gone : {"Library/Developer/Xcode/DerivedData", "Library/Logs", ".npm/_cacache",
                             "workspace/old/node_modules", "workspace/dotnet/bin"})
        EXPECT_FALSE(std::filesystem::exists(home / gone)) << gone;
    EXPECT_FALSE(std::filesystem::exists(tmp / "metro-abc"));

    // Everything else is exactly as it was: the listing equals the old one minus the removed trees.
    EXPECT_EQ(testing::listing(root.path()),
              testing::listingWithout(before, {"home/Library/Developer/Xcode/DerivedData/", "home/Library/Logs/",
                                               "home/.npm/_cacache/", "home/workspace/old/node_modules/",
                                               "home/workspace/dotnet/bin/", "tmp/metro-abc/"}));
    EXPECT_TRUE(std::filesystem::exists(home / "Library/Developer/Xcode/Archives/2024-01-01/App.xcarchive/Info.plist"));
    EXPECT_TRUE(std::filesystem::exists(home / ".android/avd/Pixel.avd/config.ini"));
    // Aggressive targets are offered but not chosen.
    EXPECT_TRUE(std::filesystem::exists(home / ".konan/dependencies/llvm/bin/clang"));
    EXPECT_TRUE(std::filesystem::exists(home / "Library/Android/sdk/ndk/26.1.10909125/source.properties"));
    EXPECT_TRUE(std::filesystem::exists(home / "workspace/young/node_modules/right-pad/index.js"));

    // It freed what the scan promised for the chosen targets.
    std::int64_t promised = 0;
    for (const auto& [id, target] : plan)
        if (target["preselected"] == true) promised += target["sizeBytes"].get<std::int64_t>();
    EXPECT_NE(result.standardOutput.find(std::to_string(promised)), std::string::npos)
        << "promised " << promised << "\n" << result.standardOutput;
}

TEST_F(FakeHome, CleanRefusesWithoutATerminalOrWithAnUnknownIdDryRunRemovesNothingAndAnIdOnlyItsTarget) {
    const std::string before = testing::listing(root.path());
    const auto refused = testing::runTool({"--catalog", "macos", "clean"}, environment);
    EXPECT_EQ(refused.exitStatus, 2);
    const auto unknown =
        testing::runTool({"--catalog", "macos", "clean", "--yes", "--id", "no-such-target"}, environment);
    EXPECT_EQ(unknown.exitStatus, 2);
    EXPECT_NE(unknown.standardError.find("no-such-target"), std::string::npos);
    const auto dryRun = testing::runTool({"--catalog", "macos", "clean", "--dry-run"}, environment);
    EXPECT_EQ(dryRun.exitStatus, 0) << dryRun.standardError;
    EXPECT_EQ(testing::listing(root.path()), before);

    const auto byId = testing::runTool({"--catalog", "macos", "clean", "--yes", "--id", "konan"}, environment);
    ASSERT_EQ(byId.exitStatus, 0) << byId.standardError;
    EXPECT_EQ(testing::listing(root.path()), testing::listingWithout(before, {"home/.konan/"}));
}

TEST_F(FakeHome, ScanAndDryRunListEveryPathWithItsSizeAndADryRunSpeaksInTheConditional) {
    const auto scan = testing::runTool({"--catalog", "macos", "scan", "--paths"}, environment).standardOutput;
    auto localised = environment;
    for (const auto& [language, conditional, pastTense] : std::vector<std::array<std::string, 3>>{
             {"C", "\nWould free: .*\nWould remove \\(", "\n(Freed|Deleted)"},
             {"es_ES.UTF-8", "\nSe liberarían: .*\nSe borrarían \\(", "\n(Liberado|Borrados)"}}) {
        localised["LC_ALL"] = language;
        const auto dryRun = testing::runTool({"--catalog", "macos", "clean", "--dry-run"}, localised).standardOutput;
        EXPECT_TRUE(std::regex_search(dryRun, std::regex(conditional))) << dryRun;
        EXPECT_FALSE(std::regex_search(dryRun, std::regex(pastTense))) << dryRun;
        for (const char* relative : {"Library/Developer/Xcode/DerivedData", "workspace/old/node_modules"}) {
            const auto line = " " + Format::bytes(sizeOf(relative)) + "  " + (home / relative).string() + "\n";
            EXPECT_TRUE(scan.find(line) != std::string::npos && dryRun.find(line) != std::string::npos) << line << scan << dryRun;
        }
    }
}

TEST_F(FakeHome, JsonCleanPrintsTheReportAloneAndAsksForYesQuietCleanPrintsNothingWhenAllWent) {
    const std::string before = testing::listing(root.path());
    const auto refused = testing::runTool({"--catalog", "macos", "clean", "--json", "--id", "konan"}, environment);
    EXPECT_EQ(refused.exitStatus, 2);
    EXPECT_EQ(refused.standardOutput, "");
    EXPECT_EQ(testing::listing(root.path()), before);

    const auto konanBytes = sizeOf(".konan");
    const auto json = testing::runTool({"--catalog", "macos", "clean", "--json", "--yes", "--id", "konan"}, environment);
    ASSERT_EQ(json.exitStatus, 0) << json.standardError;
    const auto report = nlohmann::json::parse(json.standardOutput);  // the document alone, nothing around it
    EXPECT_EQ(report["deleted"], nlohmann::json::array({"konan"}));
    EXPECT_EQ(report["freedBytes"], konanBytes);
    EXPECT_EQ(report["dryRun"], false);
    EXPECT_TRUE(report["skipped"].empty() && report["errors"].empty() && report["partial"].empty()) << report;

    const auto quiet = testing::runTool({"--catalog", "macos", "clean", "--quiet", "--yes", "--id", "npm-cache"}, environment);
    EXPECT_EQ(quiet.exitStatus, 0) << quiet.standardError;
    EXPECT_EQ(quiet.standardOutput, "");
    EXPECT_EQ(testing::listing(root.path()), testing::listingWithout(before, {"home/.konan/", "home/.npm/_cacache/"}));
}

TEST_F(FakeHome, AHomeOrTemporaryFolderAtTheRootStopsEveryCleanButNoScan) {
    const std::string before = testing::listing(root.path());
    auto homeAtRoot = environment;
    homeAtRoot["HOME"] = "/";
    const auto clean = testing::runTool({"--catalog", "macos", "clean", "--yes", "--id", "tmpdir-scratch/metro-abc"}, homeAtRoot);
    EXPECT_EQ(clean.exitStatus, 2) << clean.standardOutput;
    EXPECT_NE(clean.standardError.find("HOME"), std::string::npos) << clean.standardError;
    const auto prepare = testing::runTool({"--catalog", "macos", "prepare", "clean", "--dry-run"}, homeAtRoot);
    EXPECT_EQ(prepare.exitStatus, 2) << prepare.standardOutput;

    auto tmpAtRoot = environment;
    tmpAtRoot["TMPDIR"] = "/";
    const auto tmpClean = testing::runTool({"--catalog", "macos", "clean", "--yes"}, tmpAtRoot);
    EXPECT_EQ(tmpClean.exitStatus, 2) << tmpClean.standardOutput;
    EXPECT_NE(tmpClean.standardError.find("TMPDIR"), std::string::npos) << tmpClean.standardError;
    EXPECT_EQ(testing::listing(root.path()), before);

    const auto scan = testing::runTool({"--catalog", "macos", "scan", "--json"}, tmpAtRoot);
    EXPECT_EQ(scan.exitStatus, 0) << scan.standardError;
    EXPECT_NE(scan.standardOutput.find("derived-data"), std::string::npos);
}

TEST_F(FakeHome, ACommandRunsWithTheResolvedTemporaryFolderWhenTMPDIRIsUnset) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "the canary must stand at the file-system root, where only root writes";
    // Without TMPDIR the temporary folder is /tmp; "$TMPDIR"/haste-map-* must never become /haste-map-*.
    const std::string name = "haste-map-kelvo-test-" + std::to_string(::getpid());
    const path canary = writeFile(path("/") / name / "keep", 100).parent_path();
    const path scratch = testing::makeDirectory(path("/tmp") / name);
    auto withoutTmp = environment;
    withoutTmp.erase("TMPDIR");
    const auto result = testing::runTool({"--catalog", "macos", "clean", "--id", "metro-cache", "--yes"}, withoutTmp);
    const bool canaryKept = std::filesystem::exists(canary / "keep");
    std::filesystem::remove_all(canary);
    std::filesystem::remove_all(scratch);
    EXPECT_TRUE(canaryKept) << result.standardOutput << result.standardError;
    EXPECT_EQ(result.exitStatus, 0) << result.standardOutput << result.standardError;
    EXPECT_FALSE(std::filesystem::exists(scratch)) << "the command did not run in /tmp";
}

TEST_F(FakeHome, ACatalogPathThatIsALinkIsShownUnchosenAndLeftAlone) {
    const path brew = writeFile(root / "elsewhere/Homebrew/downloads/bottle.tar.gz", 30000).parent_path().parent_path();
    testing::makeDirectory(home / "Library/Caches");
    std::filesystem::create_directory_symlink(brew, home / "Library/Caches/Homebrew");
    const auto plan = scanPlan();
    ASSERT_TRUE(plan.contains("homebrew-cache"));
    const auto& linked = plan.at("homebrew-cache");
    EXPECT_EQ(linked["preselected"], false);
    EXPECT_EQ(linked["sizeBytes"], 0);  // not measured through the link
    EXPECT_NE(linked["notes"].get<std::string>().find((home / "Library/Caches/Homebrew").string()), std::string::npos);

    // The dry run and the clean take exactly what the scan preselected, and none of it is refused.
    const auto dryRun = testing::runTool({"--catalog", "macos", "clean", "--dry-run"}, environment);
    for (const auto& [id, target] : plan)
        EXPECT_EQ(dryRun.standardOutput.find(id) != std::string::npos, target["preselected"] == true) << id;
    const auto result = testing::runTool({"--catalog", "macos", "clean", "--yes"}, environment);
    EXPECT_EQ(result.exitStatus, 0) << result.standardOutput;
    EXPECT_TRUE(std::filesystem::is_symlink(home / "Library/Caches/Homebrew"));
    EXPECT_TRUE(std::filesystem::exists(brew / "downloads/bottle.tar.gz"));
}

}  // namespace
}  // namespace kelvo
