#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "kelvo/DirectorySizer.h"
#include "kelvo/WorkerPool.h"
#include "support/DeepTree.h"
#include "support/TempDir.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

using std::filesystem::path;
using testing::allocatedBytes;
using testing::allocatedBytesBelow;
using testing::makeDirectory;
using testing::TempDir;
using testing::writeFile;

// Every measurement is made twice: on the calling thread alone, and split across a pool.
class DirectorySizerMeasure : public ::testing::Test {
protected:
    Measurement alone(const path& target) const { return DirectorySizer().measure(target); }
    Measurement pooled(const path& target) { return DirectorySizer(pool).measure(target); }

    void expectBoth(const path& target, Measurement expected) {
        EXPECT_EQ(alone(target), expected) << "walked on one thread: " << target;
        EXPECT_EQ(pooled(target), expected) << "walked on the pool: " << target;
    }

    TempDir root;
    WorkerPool pool{4};
};

// Files of many sizes (empty, under a block, sparse), empty and nested folders, a FIFO,
// links and hidden entries, spread over enough folders that the pool takes some of them.
void buildVariedTree(const path& top) {
    for (int project = 0; project < 12; ++project) {
        const path base = top / ("project-" + std::to_string(project));
        for (int file = 0; file < 15; ++file)
            writeFile(base / ("src/module-" + std::to_string(file % 4)) / ("f" + std::to_string(file)),
                      static_cast<std::size_t>(project * 997 + file * 3001));
        makeDirectory(base / "build/empty");
        writeFile(base / ".hidden-cache/blob", 20000);
    }
    writeFile(top / "zero-length", 0);
    writeFile(top / "tiny", 1);
    ::truncate(writeFile(top / "sparse", 4096).c_str(), 50'000'000);
    ::mkfifo((top / "pipe").c_str(), 0644);
    std::filesystem::create_symlink("project-0", top / "link-to-project");
    std::filesystem::create_symlink("nowhere", top / "dangling-link");
}

TEST_F(DirectorySizerMeasure, TreeMatchesAnIndependentSumOfAllocatedBlocks) {
    buildVariedTree(root.path());
    const std::int64_t expected = allocatedBytesBelow(root.path());
    ASSERT_GT(expected, 12 * 15 * 4096);
    expectBoth(root.path(), {expected, false});
    // Allocated, not logical: the 50 MB sparse file holds one written block.
    EXPECT_LT(alone(root / "sparse").bytes, 1'000'000);
    EXPECT_EQ(alone(root / "sparse").bytes, allocatedBytes(root / "sparse"));
}

TEST_F(DirectorySizerMeasure, TopDirectoryItselfIsNotCounted) {
    const path top = makeDirectory(root / "top");
    // Enough names to give the top directory more than one block of its own.
    for (int index = 0; index < 400; ++index) writeFile(top / (std::string(100, 'n') + std::to_string(index)));
    ASSERT_GT(allocatedBytes(top), 4096);
    expectBoth(top, {0, false});

    const path inner = makeDirectory(top / "inner");
    expectBoth(top, {allocatedBytes(inner), false});
}

