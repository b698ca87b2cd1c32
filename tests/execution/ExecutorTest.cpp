#include "ExecutionSupport.h"
#include "kelvo/DirectorySizer.h"
#include "kelvo/L10n.h"
#include "support/AppBundle.h"
#include "support/Unprivileged.h"

namespace kelvo::testing {
namespace {

namespace fs = std::filesystem;
using fs::path;
using enum Reason::Code;
using ExecutorTest = ExecutionTest;

// The programs each family guards, and force over them, are the clean and prepare services' to show.
TEST_F(ExecutorTest, ARunningBundleStopsItsTargetEvenWhenForced) {
    const path bundle = home / "Applications/Foo.app", macOS = bundle / "Contents/MacOS";
    makeApp(home / "Applications", "Foo", {.bundleID = "com.acme.foo", .executable = "FooBin"});
    const path npm = writeFile(home / ".npm/_cacache/a.json", 100).parent_path();
    const auto app = pathTarget("app:foo", {home / "Library/Caches/none", bundle}, Family::unusedApps);
    const std::string busy = skipped("app:foo", appRunning, bundle.string());
    const struct { std::vector<std::string> running, fragments; bool force; CleanTarget target; std::string first; } cases[] = {
        // Found by its name, its executable or a command line inside it.
        {{"Foo"}, {}, false, app, busy}, {{"FooBin"}, {}, false, app, busy},
        {{}, {macOS.string()}, false, app, busy}, {{}, {(macOS / "FooBin").string() + " --flag"}, true, app, busy},
        {{"Foo"}, {}, true, app, busy},
        // What goes: another bundle of the same name, a family that guards no program.
        {{"Bar", "Foo.app"}, {"/elsewhere/Foo.app/Contents/MacOS"}, false, app, "deleted app:foo"},
        {{"java", "Xcode"}, {}, false, pathTarget("npm", {npm}, Family::jsPackages), "deleted npm"},
    };
    for (const auto& c : cases) {
        auto run = executor(c.running, c.fragments);
        run.force = c.force;
        const std::string report = summary(run.execute({c.target}));
        EXPECT_EQ(report.substr(0, report.find('\n')), c.first) << c.target.id << " " << c.running.size();
    }
    EXPECT_FALSE(deepExists(bundle) || deepExists(npm));
    for (const char* kept : {"Applications", ".npm"}) EXPECT_TRUE(fs::is_directory(home / kept)) << kept;
    EXPECT_EQ(executor({"Foo"}).runningBundle(commandTarget("cmd", "Foo.app")), std::nullopt);
}

TEST_F(ExecutorTest, ARefusedPathOrLinkLeavesEveryPathOfItsTargetAndVanishedPathsFreeNothing) {
    const path first = writeFile(home / "Library/Caches/first/a", 100).parent_path();
    const path second = writeFile(outside / "second/b", 100).parent_path();
    const path flutter = writeFile(home / ".flutter/settings", 10), real = writeFile(home / "cache/real", 100);
    const path link = home / "cache/link", escape = home / "cache/outside-link", dangling = home / "cache/dangling";
    fs::create_symlink(real, link);
    fs::create_directory_symlink(outside, escape);
    fs::create_symlink(home / "nowhere", dangling);
    const auto report = executor().execute({
        pathTarget("outside", {first, second}), pathTarget("flutter", {first, flutter}, Family::flutterDart),
        pathTarget("final", {link}), pathTarget("escape", {escape}), pathTarget("dangling", {home / "cache/./dangling"}),
        pathTarget("gone", {home / "Library/Caches/gone", home / "no/such/file"}, Family::devMisc, 5000),
    });
    EXPECT_EQ(summary(report), lines({"deleted gone", skipped("outside", protectedPath, second.string()),
                                      skipped("flutter", protectedPath, flutter.string()),
                                      skipped("final", symlinkFinal, link.string()),
                                      skipped("escape", protectedPath, escape.string()),
                                      skipped("dangling", symlinkFinal, dangling.string()), "freed 0"}));
    for (const path& kept : {first / "a", second / "b", flutter, real, link, dangling}) EXPECT_TRUE(deepExists(kept)) << kept;
}

TEST_F(ExecutorTest, TargetsRemovedSideBySideFreeWhatWasMeasuredAndKeepEverythingAround) {
    // Large trees, so that the small one after them finishes first; a target inside the
    // first, which must wait for it and then finds nothing left; links out of a tree,
    // dangling and looping ones.
    const path large = home / ".cache/large", bulk = home / ".cache/bulk";
    for (int folder = 0; folder < 40; ++folder) {
        writeFile(large / "inner" / ("d" + std::to_string(folder)) / "blob", 8000);
        writeFile(bulk / ("d" + std::to_string(folder)) / "blob", 8000);
    }
    const path canary = writeFile(outside / "shared/canary", 4096);
    fs::create_directory_symlink(outside / "shared", large / "link-to-outside");
    fs::create_symlink(canary, bulk / "file-link");
    fs::create_symlink(home / "nowhere", bulk / "dangling");
    fs::create_directory_symlink(bulk, bulk / "d0/loop");
    const path small = writeFile(home / "Library/Caches/small/file", 100).parent_path();
    const path log = writeFile(home / "logs/build.log", 12000), foreign = writeFile(outside / "foreign", 10);
    const path neighbour = writeFile(home / ".cache/keep", 10);
    const DirectorySizer sizer;
    const std::int64_t expected = sizer.size(large) + sizer.size(small) + sizer.size(bulk) + allocatedBytes(log);
    // The command stands for a tool working on what the targets before it left: all of it gone.
    const auto runner = [&](const std::string&, const ShellVariables&) {
        return deepExists(large) || deepExists(small) || deepExists(bulk) || deepExists(log) ? 9 : 0;
    };
    const auto report = executor({}, {}, runner).execute({
        pathTarget("large", {large}), pathTarget("inner", {large / "inner"}), pathTarget("small", {small, log}),
        pathTarget("foreign", {foreign}), pathTarget("bulk", {bulk}), commandTarget("tool", "tool clean"),
    });
    EXPECT_EQ(summary(report), lines({"deleted large", "deleted inner", "deleted small", "deleted bulk", "deleted tool",
                                      "unknown tool", skipped("foreign", protectedPath, foreign.string()),
                                      "freed " + std::to_string(expected)}));
    EXPECT_TRUE(fs::is_directory(home / "logs") && fs::exists(neighbour) && fs::exists(foreign));
    EXPECT_EQ(fs::file_size(canary), 4096u);
}

TEST_F(ExecutorTest, ALinkInTheParentChainStopsTheTargetAndALongPathDoesNot) {
    // Below a short path, and below one longer than PATH_MAX that the system cannot resolve.
    for (const path& base : {home, makeFolderChain(home / "deep", 22, std::string(200, 'n'))}) {
        SCOPED_TRACE(std::to_string(base.native().size()) + " bytes of path");
        const path file = writeDeepFile(base / "real/sub/target/file", 100);
        makeDeepSymlink("real", base / "via");
        EXPECT_EQ(summary(executor().execute({pathTarget("chain", {base / "via/sub/target"})})),
                  lines({skipped("chain", symlinkAncestor, (base / "real/sub").string()), "freed 0"}));
        EXPECT_TRUE(deepExists(file));
        // Named without the link, the same target goes, however long its path.
        const std::string report = summary(executor().execute({pathTarget("direct", {base / "real/sub/target"})}));
        EXPECT_EQ(report.substr(0, 15), "deleted direct\n") << report;
        EXPECT_FALSE(deepExists(base / "real/sub/target"));
        EXPECT_TRUE(deepExists(base / "real/sub") && deepExists(base / "via"));
    }
}

TEST_F(ExecutorTest, CommandsRunWithTheRunsVariablesOnlyWhenEveryPlaceTheyNamePasses) {
    writeFile(tmp / "metro-cache/blob", 100);
    makeDirectory(tmp / "haste-map-1");
    fs::create_directory_symlink(makeDirectory(tmp / "link-0"), tmp / "link-1");
    std::vector<std::pair<std::string, ShellVariables>> calls;
    auto checked = executor({}, {}, [&](const std::string& line, const ShellVariables& variables) {
        calls.emplace_back(line, variables);
        return 0;
    });
    checked.shellVariables = {{"HOME", home.string()}, {"TMPDIR", tmp.string()}};
    const std::string metro = "rm -rf \"$TMPDIR\"/metro-cache \"$TMPDIR\"/haste-map-*";
    const std::vector<CleanTarget> targets{
        commandTarget("metro", metro), commandTarget("outside", "rm -rf " + (outside / "x").string()),
        commandTarget("home", "rm -rf ~"), commandTarget("linked", "rm -rf \"$TMPDIR\"/link-*"),
        commandTarget("unread", "rm -rf build"),
    };
    // A dry run refuses the same commands as a real run.
    for (const bool dryRun : {true, false}) {
        checked.dryRun = dryRun;
        EXPECT_EQ(summary(checked.execute(targets)),
                  std::string("deleted metro\n") + (dryRun ? "" : "unknown metro\n") +
                      lines({skipped("outside", protectedPath, (outside / "x").string()),
                             skipped("home", protectedPath, home.string()),
                             skipped("linked", symlinkFinal, (tmp / "link-1").string()),
                             skipped("unread", commandPlace, "build"), "freed 0"}))
            << dryRun;
    }
    EXPECT_EQ(calls, (std::vector<std::pair<std::string, ShellVariables>>{{metro, checked.shellVariables}}));
}

TEST_F(ExecutorTest, PathsOfAnotherUserAreNeverRemoved) {
    if (!runningAsRoot()) GTEST_SKIP() << "giving a folder to uid 65534 needs root";
    const path theirs = writeFile(tmp / "metro-theirs/cache", 100).parent_path();
    chownTree(theirs, nobodyId, nobodyId);
    const path mine = writeFile(tmp / "metro-mine/cache", 100).parent_path();
    auto checked = executor({}, {}, Executor::shell);
    checked.shellVariables = {{"TMPDIR", tmp.string()}};
    const auto report = checked.execute({pathTarget("theirs", {theirs}), pathTarget("both", {mine, theirs}),
                                         commandTarget("pattern", "rm -rf \"$TMPDIR\"/metro-*")});
    EXPECT_EQ(summary(report), lines({skipped("theirs", otherOwner, theirs.string()), skipped("both", otherOwner, theirs.string()),
                                      skipped("pattern", otherOwner, theirs.string()), "freed 0"}));
    EXPECT_TRUE(fs::exists(theirs / "cache") && fs::exists(mine / "cache"));
}

TEST_F(ExecutorTest, ProtectedApplicationsAreTestedOnlyInThePrepareFamilies) {
    const path apps = home / "Applications";
    for (const auto& [name, id, executable] : {std::tuple{"Safari", "com.apple.Safari", "Safari"},
                                               {"Browser Copy", "com.apple.Safari", "Browser"},
                                               {"Editor", "com.microsoft.VSCode", "Electron"},
                                               {"Cursor", "com.acme.editor", "Cursor"}, {"Tool", "com.acme.tool", "Tool"}})
        makeApp(apps, name, {.bundleID = id, .executable = executable});
    const path leftover = writeFile(home / "Library/Application Support/com.google.Keep/data", 100).parent_path();
    const std::int64_t freed = DirectorySizer().size(apps / "Tool.app") + DirectorySizer().size(apps / "Browser Copy.app");
    const auto report = executor().execute({
        pathTarget("app:com.apple.Safari", {apps / "Safari.app"}, Family::unusedApps),
        pathTarget("leftover:com.google.Keep", {leftover}, Family::appLeftovers),
        pathTarget("app-path:editor", {apps / "Editor.app"}, Family::unusedApps),
        pathTarget("app-path:cursor", {apps / "Cursor.app"}, Family::unusedApps),
        pathTarget("app:com.acme.tool", {apps / "Tool.app"}, Family::unusedApps),
        pathTarget("app:com.apple.Safari", {apps / "Browser Copy.app"}, Family::xcodeCore),
    });
    EXPECT_EQ(summary(report), lines({"deleted app:com.acme.tool", "deleted app:com.apple.Safari",
                                      skipped("app:com.apple.Safari", protectedAppID, "com.apple.Safari"),
                                      skipped("leftover:com.google.Keep", protectedAppID, "com.google.Keep"),
                                      skipped("app-path:editor", protectedAppID, "com.microsoft.VSCode"),
                                      skipped("app-path:cursor", protectedAppName, "Cursor"), "freed " + std::to_string(freed)}));
    for (const char* kept : {"Safari.app", "Editor.app", "Cursor.app"})
        EXPECT_TRUE(fs::exists(apps / kept / "Contents/Info.plist")) << kept;
    EXPECT_TRUE(fs::exists(leftover / "data"));
    EXPECT_FALSE(deepExists(apps / "Tool.app") || deepExists(apps / "Browser Copy.app"));
}

// Under permission bits, which root ignores: the execute runs in a child that has dropped to
// uid/gid 65534, on a tree handed over to that user. A locked parent is never opened up; a
// read-only tree inside one's own folder is; what cannot be looked at is never counted as gone.
TEST_F(ExecutorTest, ReadOnlyTreesAreOpenedUpButNeverTheParentOfATargetOrAnUnreadableOne) {
    const path tree = home / "cache/readonly";
    writeFile(tree / "a/b/file", 9000);
    writeFile(tree / "a/secret/hidden", 4000);
    writeFile(tree / "no-search/file", 3000);
    writeFile(tree / "write-search-only/file", 3000);
    writeFile(tree / "top-file", 100);
    const path neighbour = writeFile(home / "cache/neighbour/file", 100).parent_path();
    const path locked = home / "cache/locked";
    const path file = writeFile(locked / "item.log", 4000);
    const path folder = writeFile(locked / "folder/inner", 4000).parent_path();
    const path closedItem = writeFile(home / "cache/closed/item", 4000);
    // The removing user cannot see into the three locked folders before they are opened
    // up, so what it measures as freed leaves their content out.
    const std::int64_t unseen = allocatedBytesBelow(tree / "a/secret") + allocatedBytesBelow(tree / "no-search") +
                                allocatedBytesBelow(tree / "write-search-only");
    const std::int64_t expected = DirectorySizer().measure(tree).bytes - unseen + allocatedBytes(folder / "inner");
    ASSERT_GT(unseen, 0);
    if (runningAsRoot()) chownTree(home, nobodyId, nobodyId);  // otherwise the files are ours already
    for (const auto& entry : fs::recursive_directory_iterator(tree))
        fs::permissions(entry.path(), entry.is_directory() ? fs::perms(0555) : fs::perms(0444));
    for (const auto& [place, mode] : {std::pair{tree / "a/secret", 0}, {tree / "no-search", 0600}, {tree / "write-search-only", 0300},
                                      {tree, 0555}, {neighbour, 0555}, {locked, 0555}, {home / "cache/closed", 0}})
        fs::permissions(place, fs::perms(mode));

    L10n::bundle();  // loaded before the fork: the child may not be allowed to read the texts
    const auto run = runAsUnprivileged([&] {
        return summary(executor().execute({pathTarget("readonly", {tree}), pathTarget("file", {file}),
                                           pathTarget("folder", {folder}), pathTarget("closed", {closedItem})}));
    }, nobodyId);
    fs::permissions(home / "cache/closed", fs::perms(0755));
    ASSERT_TRUE(run.output) << run.failure;
    // The folder's content could go (the folder is ours), the folder itself could not.
    EXPECT_EQ(*run.output, lines({"deleted readonly", "partial folder", skipped("file", noPermission, "item.log"),
                                  skipped("folder", systemRemnant, "folder"), skipped("closed", ownerUnknown, closedItem.string()),
                                  "freed " + std::to_string(expected)}));
    EXPECT_FALSE(deepExists(tree));
    // Only the removed tree had its bits changed.
    for (const auto& [folder, mode] : {std::pair{neighbour, 0555}, {locked, 0555}, {home / "cache", 0755}})
        EXPECT_EQ(fs::symlink_status(folder).permissions(), fs::perms(mode)) << folder;
    EXPECT_TRUE(fs::exists(neighbour / "file") && fs::exists(file) && fs::exists(closedItem) && fs::is_directory(folder));
    EXPECT_FALSE(deepExists(folder / "inner"));
}

}  // namespace
}  // namespace kelvo::testing
