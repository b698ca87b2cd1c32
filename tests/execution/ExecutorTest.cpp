#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>

#include "ExecutionSupport.h"
#include "kelvo/DirectorySizer.h"
#include "kelvo/Executor.h"
#include "kelvo/L10n.h"
#include "support/DeepTree.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using fs::path;
using testing::RecordingRunner;
using testing::TempDir;
using testing::commandTarget;
using testing::makeDirectory;
using testing::pathTarget;
using testing::present;
using testing::texts;
using testing::writeFile;

// A home and a temporary folder as allowed roots, and a folder outside both.
class ExecutorTest : public ::testing::Test {
protected:
    ExecutorTest()
        : home(makeDirectory(root / "home")), tmp(makeDirectory(root / "tmp")), outside(makeDirectory(root / "outside")) {}

    Executor executor(std::vector<std::string> running = {}, std::vector<std::string> fragments = {},
                      CommandRunner runner = RecordingRunner{}) const {
        Executor result;
        result.safety = testing::guardFor(home, {home, tmp});
        result.probe = std::make_shared<StubProcessProbe>(running, std::move(fragments));
        result.runCommand = std::move(runner);
        return result;
    }

    TempDir root;
    path home;
    path tmp;
    path outside;
};

TEST_F(ExecutorTest, GuardedProcessesStopATargetUnlessForced) {
    const path data = writeFile(home / "docker-data/vms/disk.img", 8192).parent_path();
    const path sibling = writeFile(home / "docker-data/settings.json", 10);
    const auto target = pathTarget("docker-vms", Family::docker, {data});

    const auto guarded = executor({"Docker"}).execute({target});
    EXPECT_TRUE(guarded.deleted.empty());
    ASSERT_EQ(guarded.skipped.size(), 1u);
    EXPECT_EQ(guarded.skipped[0], (ReportEntry{"docker-vms", L10n::t("exec.skip.processRunning", "Docker")}));
    EXPECT_TRUE(fs::exists(data / "disk.img"));

    auto forced = executor({"Docker", "com.docker.backend"});
    forced.force = true;
    const auto report = forced.execute({target});
    EXPECT_EQ(report.deleted, std::vector<std::string>{"docker-vms"});
    EXPECT_TRUE(report.skipped.empty());
    EXPECT_FALSE(present(data));
    EXPECT_TRUE(fs::exists(sibling));
}

TEST_F(ExecutorTest, ForceStillSkipsARunningApplicationBundle) {
    const path bundle = home / "Applications/Docker Helper.app";
    testing::writeAppBundle(bundle, "com.acme.helper", "helper");
    auto forced = executor({"Docker Helper"});
    forced.force = true;
    const auto report = forced.execute({pathTarget("helper", Family::docker, {bundle})});
    EXPECT_TRUE(report.deleted.empty());
    EXPECT_EQ(texts(report.skipped),
              std::vector<std::string>{"helper: " + L10n::t("exec.skip.appRunning", bundle.string())});
    EXPECT_TRUE(fs::exists(bundle / "Contents/Info.plist"));
}

TEST_F(ExecutorTest, GuardedNamesAreAskedInListOrder) {
    const path cache = writeFile(home / ".gradle/caches/modules/a.jar", 100).parent_path().parent_path();
    const auto target = pathTarget("gradle", Family::androidGradle, {cache});
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"java"}, "java"},
        {{"java", "qemu-system-aarch64"}, "qemu-system-aarch64"},
        {{"java", "studio", "qemu-system-x86_64"}, "studio"},
    };
    for (const auto& [running, expected] : cases) {
        const auto report = executor(running).execute({target});
        ASSERT_EQ(report.skipped.size(), 1u) << expected;
        EXPECT_EQ(report.skipped[0].text, L10n::t("exec.skip.processRunning", expected));
        EXPECT_TRUE(fs::exists(cache / "modules/a.jar"));
    }
    // A family without guarded programs does not care what runs.
    const auto report = executor({"java", "Xcode"}).execute({pathTarget("npm", Family::jsPackages, {cache})});
    EXPECT_EQ(report.deleted, std::vector<std::string>{"npm"});
    EXPECT_FALSE(present(cache));
    EXPECT_TRUE(fs::is_directory(home / ".gradle"));
}