TEST_F(DirectorySizerMeasure, LinksInsideTheTreeCountOnlyThemselves) {
    const path big = writeFile(root / "elsewhere/big", 2'000'000).parent_path();
    writeFile(root / "elsewhere/big-file", 1'000'000);
    const path tree = makeDirectory(root / "tree");
    const path toFolder = tree / "to-folder";
    const path toFile = tree / "to-file";
    std::filesystem::create_symlink(big, toFolder);
    std::filesystem::create_symlink(root / "elsewhere/big-file", toFile);
    std::filesystem::create_symlink(tree, tree / "loop");
    const std::int64_t links = allocatedBytes(toFolder) + allocatedBytes(toFile) + allocatedBytes(tree / "loop");
    expectBoth(tree, {links, false});
    EXPECT_LT(links, 100'000);
}

TEST_F(DirectorySizerMeasure, TopReachedThroughALinkIsMeasured) {
    const path real = makeDirectory(root / "real");
    writeFile(real / "data", 30000);
    std::filesystem::create_symlink(real, root / "alias");
    expectBoth(root / "alias", {allocatedBytes(real / "data"), false});
}

TEST_F(DirectorySizerMeasure, HiddenEntriesAreCounted) {
    const path tree = makeDirectory(root / "tree");
    const path hiddenFile = writeFile(tree / ".hidden", 10000);
    const path hiddenFolderFile = writeFile(tree / ".folder/inside", 10000);
    expectBoth(tree, {allocatedBytes(hiddenFile) + allocatedBytes(tree / ".folder") +
                          allocatedBytes(hiddenFolderFile),
                      false});
}

TEST_F(DirectorySizerMeasure, HardLinkCountsOncePerName) {
    const path tree = makeDirectory(root / "tree");
    const path original = writeFile(tree / "a/original", 64 * 1024);
    std::filesystem::create_hard_link(original, tree / "b-second-name");
    std::filesystem::create_hard_link(original, tree / "a/third-name");
    expectBoth(tree, {allocatedBytes(tree / "a") + 3 * allocatedBytes(original), false});
}

TEST_F(DirectorySizerMeasure, FileMeasuredAlone) {
    const path file = writeFile(root / "file", 12345);
    ASSERT_GT(allocatedBytes(file), 0);
    expectBoth(file, {allocatedBytes(file), false});
    expectBoth(writeFile(root / "empty"), {0, false});
}

TEST_F(DirectorySizerMeasure, MissingPathAndDanglingLinkAreZeroWithoutError) {
    expectBoth(root / "missing", {0, false});
    expectBoth(root / "missing/deeper", {0, false});
    std::filesystem::create_symlink(root / "missing", root / "dangling");
    expectBoth(root / "dangling", {0, false});
    EXPECT_EQ(DirectorySizer().size(root / "dangling"), 0);
}

TEST_F(DirectorySizerMeasure, PathsLongerThanPathMaxAreMeasuredAndNeverGuessedEmpty) {
    // 22 folders of 200 characters: some 4.4 KB of path.
    const path bottom = testing::makeFolderChain(root / "real", 22, std::string(200, 'n'));
    ASSERT_GT(bottom.native().size(), 4400u);
    testing::writeDeepFile(bottom / "tree/a/blob", 30000);
    testing::writeDeepFile(bottom / "tree/b", 5000);
    testing::writeDeepFile(bottom / "single/file", 9000);
    expectBoth(bottom / "tree", {testing::deepAllocatedBytesBelow(bottom / "tree"), false});
    expectBoth(bottom / "single/file", {testing::deepAllocatedBytesBelow(bottom / "single"), false});
    expectBoth(bottom / "missing", {0, false});
    // A link on the way down such a path is not followed: what lies behind it is unknown, not empty.
    std::filesystem::create_directory_symlink(root / "real", root / "via");
    expectBoth(root / "via" / bottom.lexically_relative(root / "real") / "tree", {0, true});
}

TEST_F(DirectorySizerMeasure, NamesThatAreNotUtf8) {
    const path tree = makeDirectory(root / "tree");
    const std::string latin1 = "caf\xe9";
    const std::string broken = "\xff\xfe\x80-bytes";
    writeFile(tree / latin1 / "inside", 9000);
    writeFile(tree / broken, 5000);
    writeFile(tree / (latin1 + "\xc3") / broken, 7000);
    const std::int64_t expected = allocatedBytesBelow(tree);
    ASSERT_GT(expected, allocatedBytes(tree / broken) + allocatedBytes(tree / latin1 / "inside"));
    expectBoth(tree, {expected, false});
}

// The unreadable parts are seen as such only by an ordinary user: the measurement runs in
// a child switched to uid 65534, which sends its result back as text. No pool may be
// running while the test forks, so this one makes its own after the fork.
TEST(DirectorySizerUnreadable, PartsThatCannotBeReadGiveALowerBound) {
    TempDir root;
    // A folder that cannot be opened at all.
    const path withLocked = makeDirectory(root / "with-locked");
    const path readable = writeFile(withLocked / "readable/data", 40000);
    const path locked = makeDirectory(withLocked / "locked");
    writeFile(locked / "secret", 100000);
    makeDirectory(locked / "deeper");
    ::chmod(locked.c_str(), 0);
    // A folder that can be listed but not searched: its names can be read, their sizes cannot.
    const path withListOnly = makeDirectory(root / "with-list-only");
    const path listOnly = makeDirectory(withListOnly / "list-only");
    writeFile(listOnly / "hidden-size", 100000);
    ::chmod(listOnly.c_str(), 0644);

    const auto run = testing::runAsUnprivileged([&] {
        WorkerPool pool(2);
        std::string answer;
        for (const path& tree : {withLocked, withListOnly}) {
            for (const Measurement measurement : {DirectorySizer().measure(tree), DirectorySizer(pool).measure(tree)})
                answer += std::to_string(measurement.bytes) + (measurement.hadErrors ? " partial\n" : " whole\n");
        }
        return answer;
    });
    if (run.switchRefused) GTEST_SKIP() << run.failure;
    ASSERT_TRUE(run.output) << run.failure;
    // Each folder that cannot be entered still counts its own blocks.
    const std::string lockedLine =
        std::to_string(allocatedBytes(withLocked / "readable") + allocatedBytes(readable) + allocatedBytes(locked)) +
        " partial\n";
    const std::string listOnlyLine = std::to_string(allocatedBytes(listOnly)) + " partial\n";
    EXPECT_EQ(*run.output, lockedLine + lockedLine + listOnlyLine + listOnlyLine);

    // Whoever can read everything gets the whole tree, without error.
    if (::geteuid() == 0) {
        EXPECT_EQ(DirectorySizer().measure(withLocked), (Measurement{allocatedBytesBelow(withLocked), false}));
        EXPECT_EQ(DirectorySizer().measure(withListOnly), (Measurement{allocatedBytesBelow(withListOnly), false}));
    }
}

TEST_F(DirectorySizerMeasure, SecondMeasurementWithAMemoDoesNotWalkAgain) {
    const path tree = makeDirectory(root / "tree");
    writeFile(tree / "a/one", 10000);
    writeFile(tree / "b/two", 20000);
    const std::int64_t before = allocatedBytesBelow(tree);
    const auto memo = std::make_shared<SizeMemo>();
    const DirectorySizer remembering(pool, {}, memo);
    ASSERT_EQ(remembering.measure(tree), (Measurement{before, false}));

    writeFile(tree / "c/three", 300000);
    const std::int64_t after = allocatedBytesBelow(tree);
    ASSERT_GT(after, before);
    // The same path, also spelt differently, comes from the memo and still shows the old tree.
    EXPECT_EQ(remembering.measure(tree), (Measurement{before, false}));
    EXPECT_EQ(remembering.measure(tree.string() + "/"), (Measurement{before, false}));
    EXPECT_EQ(remembering.measure(tree / "a/.."), (Measurement{before, false}));
    // Another sizer sharing the memo gets the same; one without it walks the changed tree.
    EXPECT_EQ(DirectorySizer(pool, {}, memo).measure(tree).bytes, before);
    EXPECT_EQ(pooled(tree).bytes, after);
    // Other paths are still measured.
    EXPECT_EQ(remembering.measure(tree / "c").bytes, allocatedBytesBelow(tree / "c"));
}

TEST_F(DirectorySizerMeasure, StopRequestReturnsEarlyAndIsNotRemembered) {
    const path tree = makeDirectory(root / "tree");
    for (int folder = 0; folder < 20; ++folder)
        writeFile(tree / ("folder-" + std::to_string(folder)) / "sub/data", 50000);
    const std::int64_t full = allocatedBytesBelow(tree);

    std::stop_source stop;
    stop.request_stop();
    const auto memo = std::make_shared<SizeMemo>();
    const Measurement stopped = DirectorySizer(pool, stop.get_token(), memo).measure(tree);
    EXPECT_TRUE(stopped.hadErrors);
    EXPECT_LT(stopped.bytes, full);
    // The cut-short result must not stand in for the real one later in the scan.
    EXPECT_EQ(DirectorySizer(pool, {}, memo).measure(tree), (Measurement{full, false}));
}

}  // namespace
}  // namespace kelvo
