#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

#include "kelvo/CleanerRegistry.h"
#include "kelvo/PerProjectCleaner.h"
#include "support/DeepTree.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using Clock = PerProjectCleaner::Clock;
using Spec = PerProjectCleaner::ArtifactSpec;
using testing::TempDir;
using testing::makeDirectory;
using testing::setModificationTime;
using testing::writeFile;
using namespace std::chrono_literals;
using testing::idSetOf;

constexpr auto day = std::chrono::seconds(86400);

// The specs exactly as the catalog builds them, so the rules are checked with its patterns.
std::vector<Spec> catalogSpecs() {
    Environment env;
    env.home = "/nonexistent-home";
    env.tmpDir = "/nonexistent-tmp";
    env.catalog = CatalogProfile::macos;
    const auto cleaners = CleanerRegistry::makeCleaners(env);
    const auto* perProject = dynamic_cast<const PerProjectCleaner*>(cleaners.back().get());
    if (!perProject) throw std::logic_error("the catalog's last entry is not the per-project cleaner");
    return perProject->specs();
}

Spec simpleSpec(std::string dirName, std::vector<std::string> requiresSibling = {}) {
    return {std::move(dirName), Level::safe, Reversibility::regenerable, RegenCost::rebuild, std::move(requiresSibling)};
}

// Recency plays no part unless a test asks for it: every folder made before this is old enough.
PerProjectCleaner makeCleaner(std::vector<fs::path> roots, std::vector<Spec> specs = catalogSpecs(),
                              std::int64_t keepRecentDays = 0, Clock::time_point now = Clock::now() + 1s) {
    return PerProjectCleaner(std::move(roots), std::move(specs), keepRecentDays, now);
}

const CleanTarget* findTarget(const std::vector<CleanTarget>& targets, const std::string& id) {
    const auto found = std::find_if(targets.begin(), targets.end(), [&](const auto& target) { return target.id == id; });
    return found == targets.end() ? nullptr : &*found;
}

std::set<fs::path> pathsOf(const std::vector<CleanTarget>& targets, const std::string& id) {
    const auto* target = findTarget(targets, id);
    if (!target) return {};
    const auto& list = target->kind.pathList();
    return {list.begin(), list.end()};
}


TEST(PerProjectCleaner, SiblingPatternsAreLiteralExceptForALeadingStarDot) {
    TempDir temp;
    const fs::path root = temp / "root";
    const std::vector<Spec> specs{
        simpleSpec("out", {"lit*eral|*.cfg"}),
        simpleSpec("never", {"|"}),
        simpleSpec("padded", {"||marker||"}),
        simpleSpec("self", {"self"}),
    };
    writeFile(root / "star-in-name/lit*eral", 1);
    writeFile(root / "star-in-name/out/x", 4096);
    writeFile(root / "star-as-wildcard/literal", 1);  // "*" inside an alternative is no wildcard
    writeFile(root / "star-as-wildcard/out/x", 4096);
    writeFile(root / "suffix/build.cfg", 1);
    writeFile(root / "suffix/out/x", 4096);
    writeFile(root / "no-dot/cfg", 1);  // "*.cfg" needs the dot
    writeFile(root / "no-dot/out/x", 4096);
    writeFile(root / "bars/|", 1);  // a pattern of empty alternatives matches nothing, not even "|"
    writeFile(root / "bars/never/x", 4096);
    writeFile(root / "marked/marker", 1);
    writeFile(root / "marked/padded/x", 4096);
    writeFile(root / "alone/self/x", 4096);  // the candidate is one of the names beside itself
    const auto targets = makeCleaner({root}, specs).scan();
    EXPECT_EQ(pathsOf(targets, "per-project-out"), (std::set<fs::path>{root / "star-in-name/out", root / "suffix/out"}));
    EXPECT_EQ(findTarget(targets, "per-project-never"), nullptr);
    EXPECT_EQ(pathsOf(targets, "per-project-padded"), std::set<fs::path>{root / "marked/padded"});
    EXPECT_EQ(pathsOf(targets, "per-project-self"), std::set<fs::path>{root / "alone/self"});
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
    TempDir temp;
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
    EXPECT_EQ(idSetOf(targets), std::set<std::string>{"per-project-node_modules"});
    EXPECT_EQ(pathsOf(targets, "per-project-node_modules"), std::set<fs::path>{bottom / "node_modules"});
    const auto* modules = findTarget(targets, "per-project-node_modules");
    ASSERT_NE(modules, nullptr);
    EXPECT_EQ(modules->sizeBytes, testing::deepAllocatedBytesBelow(bottom / "node_modules"));
    EXPECT_EQ(modules->notes, "");
}

TEST(PerProjectCleaner, FoldersModifiedWithinKeepRecentDaysAreKept) {
    TempDir temp;
    const fs::path root = temp / "root";
    const auto now = std::chrono::time_point_cast<std::chrono::seconds>(Clock::now());
    struct Case {
        std::int64_t keepRecentDays;
        Clock::duration age;
        bool offered;
    };
    const std::vector<Case> cases{
        {7, 3 * day, false}, {7, 8 * day, true}, {7, 7 * day, true}, {7, 7 * day - 1s, false},
        {0, 1s, true},       {0, 0s, true},      {0, -1h, false},  // dated in the future
    };
    for (const auto& [days, age, offered] : cases) {
        const fs::path folder = root / (std::to_string(days) + "-" + std::to_string(age.count())) / "node_modules";
        writeFile(folder / "x.js", 4096);
        setModificationTime(folder, now - age);
        EXPECT_EQ(pathsOf(makeCleaner({root}, catalogSpecs(), days, now).scan(), "per-project-node_modules").contains(folder),
                  offered)
            << folder;
        fs::remove_all(root);
    }
    // An unreadable date cannot be produced on a folder the walk can see (both come from
    // one status read), so the rule itself is checked for it.
    EXPECT_FALSE(makeCleaner({}, {}, 7, now).isRecent(std::nullopt));
}

TEST(PerProjectCleaner, AStoppedScanFindsNothing) {
    TempDir temp;
    writeFile(temp / "root/c/__pycache__/m.pyc", 4096);
    std::stop_source stop;
    stop.request_stop();
    const DirectorySizer sizer;
    EXPECT_TRUE(makeCleaner({temp / "root"}).scan(ScanContext{sizer, stop.get_token()}).empty());
}

}  // namespace
}  // namespace kelvo
