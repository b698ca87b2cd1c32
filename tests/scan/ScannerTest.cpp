#include <gtest/gtest.h>

#include <condition_variable>
#include <future>

#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "kelvo/PlanSelection.h"
#include "kelvo/ScanPlanJSON.h"
#include "kelvo/Scanner.h"
#include "kelvo/WorkerPool.h"
#include "support/TargetIds.h"
#include "support/Targets.h"
#include "support/TempDir.h"

namespace kelvo::testing {
namespace {

CleanTarget pathTarget(std::string id, std::vector<std::filesystem::path> paths, std::int64_t size = 100,
                       Level level = Level::safe, Family family = Family::devMisc) {
    return targetOf(std::move(id), CleanKind::paths(std::move(paths)), size, family, level);
}

TEST(ScannerDedup, APathClaimedTwiceGoesToTheAncestorThenToTheSmallerId) {
    const std::string composed = "/x/caf\xC3\xA9";
    const std::string decomposed = "/x/cafe\xCC\x81";
    const struct { std::vector<CleanTarget> targets; std::vector<std::string> kept; } cases[] = {
        {{pathTarget("b", {"/x"}), pathTarget("a", {"/x"})}, {"a"}},
        {{pathTarget("a", {"/x"}), pathTarget("b", {"/x/y"})}, {"a"}},
        {{pathTarget("z", {"/x"}), pathTarget("a", {"/x/y/z"})}, {"z"}},  // the ancestor wins whatever its id
        {{pathTarget("a", {"/x/yz"}), pathTarget("b", {"/x/y"})}, {"a", "b"}},  // a prefix of a name is no ancestor
        {{pathTarget("a", {"/x/./y/"}), pathTarget("b", {"/x/q/../y/z"})}, {"a"}},
        {{pathTarget("c", {"/x"}), pathTarget("a", {"/x/y"}), pathTarget("b", {"/x/y/z"})}, {"c"}},
        {{pathTarget("a", {composed}), pathTarget("b", {decomposed + "/y"})}, {"a"}},
        {{pathTarget("b", {decomposed}), pathTarget("a", {composed})}, {"a"}},
        {{pathTarget("a", {"/"}), pathTarget("b", {"/x"})}, {"a", "b"}},  // nothing lies inside the root
        {{pathTarget("a", {"/x"}), pathTarget("a", {"/x/y"}), targetOf("c", CleanKind::command("rm -rf /x")),
          targetOf("d", CleanKind::command("rm -rf /x"))},
         {"a", "a", "c", "d"}},  // equal ids never cover each other; commands pass through
    };
    for (const auto& [targets, kept] : cases) EXPECT_EQ(idsOf(Scanner::dedup(targets)), kept) << idsOf(targets).front();
}

TEST(ScannerDedup, ATargetThatLostPathsIsRemeasuredOrDroppedWhenNothingIsLeft) {
    TempDir home;
    writeFile(home / "x/y/file", 10000);
    writeFile(home / "z/file", 5000);
    makeDirectory(home / "empty");
    std::filesystem::create_hard_link(home / "x/y/file", writeFile(home / "w/own", 3000).parent_path() / "also");
    auto partial = pathTarget("b", {home / "x/y", home / "z"}, 99999);
    partial.notes = "kept note";
    const auto result = Scanner::dedup({pathTarget("a", {home / "x"}, 1), partial, pathTarget("c", {home / "x/y", home / "empty"}),
                                        pathTarget("d", {home / "x/y", home / "w"})});
    ASSERT_EQ(idsOf(result), (std::vector<std::string>{"a", "b", "d"}));
    // Left with a second name of a file that goes with another target: that frees nothing.
    const std::int64_t shared = allocatedBytes(home / "w/also");
    EXPECT_EQ(std::pair(result[2].sizeBytes, result[2].notes),
              std::pair(allocatedBytesBelow(home / "w") - shared, L10n::t("cleaner.note.sharedSize", {Format::bytes(shared)})));
    EXPECT_EQ(result[0].sizeBytes, 1);  // the winner as its cleaner measured it
    EXPECT_EQ(std::tuple(result[1].kind.pathList(), result[1].sizeBytes, result[1].notes),
              std::tuple(std::vector<std::filesystem::path>{home / "z"}, allocatedBytesBelow(home / "z"), "kept note"));
}

// A cleaner with a fixed answer, for scans. One that waits behaves like a long walk that
// checks for a stop request: it says it has started and runs until the scan is stopped.
struct FixedCleaner final : Cleaner {
    FixedCleaner(std::string id, std::vector<CleanTarget> targets, bool waits = false)
        : id_(std::move(id)), targets_(std::move(targets)), waits_(waits) {}
    const std::string& id() const override { return id_; }
    const std::string& name() const override { return id_; }
    Family family() const override { return Family::devMisc; }
    std::vector<CleanTarget> scan(const ScanContext& context) const override {
        if (waits_) {
            started.set_value();
            std::mutex mutex;
            std::condition_variable_any stopped;
            std::unique_lock lock(mutex);
            stopped.wait(lock, context.stop, [] { return false; });
            ++stopsSeen;
        }
        return targets_;
    }
    std::string id_;
    std::vector<CleanTarget> targets_;
    bool waits_;
    mutable std::promise<void> started;
    mutable std::atomic<int> stopsSeen = 0;
};

TEST(Scanner, RunsEveryCleanerAndDeduplicatesInCatalogOrder) {
    CleanerList cleaners;
    for (int i = 0; i < 40; ++i)
        cleaners.push_back(std::make_shared<FixedCleaner>(
            "c" + std::to_string(i), std::vector<CleanTarget>{pathTarget("t" + std::to_string(i), {"/p" + std::to_string(i)})}));
    cleaners.push_back(std::make_shared<FixedCleaner>("inner", std::vector<CleanTarget>{pathTarget("inner", {"/p3/q"})}));
    std::vector<ScanProgress> reports;
    std::mutex mutex;
    WorkerPool pool(4);
    const auto result = Scanner(cleaners).scan({.pool = &pool, .stop = {}, .progress = [&](const ScanProgress& progress) {
        std::lock_guard lock(mutex);
        reports.push_back(progress);
    }});
    ASSERT_TRUE(result);
    std::vector<std::string> expected;
    for (int i = 0; i < 40; ++i) expected.push_back("t" + std::to_string(i));
    EXPECT_EQ(idsOf(result->targets), expected);
    ASSERT_EQ(reports.size(), 41u);
    EXPECT_EQ(std::tuple(reports.back().cleanersFinished, reports.back().cleanersTotal, reports.back().bytesFound),
              std::tuple(41u, 41u, 4100));
}

TEST(Scanner, StoppedScanReturnsQuicklyAndPublishesNothing) {
    const auto slow = std::make_shared<FixedCleaner>("slow", std::vector<CleanTarget>{pathTarget("t", {"/p"})}, true);
    CleanerList cleaners{slow, std::make_shared<FixedCleaner>("quick", std::vector<CleanTarget>{pathTarget("u", {"/q"})})};
    std::stop_source stop;
    // The stop comes while the slow cleaner runs, never before the pool has started it.
    std::thread stopper([&] {
        slow->started.get_future().wait();
        stop.request_stop();
    });
    const auto result = Scanner(cleaners).scan({.pool = nullptr, .stop = stop.get_token(), .progress = nullptr});
    stopper.join();
    EXPECT_FALSE(result.has_value());
    EXPECT_EQ(slow->stopsSeen.load(), 1);
}

TEST(PlanSelection, OneChoicePerIdByToggleOrByIdsAndFamilies) {
    PlanSelection plan({pathTarget("a", {"/p"}), pathTarget("b", {"/p"}, 5, Level::aggressive, Family::docker),
                        pathTarget("a", {"/p"}), pathTarget("c", {"/p"}, 10, Level::aggressive)});
    EXPECT_EQ(plan.selectedIDs, (std::set<std::string>{"a"}));
    for (const int index : {-1, 4, 1, 2}) plan.toggle(index);  // out of range ignored; "a" once for both
    EXPECT_EQ(plan.selectedIDs, (std::set<std::string>{"b"}));
    plan.toggle(0);
    EXPECT_EQ(plan.selectedTargets().size(), 3u);  // both targets named "a", and "b"
    EXPECT_EQ(plan.unknownIDs({"c", "nope", "a", "gone"}), (std::vector<std::string>{"nope", "gone"}));
    plan.choose({"c"}, {Family::docker});
    EXPECT_EQ(plan.selectedIDs, (std::set<std::string>{"b", "c"}));
}

TEST(ScanPlanJSON, ASmallPlanInTheExactLayout) {
    auto slashed = pathTarget("derived-data", {"/p"}, 4096, Level::safe, Family::xcodeCore);
    slashed.name = "Derived/Data";
    ScanPlanJSON plan({slashed});
    plan.notes = {"X points to /srv/x\n\"quoted\""};
    EXPECT_EQ(plan.encoded(), R"({
  "byFamily" : {
    "xcodeCore" : 4096
  },
  "byLevel" : {
    "safe" : 4096
  },
  "notes" : [
    "X points to \/srv\/x\n\"quoted\""
  ],
  "targets" : [
    {
      "family" : "xcodeCore",
      "id" : "derived-data",
      "level" : "safe",
      "name" : "Derived\/Data",
      "notes" : "",
      "paths" : [
        "\/p"
      ],
      "preselected" : true,
      "regenCost" : "rebuild",
      "reversibility" : "regenerable",
      "sizeBytes" : 4096
    }
  ],
  "totalBytes" : 4096
})");
}

}  // namespace
}  // namespace kelvo::testing