TEST_F(ExecutorTest, DryRunCountsEstimatesAndTouchesNothing) {
    const path cache = writeFile(home / "Library/Caches/tool/blob", 20000).parent_path();
    const path foreign = writeFile(outside / "elsewhere", 10);
    RecordingRunner runner;
    auto dry = executor({}, {}, runner);
    dry.dryRun = true;
    const auto report = dry.execute({
        pathTarget("cache", Family::devMisc, {cache}, 1000),
        commandTarget("brew", Family::devMisc, "brew cleanup", 500),
        pathTarget("foreign", Family::devMisc, {foreign}, 7),
        pathTarget("empty", Family::devMisc, {}, 3),
    });
    EXPECT_EQ(report.deleted, (std::vector<std::string>{"cache", "brew", "empty"}));
    EXPECT_EQ(report.freedBytes, 1503);
    EXPECT_TRUE(report.freedUnknown.empty());
    EXPECT_EQ(texts(report.skipped),
              std::vector<std::string>{"foreign: " + L10n::t("exec.skip.protectedPath", foreign.string())});
    EXPECT_TRUE(runner.calls->empty());
    EXPECT_TRUE(fs::exists(cache / "blob"));
    EXPECT_TRUE(fs::exists(foreign));
}

TEST_F(ExecutorTest, CommandExitStatusesBecomeErrorsOrDeletions) {
    std::vector<std::string> calls;
    const std::map<std::string, int> statuses{{"missing-tool clean", 127}, {"tool fail", 2}, {"tool crash", -1},
                                              {"tool clean", 0}};
    const auto report = executor({}, {}, [&](const std::string& line, const ShellVariables&) {
                            calls.push_back(line);
                            return statuses.at(line);
                        }).execute({
        commandTarget("missing", Family::devMisc, "missing-tool clean", 100),
        commandTarget("failing", Family::devMisc, "tool fail", 100),
        commandTarget("crashing", Family::devMisc, "tool crash", 100),
        commandTarget("working", Family::devMisc, "tool clean", 100),
    });
    EXPECT_EQ(calls, (std::vector<std::string>{"missing-tool clean", "tool fail", "tool crash", "tool clean"}));
    EXPECT_EQ(texts(report.errors), (std::vector<std::string>{
                                        "missing: " + L10n::t("exec.error.toolNotFound"),
                                        "failing: " + L10n::t("exec.error.exitCode", std::int64_t{2}),
                                        "crashing: " + L10n::t("exec.error.exitCode", std::int64_t{-1}),
                                    }));
    EXPECT_NE(report.errors[1].text.find('2'), std::string::npos);
    EXPECT_NE(report.errors[2].text.find("-1"), std::string::npos);
    EXPECT_EQ(report.deleted, std::vector<std::string>{"working"});
    EXPECT_EQ(report.freedUnknown, std::vector<std::string>{"working"});
    EXPECT_EQ(report.freedBytes, 0);
    EXPECT_TRUE(report.skipped.empty());
}

TEST_F(ExecutorTest, ShellRunsTheLineWithTheGivenVariablesAndReportsItsStatus) {
    // Set over whatever this process has: the test's own TMPDIR is not the one given.
    EXPECT_EQ(Executor::shell("touch \"$TMPDIR/ran\" && exit 3", {{"TMPDIR", tmp.string()}}), 3);
    EXPECT_TRUE(fs::exists(tmp / "ran"));
    EXPECT_EQ(Executor::shell("no-such-tool-for-kelvo-tests 2>/dev/null", {}), 127);
}

TEST_F(ExecutorTest, OneRefusedPathLeavesEveryPathOfTheTarget) {
    const path first = writeFile(home / "Library/Caches/first/a", 100).parent_path();
    const path second = writeFile(outside / "second/b", 100).parent_path();
    const path flutter = writeFile(home / ".flutter/settings", 10);
    const auto report = executor().execute({
        pathTarget("outside", Family::devMisc, {first, second}),
        pathTarget("flutter", Family::flutterDart, {first, flutter}),
    });
    EXPECT_EQ(texts(report.skipped), (std::vector<std::string>{
                                         "outside: " + L10n::t("exec.skip.protectedPath", second.string()),
                                         "flutter: " + L10n::t("exec.skip.protectedPath", flutter.string()),
                                     }));
    EXPECT_TRUE(report.deleted.empty());
    EXPECT_TRUE(report.partial.empty());
    EXPECT_EQ(report.freedBytes, 0);
    EXPECT_TRUE(fs::exists(first / "a"));
    EXPECT_TRUE(fs::exists(second / "b"));
    EXPECT_TRUE(fs::exists(flutter));
}

