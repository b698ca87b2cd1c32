#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

#include "kelvo/L10n.h"
#include "kelvo/Scanner.h"
#include "kelvo/WorkerPool.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using testing::TempDir;

CleanTarget pathTarget(std::string id, std::vector<std::filesystem::path> paths, std::int64_t size = 100,
                       std::string notes = "") {
    CleanTarget target;
    target.id = std::move(id);
    target.name = target.id;
    target.kind = CleanKind::paths(std::move(paths));
    target.sizeBytes = size;
    target.notes = std::move(notes);
    return target;
}

CleanTarget commandTarget(std::string id, std::string command) {
    CleanTarget target;
    target.id = std::move(id);
    target.kind = CleanKind::command(std::move(command));
    return target;
}

std::vector<std::string> idsOf(const std::vector<CleanTarget>& targets) {
    std::vector<std::string> ids;
    for (const auto& target : targets) ids.push_back(target.id);
    return ids;
}

TEST(ScannerDedup, ExactlySharedPathGoesToTheSmallerId) {
    const auto result = Scanner::dedup({pathTarget("b", {"/x"}, 7), pathTarget("a", {"/x"}, 9)});
    ASSERT_EQ(idsOf(result), std::vector<std::string>{"a"});
    EXPECT_EQ(result[0].sizeBytes, 9);
}

TEST(ScannerDedup, AncestorWinsOverPathsInsideIt) {
    const auto result = Scanner::dedup({pathTarget("a", {"/x"}), pathTarget("b", {"/x/y"})});
    EXPECT_EQ(idsOf(result), std::vector<std::string>{"a"});
    // Even when the inner target sorts first and belongs to another family.
    const auto reversed = Scanner::dedup({pathTarget("z", {"/x"}), pathTarget("a", {"/x/y/z"})});
    EXPECT_EQ(idsOf(reversed), std::vector<std::string>{"z"});
}

TEST(ScannerDedup, PrefixOfANameIsNotAnAncestor) {
    const auto result = Scanner::dedup({pathTarget("a", {"/x/yz"}), pathTarget("b", {"/x/y"})});
    EXPECT_EQ(idsOf(result), (std::vector<std::string>{"a", "b"}));
}

TEST(ScannerDedup, PathsAreComparedAfterStandardisation) {
    const auto result = Scanner::dedup({pathTarget("a", {"/x/./y/"}), pathTarget("b", {"/x/q/../y/z"})});
    EXPECT_EQ(idsOf(result), std::vector<std::string>{"a"});
}

TEST(ScannerDedup, EqualIdsNeverCoverEachOtherAndCommandsPassThrough) {
    const auto result = Scanner::dedup({pathTarget("a", {"/x"}), pathTarget("a", {"/x"}), pathTarget("a", {"/x/y"}),
                                        commandTarget("c", "rm -rf /x"), commandTarget("d", "rm -rf /x")});
    EXPECT_EQ(idsOf(result), (std::vector<std::string>{"a", "a", "a", "c", "d"}));
}

TEST(ScannerDedup, TargetThatLostSomePathsIsRemeasured) {
    TempDir home;
    testing::writeFile(home / "x/y/file", 10000);
    testing::writeFile(home / "z/file", 5000);
    const auto x = home / "x";
    const auto y = home / "x/y";
    const auto z = home / "z";
    const auto result = Scanner::dedup({pathTarget("a", {x}, 1), pathTarget("b", {y, z}, 99999, "kept note")});
    ASSERT_EQ(result.size(), 2u);
    EXPECT_EQ(result[1].id, "b");
    EXPECT_EQ(result[1].kind.pathList(), std::vector<std::filesystem::path>{z});
    EXPECT_EQ(result[1].sizeBytes, testing::allocatedBytesBelow(z));
    EXPECT_EQ(result[1].notes, "kept note");
    // The winner is passed through as its cleaner measured it.
    EXPECT_EQ(result[0].sizeBytes, 1);
}

TEST(ScannerDedup, TargetWhoseRemainingPathsAreEmptyIsDropped) {
    TempDir home;
    testing::makeDirectory(home / "empty");
    testing::writeFile(home / "x/y/file", 10000);
    const auto result = Scanner::dedup({pathTarget("a", {home / "x"}), pathTarget("b", {home / "x/y", home / "empty"})});
    EXPECT_EQ(idsOf(result), std::vector<std::string>{"a"});
}

TEST(ScannerDedup, InnerTargetLosesItsPathEvenWhenTheOuterOneIsCoveredToo) {
    // a covers b's path, c covers a's: b still loses /x/y/z, and c keeps everything.
    const auto result = Scanner::dedup(
        {pathTarget("c", {"/x"}), pathTarget("a", {"/x/y"}), pathTarget("b", {"/x/y/z"})});
    EXPECT_EQ(idsOf(result), std::vector<std::string>{"c"});
}

TEST(ScannerDedup, CanonicallyEquivalentSpellingsAreOnePathAndNothingLiesInsideTheRoot) {
    const std::string composed = "/x/caf\xC3\xA9";
    const std::string decomposed = "/x/cafe\xCC\x81";
    EXPECT_EQ(idsOf(Scanner::dedup({pathTarget("a", {composed}), pathTarget("b", {decomposed + "/y"})})),
              std::vector<std::string>{"a"});
    EXPECT_EQ(idsOf(Scanner::dedup({pathTarget("b", {decomposed}), pathTarget("a", {composed})})),
              std::vector<std::string>{"a"});
    EXPECT_EQ(idsOf(Scanner::dedup({pathTarget("a", {"/"}), pathTarget("b", {"/x"})})),
              (std::vector<std::string>{"a", "b"}));
}

