#include <gtest/gtest.h>
#include <sys/stat.h>

#include <sstream>

#include "kelvo/PathCleaner.h"
#include "support/TempDir.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

using std::filesystem::path;
using testing::allocatedBytes;
using testing::TempDir;
using testing::writeFile;

class PathCleanerScan : public ::testing::Test {
protected:
    PathCleaner cleaner(std::vector<std::string> relativePaths) const {
        return PathCleaner("tool-cache", "Tool cache", Family::devMisc, home.path(), std::move(relativePaths),
                           Level::moderate, Reversibility::regenerable, RegenCost::redownload);
    }

    TempDir home;
};

TEST_F(PathCleanerScan, OnlyExistingPathsMakeTheTarget) {
    const path file = writeFile(home / "b/blob", 4096);
    const auto targets = cleaner({"a", "b"}).scan();
    ASSERT_EQ(targets.size(), 1u);
    const CleanTarget& target = targets[0];
    EXPECT_EQ(target.id, "tool-cache");
    EXPECT_EQ(target.name, "Tool cache");
    EXPECT_EQ(target.family, Family::devMisc);
    EXPECT_EQ(target.kind, CleanKind::paths({home / "b"}));
    EXPECT_EQ(target.sizeBytes, allocatedBytes(file));
    EXPECT_GE(target.sizeBytes, 4096);
    EXPECT_EQ(target.level, Level::moderate);
    EXPECT_EQ(target.reversibility, Reversibility::regenerable);
    EXPECT_EQ(target.regenCost, RegenCost::redownload);
    EXPECT_EQ(target.notes, "");
}

TEST_F(PathCleanerScan, KeepsTheGivenOrderAndSumsEveryPath) {
    const path first = writeFile(home / "z-first/data", 10000);
    const path second = writeFile(home / "a-second/deeper/data", 20000);
    const auto targets = cleaner({"z-first", "missing", "a-second"}).scan();
    ASSERT_EQ(targets.size(), 1u);
    EXPECT_EQ(targets[0].kind, CleanKind::paths({home / "z-first", home / "a-second"}));
    EXPECT_EQ(targets[0].sizeBytes, testing::allocatedBytesBelow(home / "z-first") +
                                        testing::allocatedBytesBelow(home / "a-second"));
    EXPECT_GT(targets[0].sizeBytes, allocatedBytes(first) + allocatedBytes(second) - 1);
}

TEST_F(PathCleanerScan, NothingWhenAllAreMissingOrEmpty) {
    EXPECT_TRUE(cleaner({"a", "b"}).scan().empty());
    testing::makeDirectory(home / "empty");
    writeFile(home / "zero-length", 0);
    EXPECT_TRUE(cleaner({"empty", "zero-length", "a"}).scan().empty());
}

TEST_F(PathCleanerScan, ASingleFileCountsItsAllocatedSize) {
    const path file = writeFile(home / "Library/Logs/tool.log", 10000);
    const auto targets = cleaner({"Library/Logs/tool.log"}).scan();
    ASSERT_EQ(targets.size(), 1u);
    EXPECT_EQ(targets[0].kind, CleanKind::paths({file}));
    EXPECT_EQ(targets[0].sizeBytes, allocatedBytes(file));
}

TEST_F(PathCleanerScan, ADanglingLinkIsMissingAndMeasuresZero) {
    std::filesystem::create_symlink(home / "gone", home / "link");
    EXPECT_TRUE(cleaner({"link"}).scan().empty());
    const DirectorySizer sizer;
    EXPECT_EQ(sizer.measure(home / "link"), (Measurement{0, false}));
    EXPECT_EQ(sizer.measure(home / "never-there"), (Measurement{0, false}));
}

TEST_F(PathCleanerScan, APathThatIsALinkStaysInTheTargetUnmeasured) {
    const path elsewhere = writeFile(home / "elsewhere/brew/bottle", 50000).parent_path();
    std::filesystem::create_directory_symlink(elsewhere, home / "linked");
    const path real = writeFile(home / "real/blob", 4096).parent_path();
    const auto both = cleaner({"linked", "real"}).scan();
    ASSERT_EQ(both.size(), 1u);
    EXPECT_EQ(both[0].kind, CleanKind::paths({home / "linked", real}));
    EXPECT_EQ(both[0].sizeBytes, testing::allocatedBytesBelow(real));
    // Offered on its own too, at nothing, so that the scan can say why it is not cleaned.
    const auto alone = cleaner({"linked"}).scan();
    ASSERT_EQ(alone.size(), 1u);
    EXPECT_EQ(alone[0].sizeBytes, 0);
}

TEST_F(PathCleanerScan, HardLinksCountOncePerNameAndInnerLinksAreNotFollowed) {
    const path file = writeFile(home / "cache/original", 8192);
    std::filesystem::create_hard_link(file, home / "cache/second-name");
    const path outside = writeFile(home / "outside/big", 1 << 20);
    std::filesystem::create_symlink(outside, home / "cache/to-outside");
    const auto targets = cleaner({"cache"}).scan();
    ASSERT_EQ(targets.size(), 1u);
    EXPECT_EQ(targets[0].sizeBytes, 2 * allocatedBytes(file) + allocatedBytes(home / "cache/to-outside"));
    EXPECT_LT(targets[0].sizeBytes, allocatedBytes(outside));
}

TEST_F(PathCleanerScan, AStoppedScanYieldsNothing) {
    writeFile(home / "cache/data", 8192);
    std::stop_source stop;
    stop.request_stop();
    const DirectorySizer sizer;
    EXPECT_TRUE(cleaner({"cache"}).scan(ScanContext{sizer, stop.get_token()}).empty());
}

TEST_F(PathCleanerScan, AnUnreadableFolderGivesAPartialSizeNote) {
    const path readable = writeFile(home / "cache/readable", 8192);
    writeFile(home / "cache/locked/secret", 1 << 20);
    ASSERT_EQ(::chmod((home / "cache/locked").c_str(), 0), 0);
    const std::int64_t readablePart = allocatedBytes(readable) + allocatedBytes(home / "cache/locked");

    const PathCleaner scanned = cleaner({"cache"});
    const auto run = testing::runAsUnprivileged([&] {
        const auto targets = scanned.scan();
        std::ostringstream out;
        out << targets.size();
        for (const auto& target : targets) out << '\n' << target.sizeBytes << '\n' << target.notes;
        return out.str();
    });
    if (run.switchRefused) GTEST_SKIP() << run.failure;
    ASSERT_TRUE(run.output.has_value()) << run.failure;
    EXPECT_EQ(*run.output, "1\n" + std::to_string(readablePart) + "\n" + CleanTarget::partialSizeNote());
    EXPECT_NE(CleanTarget::partialSizeNote(), "");
}

}  // namespace
}  // namespace kelvo