TEST_F(ExecutorTest, VanishedPathsAndEmptyTargetsEndDeletedWithNothingFreed) {
    const auto report = executor().execute({
        pathTarget("gone", Family::devMisc, {home / "Library/Caches/gone", home / "no/such/file"}, 5000),
        pathTarget("none", Family::devMisc, {}, 5000),
    });
    EXPECT_EQ(report.deleted, (std::vector<std::string>{"gone", "none"}));
    EXPECT_EQ(report.freedBytes, 0);
    EXPECT_TRUE(report.skipped.empty());
}

TEST_F(ExecutorTest, RemovalFreesWhatWasMeasuredAndKeepsEverythingAround) {
    const path tool = home / "Library/Caches/tool";
    writeFile(tool / "a/b/c/blob", 50000);
    writeFile(tool / "a/small", 100);
    writeFile(tool / ".hidden/x", 3000);
    const path canary = writeFile(outside / "shared/canary", 4096);
    fs::create_directory_symlink(outside / "shared", tool / "a/link-to-outside");
    fs::create_symlink(canary, tool / "file-link");
    const path log = writeFile(home / "logs/build.log", 12000);
    const path neighbour = writeFile(home / "Library/Caches/other/keep", 10);

    const std::int64_t expected = DirectorySizer().measure(tool).bytes + testing::allocatedBytes(log);
    ASSERT_GT(expected, 60000);
    const auto report = executor().execute({pathTarget("caches", Family::devMisc, {tool, log})});
    EXPECT_EQ(report.deleted, std::vector<std::string>{"caches"});
    EXPECT_EQ(report.freedBytes, expected);
    EXPECT_TRUE(report.skipped.empty());
    EXPECT_FALSE(present(tool));
    EXPECT_FALSE(present(log));
    EXPECT_TRUE(fs::is_directory(home / "logs"));
    EXPECT_TRUE(fs::exists(neighbour));
    EXPECT_TRUE(fs::exists(canary));
    EXPECT_EQ(fs::file_size(canary), 4096u);
}

TEST_F(ExecutorTest, TargetsRemovedSideBySideAreReportedAsOneAfterAnother) {
    // Large trees, so that the small one after them finishes first; a target inside the
    // first, which must wait for it and then finds nothing left.
    const path large = home / ".cache/large";
    const path inner = large / "inner";
    const path bulk = home / ".cache/bulk";
    for (int folder = 0; folder < 40; ++folder) {
        writeFile(inner / ("d" + std::to_string(folder)) / "blob", 8000);
        writeFile(bulk / ("d" + std::to_string(folder)) / "blob", 8000);
    }
    const path small = writeFile(home / "Library/Caches/small/file", 100).parent_path();
    const path foreign = writeFile(outside / "foreign", 10);
    const path neighbour = writeFile(home / ".cache/keep", 10);
    const DirectorySizer sizer;
    const std::int64_t expected = sizer.measure(large).bytes + sizer.measure(small).bytes + sizer.measure(bulk).bytes;
    // The command stands for a tool working on what the targets before it left.
    const auto runner = [&](const std::string&, const ShellVariables&) {
        return present(large) || present(small) || present(bulk) ? 9 : 0;
    };

    const auto report = executor({}, {}, runner).execute({
        pathTarget("large", Family::devMisc, {large}),
        pathTarget("inner", Family::devMisc, {inner}),
        pathTarget("small", Family::devMisc, {small}),
        pathTarget("foreign", Family::devMisc, {foreign}),
        pathTarget("bulk", Family::devMisc, {bulk}),
        commandTarget("tool", Family::devMisc, "tool clean", 0),
    });
    EXPECT_EQ(report.deleted, (std::vector<std::string>{"large", "inner", "small", "bulk", "tool"}));
    EXPECT_TRUE(report.errors.empty()) << texts(report.errors)[0];
    EXPECT_EQ(texts(report.skipped),
              std::vector<std::string>{"foreign: " + L10n::t("exec.skip.protectedPath", foreign.string())});
    EXPECT_EQ(report.freedBytes, expected);
    EXPECT_FALSE(present(large));
    EXPECT_FALSE(present(bulk));
    EXPECT_TRUE(fs::exists(neighbour));
    EXPECT_TRUE(fs::exists(foreign));
}

