// The kinds of entry on trees of their own: a command offered while its tool is there, and
// the build folders the per-project walk finds in projects (more in scenarios/cleaners.txt).
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

#include "kelvo/CleanerRegistry.h"
#include "catalog/CommandCleaner.h"
#include "catalog/PathCleaner.h"
#include "kelvo/PerProjectCleaner.h"
#include "support/DeepTree.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using Clock = PerProjectCleaner::Clock;
using Spec = PerProjectCleaner::ArtifactSpec;
using namespace std::chrono_literals;
using testing::makeDirectory, testing::writeFile;

CommandCleaner makeCommand(const std::string& command, std::int64_t estimate, CommandCleaner::ToolCheck check) {
    return CommandCleaner("some-command", "Some command", Family::reactNative, command, Level::moderate,
                          Reversibility::regenerable, RegenCost::reindex, estimate, std::move(check));
}

TEST(CommandCleaner, TheToolIsTheFirstWordSplitAtSpacesOnly) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"xcrun simctl delete unavailable", "xcrun"}, {"watchman watch-del-all; watchman shutdown-server", "watchman"},
        {"  brew cleanup -s", "brew"},  // empty pieces are left out
        {"conda", "conda"}, {"tool\tflag rest", "tool\tflag"},  // a tab stays inside the word
        {"", ""}, {"   ", "   "},  // no piece at all: the whole command
    };
    for (const auto& [command, tool] : cases) EXPECT_EQ(makeCommand(command, 0, [](auto&) { return true; }).tool(), tool) << command;
}

TEST(CommandCleaner, OffersTheWholeLineWithItsEstimateOnlyWhileTheCheckFindsItsTool) {
    std::vector<std::string> asked;
    bool installed = false;
    const std::string line = "watchman watch-del-all; watchman shutdown-server";
    const auto cleaner = makeCommand(line, 5000, [&](const std::string& tool) {
        asked.push_back(tool);
        return installed;
    });
    EXPECT_TRUE(cleaner.scan().empty());
    installed = true;  // asked again on every scan: nothing is remembered
    const auto targets = cleaner.scan();
    EXPECT_EQ(asked, (std::vector<std::string>{"watchman", "watchman"}));
    ASSERT_EQ(targets.size(), 1u);
    // A known estimate is the size, without the note of an unknown one (scenarios/cleaners.txt).
    EXPECT_EQ(std::tuple(targets[0].kind, targets[0].level, targets[0].regenCost, targets[0].sizeBytes, targets[0].notes),
              std::tuple(CleanKind::command(line), Level::moderate, RegenCost::reindex, 5000, ""));
}

// The catalog's own build-folder kinds, so the rules are checked with its patterns.
PerProjectCleaner catalogCleaner() {
    const auto cleaners = CleanerRegistry::makeCleaners(
        {.home = "/nonexistent-home", .tmpDir = "/nonexistent-tmp", .catalog = CatalogProfile::macos});
    return dynamic_cast<const PerProjectCleaner&>(*cleaners.back());
}

// Recency plays no part unless a test asks for it: every folder made before this is old enough.
PerProjectCleaner makeCleaner(std::vector<fs::path> roots, std::vector<Spec> specs = catalogCleaner().specs(),
                              std::int64_t keepRecentDays = 0, Clock::time_point now = Clock::now() + 1s) {
    return PerProjectCleaner(std::move(roots), std::move(specs), keepRecentDays, now);
}

std::set<fs::path> pathsOf(const std::vector<CleanTarget>& targets) {
    std::set<fs::path> paths;
    for (const auto& target : targets) paths.insert(target.kind.pathList().begin(), target.kind.pathList().end());
    return paths;
}

TEST(PerProjectCleaner, SiblingPatternsAreLiteralExceptForALeadingStarDot) {
    testing::TempDir temp;
    const fs::path root = temp / "root";
    const auto kind = [](std::string name, std::string sibling) {
        return Spec{std::move(name), Level::safe, Reversibility::regenerable, RegenCost::rebuild, {std::move(sibling)}};
    };
    // Beside each candidate folder, a file whose name the pattern may or may not match.
    const std::vector<std::tuple<std::string, std::string, std::string>> projects{
        {"star-in-name", "lit*eral", "out"}, {"star-as-wildcard", "literal", "out"},  // "*" inside an alternative is no wildcard
        {"suffix", "build.cfg", "out"}, {"no-dot", "cfg", "out"},  // "*.cfg" needs the dot
        {"bars", "|", "never"},  // a pattern of empty alternatives matches nothing, not even "|"
        {"marked", "marker", "padded"}, {"alone", "", "self"},  // the candidate is one of the names beside itself
    };
    for (const auto& [project, sibling, folder] : projects) {
        if (!sibling.empty()) writeFile(root / project / sibling, 1);
        writeFile(root / project / folder / "x", 4096);
    }
    const auto targets =
        makeCleaner({root}, {kind("out", "lit*eral|*.cfg"), kind("never", "|"), kind("padded", "||marker||"), kind("self", "self")}).scan();
    // A folder's kind is its name: no folder of another kind, and none of "never".
    EXPECT_EQ(pathsOf(targets), (std::set<fs::path>{root / "star-in-name/out", root / "suffix/out", root / "marked/padded",
                                                     root / "alone/self"}));
}