// Tells the test when a cleaner has started, and counts the stop requests it saw.
struct StopHandshake {
    std::promise<void> started;
    std::atomic<int> stopsSeen = 0;
};

// A cleaner with a fixed answer, for scans. With a handshake it behaves like a long walk
// that checks for a stop request: it says it has started and runs until the scan is stopped.
class FixedCleaner final : public Cleaner {
public:
    FixedCleaner(std::string id, std::vector<CleanTarget> targets, StopHandshake* handshake = nullptr)
        : id_(std::move(id)), targets_(std::move(targets)), handshake_(handshake) {}
    const std::string& id() const override { return id_; }
    const std::string& name() const override { return id_; }
    Family family() const override { return Family::devMisc; }
    std::vector<CleanTarget> scan(const ScanContext& context) const override {
        if (handshake_) {
            handshake_->started.set_value();
            std::mutex mutex;
            std::condition_variable_any stopped;
            std::unique_lock lock(mutex);
            stopped.wait(lock, context.stop, [] { return false; });
            ++handshake_->stopsSeen;
        }
        return targets_;
    }

private:
    std::string id_;
    std::vector<CleanTarget> targets_;
    StopHandshake* handshake_;
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
    const auto result = Scanner(cleaners).scan({.pool = &pool, .progress = [&](const ScanProgress& progress) {
        std::lock_guard lock(mutex);
        reports.push_back(progress);
    }});
    ASSERT_TRUE(result);
    ASSERT_EQ(result->size(), 40u);
    for (int i = 0; i < 40; ++i) EXPECT_EQ((*result)[static_cast<std::size_t>(i)].id, "t" + std::to_string(i));
    ASSERT_EQ(reports.size(), 41u);
    EXPECT_EQ(reports.back().cleanersFinished, 41u);
    EXPECT_EQ(reports.back().cleanersTotal, 41u);
    EXPECT_EQ(reports.back().bytesFound, 4100);
}

TEST(Scanner, EmptyCleanerListGivesNothing) {
    const auto result = Scanner({}).scan();
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->empty());
}

TEST(Scanner, StoppedScanReturnsQuicklyAndPublishesNothing) {
    StopHandshake handshake;
    CleanerList cleaners{std::make_shared<FixedCleaner>("slow", std::vector<CleanTarget>{pathTarget("t", {"/p"})}, &handshake),
                         std::make_shared<FixedCleaner>("quick", std::vector<CleanTarget>{pathTarget("u", {"/q"})})};
    std::stop_source stop;
    // The stop comes while the slow cleaner runs, never before the pool has started it.
    std::thread stopper([&] {
        handshake.started.get_future().wait();
        stop.request_stop();
    });
    const auto result = Scanner(cleaners).scan({.stop = stop.get_token()});
    stopper.join();
    EXPECT_FALSE(result.has_value());
    EXPECT_EQ(handshake.stopsSeen.load(), 1);
}

TEST(Scanner, NullCleanersAreLeftOut) {
    const Scanner scanner({nullptr, std::make_shared<FixedCleaner>("c", std::vector<CleanTarget>{pathTarget("t", {"/p"})}), nullptr});
    EXPECT_EQ(scanner.cleaners().size(), 1u);
    const auto result = scanner.scan();
    ASSERT_TRUE(result);
    EXPECT_EQ(idsOf(*result), std::vector<std::string>{"t"});
}

TEST(Scanner, OffersNoPathOfAnotherUserAndMarksTargetsReachedThroughALink) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "giving a folder to uid 65534 needs root";
    TempDir home;
    const auto mine = testing::writeFile(home / "mine/file", 5000).parent_path();
    const auto theirs = testing::writeFile(home / "theirs/file", 9000).parent_path();
    ASSERT_EQ(::lchown(theirs.c_str(), 65534, 65534), 0);
    std::filesystem::create_directory_symlink(mine, home / "link");
    std::filesystem::create_directory_symlink(mine, home / "other-link");
    CleanerList cleaners{std::make_shared<FixedCleaner>(
        "c", std::vector<CleanTarget>{pathTarget("both", {mine, theirs}, 14000), pathTarget("foreign", {theirs}),
                                      pathTarget("linked", {home / "link"}, 0, "partial"),
                                      pathTarget("below-link", {home / "other-link/file"})})};

    const auto result = Scanner(cleaners).scan();
    ASSERT_TRUE(result);
    ASSERT_EQ(idsOf(*result), (std::vector<std::string>{"both", "linked", "below-link"}));
    EXPECT_EQ((*result)[0].kind.pathList(), std::vector<std::filesystem::path>{mine});
    EXPECT_EQ((*result)[0].sizeBytes, testing::allocatedBytesBelow(mine));
    EXPECT_FALSE((*result)[0].blockedByLink);
    const std::string linkNote = L10n::t("cleaner.note.link", L10n::t("exec.skip.symlinkFinal", (home / "link").string()));
    EXPECT_TRUE((*result)[1].blockedByLink);
    EXPECT_EQ((*result)[1].notes, linkNote + " partial");
    EXPECT_TRUE((*result)[2].blockedByLink);
    EXPECT_NE((*result)[2].notes.find(mine.string()), std::string::npos) << (*result)[2].notes;
    EXPECT_TRUE(std::filesystem::exists(theirs / "file"));
}

}  // namespace
}  // namespace kelvo