TEST_F(ExecutorTest, LinksAsTargetsAreNeverRemovedNorFollowed) {
    const path real = writeFile(home / "cache/real", 100);
    const path link = home / "cache/link";
    fs::create_symlink(real, link);
    const path canary = writeFile(outside / "kept/canary", 100);
    const path outsideLink = home / "cache/outside-link";
    fs::create_directory_symlink(outside / "kept", outsideLink);

    const auto report = executor().execute({
        pathTarget("final", Family::devMisc, {link}),
        pathTarget("escape", Family::devMisc, {outsideLink}),
    });
    EXPECT_EQ(texts(report.skipped), (std::vector<std::string>{
                                         "final: " + L10n::t("exec.skip.symlinkFinal", link.string()),
                                         "escape: " + L10n::t("exec.skip.protectedPath", outsideLink.string()),
                                     }));
    EXPECT_TRUE(report.deleted.empty());
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(fs::exists(real));
    EXPECT_TRUE(fs::is_symlink(outsideLink));
    EXPECT_TRUE(fs::exists(canary));
}

TEST_F(ExecutorTest, ALinkInTheParentChainStopsTheTarget) {
    // Below a short path, and below one longer than PATH_MAX that the system cannot resolve.
    for (const path& base : {home, testing::makeFolderChain(home / "deep", 22, std::string(200, 'n'))}) {
        const path file = testing::writeDeepFile(base / "real/sub/target/file", 100);
        testing::makeDeepSymlink("real", base / "via");
        for (const bool dryRun : {true, false}) {
            Executor run = executor();
            run.dryRun = dryRun;
            const auto report = run.execute({pathTarget("chain", Family::devMisc, {base / "via/sub/target"})});
            const std::string reason = L10n::t("exec.skip.symlinkAncestor", (base / "real/sub").string());
            EXPECT_EQ(texts(report.skipped), std::vector<std::string>{"chain: " + reason})
                << base.native().size() << " bytes of path";
            EXPECT_TRUE(report.deleted.empty());
        }
        EXPECT_TRUE(testing::deepExists(file));
        EXPECT_TRUE(testing::deepExists(base / "via"));
    }
}

TEST_F(ExecutorTest, UnsafeReasonNamesEachKindOfLink) {
    const auto checks = executor();
    const path plain = writeFile(home / "cache/plain", 10);
    EXPECT_EQ(checks.unsafeToDeleteReason(plain), std::nullopt);
    EXPECT_EQ(checks.unsafeToDeleteReason(home / "cache/missing"), std::nullopt);
    fs::create_symlink(home / "nowhere", home / "cache/dangling");
    EXPECT_EQ(checks.unsafeToDeleteReason(home / "cache/./dangling"),
              L10n::t("exec.skip.symlinkFinal", (home / "cache/dangling").string()));
    fs::create_directory_symlink(outside, home / "cache/out");
    EXPECT_EQ(checks.unsafeToDeleteReason(home / "cache/out/x"),
              L10n::t("exec.skip.symlinkAncestor", outside.string()));
}