// Runs `work` on a thread whose stack is `bytes` long: a walk that went one call deeper
// per folder level would overflow it long before the bottom of a chain of thousands.
void runOnStackOf(std::size_t bytes, std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, bytes);
    pthread_t thread;
    const auto start = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(PerProjectCleaner, ChainsOfThousandsOfFoldersAreWalkedToTheBottomOnASmallStack) {
    testing::TempDir temp;
    const fs::path root = temp / "root";
    const fs::path bottom = testing::makeFolderChain(root / "app", 2100);
    testing::writeDeepFile(bottom / "node_modules/pkg/index.js", 4096);
    // The searches inside build folders go deep too: one finds an archive at the bottom of
    // its own chain, the other at the bottom of a chain a link leads to.
    testing::writeDeepFile(testing::makeFolderChain(root / "android/build", 500) / "app.aab", 4096);
    testing::writeDeepFile(testing::makeFolderChain(temp / "exports", 1000) / "App.xcarchive/Info.plist", 4096);
    fs::create_directory_symlink(temp / "exports", makeDirectory(root / "ios/build") / "exports");
    std::vector<CleanTarget> targets;
    runOnStackOf(128 * 1024, [&] { targets = makeCleaner({root}).scan(); });
    ASSERT_EQ(testing::idsOf(targets), std::vector<std::string>{"per-project-node_modules"});
    EXPECT_EQ(pathsOf(targets), std::set<fs::path>{bottom / "node_modules"});
    EXPECT_EQ(targets[0].sizeBytes, testing::allocatedBytesBelow(bottom / "node_modules"));
    EXPECT_EQ(targets[0].notes, "");
}

TEST(PerProjectCleaner, FoldersModifiedWithinKeepRecentDaysAreKept) {
    testing::TempDir temp;
    const fs::path root = temp / "root";
    const auto now = std::chrono::time_point_cast<std::chrono::seconds>(Clock::now());
    const std::vector<std::tuple<std::int64_t, Clock::duration, bool>> cases{
        {7, 3 * 24h, false}, {7, 8 * 24h, true}, {7, 7 * 24h, true}, {7, 7 * 24h - 1s, false},
        {0, 1s, true}, {0, 0s, true}, {0, -1h, false},  // dated in the future
    };
    for (const auto& [days, age, offered] : cases) {
        const fs::path folder = root / (std::to_string(days) + "-" + std::to_string(age.count())) / "node_modules";
        writeFile(folder / "x.js", 4096);
        fs::last_write_time(folder, std::chrono::file_clock::from_sys(now - age));
        EXPECT_EQ(pathsOf(makeCleaner({root}, catalogCleaner().specs(), days, now).scan()).contains(folder), offered) << folder;
        fs::remove_all(root);
    }
    // An unreadable date cannot be produced on a folder the walk can see (both come from
    // one status read), so the rule itself is checked for it.
    EXPECT_FALSE(makeCleaner({}, {}, 7, now).isRecent(std::nullopt));
}

TEST(CleanerKinds, AStoppedScanFindsNothing) {
    testing::TempDir temp;
    writeFile(temp / "root/c/__pycache__/m.pyc", 4096);
    std::stop_source stop;
    stop.request_stop();
    const DirectorySizer sizer;
    const ScanContext stopped{sizer, stop.get_token()};
    EXPECT_TRUE(makeCleaner({temp / "root"}).scan(stopped).empty());
    const PathCleaner cache("c", "C", Family::devMisc, temp.path(), {"root"}, Level::safe, Reversibility::regenerable,
                            RegenCost::rebuild);
    EXPECT_TRUE(cache.scan(stopped).empty());
}

}  // namespace
}  // namespace kelvo