TEST_F(ExecutorTest, CommandsRunWithTheRunsVariablesOnlyWhenEveryPlaceTheyNamePasses) {
    writeFile(tmp / "metro-cache/blob", 100);
    makeDirectory(tmp / "haste-map-1");
    fs::create_directory_symlink(makeDirectory(tmp / "link-0"), tmp / "link-1");
    RecordingRunner runner;
    auto checked = executor({}, {}, runner);
    checked.shellVariables = {{"HOME", home.string()}, {"TMPDIR", tmp.string()}};
    const std::string metro = "rm -rf \"$TMPDIR\"/metro-cache \"$TMPDIR\"/haste-map-*";
    const std::vector<CleanTarget> targets{
        commandTarget("metro", Family::reactNative, metro, 0),
        commandTarget("outside", Family::devMisc, "rm -rf " + (outside / "x").string(), 0),
        commandTarget("home", Family::devMisc, "rm -rf ~", 0),
        commandTarget("linked", Family::devMisc, "rm -rf \"$TMPDIR\"/link-*", 0),
        commandTarget("unread", Family::devMisc, "rm -rf build", 0),
    };
    const std::vector<std::string> refusals{
        "outside: " + L10n::t("exec.skip.protectedPath", (outside / "x").string()),
        "home: " + L10n::t("exec.skip.protectedPath", home.string()),
        "linked: " + L10n::t("exec.skip.symlinkFinal", (tmp / "link-1").string()),
        "unread: " + L10n::t("exec.skip.command.place", std::string("build")),
    };
    // A dry run refuses the same commands as a real run.
    for (const bool dryRun : {true, false}) {
        checked.dryRun = dryRun;
        const auto report = checked.execute(targets);
        EXPECT_EQ(report.deleted, std::vector<std::string>{"metro"}) << dryRun;
        EXPECT_EQ(texts(report.skipped), refusals) << dryRun;
    }
    EXPECT_EQ(*runner.calls, std::vector<std::string>{metro});
    EXPECT_EQ(*runner.variables, std::vector<ShellVariables>{checked.shellVariables});
}

TEST_F(ExecutorTest, PathsOfAnotherUserAreNeverRemoved) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "giving a folder to uid 65534 needs root";
    const path theirs = writeFile(tmp / "metro-theirs/cache", 100).parent_path();
    testing::chownTree(theirs, testing::nobodyId, testing::nobodyId);
    const path mine = writeFile(tmp / "metro-mine/cache", 100).parent_path();
    RecordingRunner runner;
    auto checked = executor({}, {}, runner);
    checked.shellVariables = {{"TMPDIR", tmp.string()}};
    const auto report = checked.execute({
        pathTarget("theirs", Family::devMisc, {theirs}),
        pathTarget("both", Family::devMisc, {mine, theirs}),
        commandTarget("pattern", Family::devMisc, "rm -rf \"$TMPDIR\"/metro-*", 0),
    });
    const std::string reason = L10n::t("exec.skip.otherOwner", theirs.string());
    EXPECT_EQ(texts(report.skipped),
              (std::vector<std::string>{"theirs: " + reason, "both: " + reason, "pattern: " + reason}));
    EXPECT_TRUE(report.deleted.empty());
    EXPECT_TRUE(runner.calls->empty());
    EXPECT_TRUE(fs::exists(theirs / "cache"));
    EXPECT_TRUE(fs::exists(mine / "cache"));
}

TEST_F(ExecutorTest, ProtectedApplicationsAreTestedOnlyInThePrepareFamilies) {
    const path apps = home / "Applications";
    testing::writeAppBundle(apps / "Safari.app", "com.apple.Safari", "Safari");
    testing::writeAppBundle(apps / "Browser Copy.app", "com.apple.Safari", "Browser");
    testing::writeAppBundle(apps / "Editor.app", "com.microsoft.VSCode", "Electron");
    testing::writeAppBundle(apps / "Cursor.app", "com.acme.editor", "Cursor");
    testing::writeAppBundle(apps / "Tool.app", "com.acme.tool", "Tool");
    const path leftover = writeFile(home / "Library/Application Support/com.google.Keep/data", 100).parent_path();

    const auto report = executor().execute({
        pathTarget("app:com.apple.Safari", Family::unusedApps, {apps / "Safari.app"}),
        pathTarget("leftover:com.google.Keep", Family::appLeftovers, {leftover}),
        pathTarget("app-path:editor", Family::unusedApps, {apps / "Editor.app"}),
        pathTarget("app-path:cursor", Family::unusedApps, {apps / "Cursor.app"}),
        pathTarget("app:com.acme.tool", Family::unusedApps, {apps / "Tool.app"}),
        pathTarget("app:com.apple.Safari", Family::xcodeCore, {apps / "Browser Copy.app"}),
    });
    EXPECT_EQ(texts(report.skipped),
              (std::vector<std::string>{
                  "app:com.apple.Safari: " + L10n::t("exec.skip.protectedApp.id", "com.apple.Safari"),
                  "leftover:com.google.Keep: " + L10n::t("exec.skip.protectedApp.id", "com.google.Keep"),
                  "app-path:editor: " + L10n::t("exec.skip.protectedApp.id", "com.microsoft.VSCode"),
                  "app-path:cursor: " + L10n::t("exec.skip.protectedApp.name", "Cursor"),
              }));
    EXPECT_EQ(report.deleted, (std::vector<std::string>{"app:com.acme.tool", "app:com.apple.Safari"}));
    EXPECT_TRUE(fs::exists(apps / "Safari.app/Contents/Info.plist"));
    EXPECT_TRUE(fs::exists(leftover / "data"));
    EXPECT_TRUE(fs::exists(apps / "Editor.app/Contents/Info.plist"));
    EXPECT_TRUE(fs::exists(apps / "Cursor.app/Contents/Info.plist"));
    EXPECT_FALSE(present(apps / "Tool.app"));
    EXPECT_FALSE(present(apps / "Browser Copy.app"));
}

TEST_F(ExecutorTest, RunningBundlesAreFoundByNameExecutableOrCommandLine) {
    const path bundle = home / "Applications/Foo.app";
    testing::writeAppBundle(bundle, "com.acme.foo", "FooBin");
    const auto target = pathTarget("app:com.acme.foo", Family::unusedApps, {home / "Library/Caches/none", bundle});
    const std::string expected = L10n::t("exec.skip.appRunning", bundle.string());

    EXPECT_EQ(executor({"Foo"}).runningBundle(target), bundle.string());
    EXPECT_EQ(executor({"FooBin"}).runningBundle(target), bundle.string());
    EXPECT_EQ(executor({}, {(bundle / "Contents/MacOS").string()}).runningBundle(target), bundle.string());
    EXPECT_EQ(executor({}, {(bundle / "Contents/MacOS/FooBin").string() + " --flag"}).runningBundle(target),
              bundle.string());
    EXPECT_EQ(executor({"Bar", "Foo.app"}).runningBundle(target), std::nullopt);
    EXPECT_EQ(executor({}, {"/elsewhere/Foo.app/Contents/MacOS"}).runningBundle(target), std::nullopt);
    EXPECT_EQ(executor({"Foo"}).runningBundle(commandTarget("cmd", Family::devMisc, "Foo.app", 0)), std::nullopt);

    const auto skipped = executor({}, {(bundle / "Contents/MacOS").string()}).execute({target});
    EXPECT_EQ(texts(skipped.skipped), std::vector<std::string>{"app:com.acme.foo: " + expected});
    EXPECT_TRUE(fs::exists(bundle / "Contents/MacOS/FooBin"));

    const auto removed = executor({"Bar"}).execute({target});
    EXPECT_EQ(removed.deleted, std::vector<std::string>{"app:com.acme.foo"});
    EXPECT_FALSE(present(bundle));
    EXPECT_TRUE(fs::is_directory(home / "Applications"));
}

TEST(StubProcessProbe, FragmentsMatchWhenEitherContainsTheOther) {
    const StubProcessProbe probe({}, {"/Applications/Foo.app/Contents/MacOS"});
    EXPECT_TRUE(probe.isRunningUnder("/Applications/Foo.app/Contents/MacOS/Foo"));
    EXPECT_TRUE(probe.isRunningUnder("Foo.app"));
    EXPECT_TRUE(probe.isRunningUnder("/Applications/Foo.app/Contents/MacOS"));
    EXPECT_FALSE(probe.isRunningUnder(""));
    EXPECT_FALSE(probe.isRunningUnder("/Applications/Bar.app/Contents/MacOS"));
    EXPECT_FALSE(probe.isRunning("Foo"));

    const StubProcessProbe named({"Xcode", "java", "java"});
    EXPECT_EQ(named.running.size(), 2u);
    EXPECT_TRUE(named.isRunning("java"));
    EXPECT_FALSE(named.isRunning("jav"));
    EXPECT_FALSE(named.isRunning("Java"));
    EXPECT_FALSE(named.isRunningUnder("java"));
}

}  // namespace
}  // namespace kelvo
