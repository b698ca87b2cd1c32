#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kelvo/DirectorySizer.h"
#include "kelvo/WorkerPool.h"
#include "support/DeepTree.h"
#include "support/TempDir.h"

namespace kelvo::testing {
namespace {

namespace fs = std::filesystem;
using fs::path;

// Every measurement is made twice: on the calling thread alone, and split across a pool.
struct DirectorySizerMeasure : ::testing::Test {
    void expectBoth(const path& target, Measurement expected) {
        EXPECT_EQ(DirectorySizer().measure(target), expected) << "one thread: " << target;
        EXPECT_EQ(DirectorySizer(pool).measure(target), expected) << "pool: " << target;
    }
    TempDir root;
    WorkerPool pool{4};
};

// Every measurement test rests on this comparison: all figures and the files met count, and
// no list of files equals an empty one.
TEST(Measurement, EqualInEveryFigureAndInTheFilesMet) {
    const Measurement measured{4096, false};
    EXPECT_EQ(measured, (Measurement{4096, false, 0, std::make_shared<const std::vector<LinkedFile>>()}));
    const auto files = std::make_shared<const std::vector<LinkedFile>>(std::vector<LinkedFile>{{1, 2, 4096, 2, 1}});
    for (const Measurement& other : {Measurement{8192}, Measurement{4096, true}, Measurement{4096, false, 1},
                                     Measurement{4096, false, 0, files}})
        EXPECT_NE(measured, other) << other.bytes << " " << other.hadErrors << " " << other.sharedBytes;
}

TEST_F(DirectorySizerMeasure, CountsAllocatedBlocksOfEveryNameBelowAndNothingBeyond) {
    // A tree spread over the pool: sizes, a sparse file, a FIFO, links, hidden names, names that are not UTF-8.
    const path top = makeDirectory(root / "tree");
    for (int project = 0; project < 12; ++project)
        for (int file = 0; file < 15; ++file)
            writeFile(top / ("p" + std::to_string(project)) / ("m" + std::to_string(file % 4)) / ("f" + std::to_string(file)),
                      static_cast<std::size_t>(project * 997 + file * 3001));
    makeDirectory(top / "p0/build/empty");
    writeFile(top / ".hidden/blob", 20000);
    ::truncate(writeFile(top / "sparse", 4096).c_str(), 50'000'000);
    ::mkfifo((top / "pipe").c_str(), 0644);
    fs::create_symlink("p0", top / "link");
    fs::create_symlink("nowhere", top / "dangling");
    for (const auto& [name, size] : {std::pair{"caf\xe9/inside", 9000}, {"\xff\xfe\x80-bytes", 5000}, {"caf\xe9\xc3/\xff", 7000}})
        writeFile(top / name, size);
    writeFile(top / std::string(255, 'n') / "inside", 3000);  // the longest name a folder holds
    EXPECT_LT(allocatedBytes(top / "sparse"), 1'000'000);  // allocated, not logical
    expectBoth(top, {allocatedBytesBelow(top), false});
}

// Each query is one target's paths. The memo is shared by all of them, as in a scan, and
// must not carry one target's verdict on a file into another's.
TEST_F(DirectorySizerMeasure, AFileWithSeveralNamesCountsOnceAndOnlyWhenAllItsNamesAreInTheTarget) {
    const path blob = writeFile(root / "store/blob", 64 * 1024), lib = writeFile(root / "store/lib", 32 * 1024);
    fs::create_hard_link(blob, makeDirectory(root / "app/node_modules/.pnpm/pkg") / "blob");
    fs::create_hard_link(lib, root / "app/node_modules/.pnpm/pkg/lib");
    const path twice = writeFile(root / "cache/a/twice", 48 * 1024);
    fs::create_hard_link(twice, makeDirectory(root / "cache/b") / "again");
    const path split = writeFile(root / "first/split", 16 * 1024);
    fs::create_hard_link(split, writeFile(root / "second/own", 8 * 1024).parent_path() / "split");
    const std::int64_t b = allocatedBytes(blob), l = allocatedBytes(lib), t = allocatedBytes(twice), s = allocatedBytes(split);
    const auto below = [&](const char* name) { return allocatedBytesBelow(root / name); };
    const struct { std::vector<path> paths; std::int64_t bytes, shared; } cases[] = {
        {{root / "cache"}, below("cache") - t, 0},
        {{root / "app/node_modules"}, below("app/node_modules") - b - l, b + l},
        {{root / "first"}, below("first") - s, s},
        {{root / "first", root / "second"}, below("first") + below("second") - s, 0},
        {{root / "second"}, below("second") - s, s},
        {{root / "first/split"}, 0, s},
        {{root / "store", root / "app"}, below("store") + below("app") - b - l, 0},
    };
    const DirectorySizer remembering(pool, {}, std::make_shared<SizeMemo>()), alone;
    for (const auto& c : cases)
        for (const Measurement& measured : {remembering.measureAll(c.paths), alone.measureAll(c.paths)})
            EXPECT_EQ(std::tuple(measured.bytes, measured.sharedBytes, measured.hadErrors), std::tuple(c.bytes, c.shared, false))
                << c.paths.front() << " and " << c.paths.size() - 1;
}

TEST_F(DirectorySizerMeasure, PathsLongerThanPathMaxAreMeasuredAndNeverGuessedEmpty) {
    // 22 folders of 200 characters: some 4.4 KB of path, below a short top and above a tree.
    const path bottom = makeFolderChain(root / "real", 22, std::string(200, 'n'));
    ASSERT_GT(bottom.native().size(), 4400u);
    writeDeepFile(bottom / "tree/a/blob", 30000);
    writeDeepFile(bottom / "tree/b", 5000);
    writeDeepFile(bottom / "single/file", 9000);
    for (const auto& [measured, below] : {std::pair{root / "real", root / "real"}, {bottom / "tree", bottom / "tree"},
                                          {bottom / "single/file", bottom / "single"}})
        expectBoth(measured, {allocatedBytesBelow(below), false});
    expectBoth(bottom / "missing", {0, false});
    // A link on the way down such a path is not followed: what lies behind it is unknown, not empty.
    fs::create_directory_symlink(root / "real", root / "via");
    expectBoth(root / "via" / bottom.lexically_relative(root / "real") / "tree", {0, true});
}

TEST_F(DirectorySizerMeasure, AMemoAnswersAgainWithoutWalkingAndAStoppedWalkIsNotRemembered) {
    const path tree = makeDirectory(root / "tree");
    for (int folder = 0; folder < 20; ++folder) writeFile(tree / ("f" + std::to_string(folder)) / "sub/data", 50000);
    const std::int64_t before = allocatedBytesBelow(tree);
    const auto memo = std::make_shared<SizeMemo>();
    std::stop_source stop;
    stop.request_stop();
    const Measurement stopped = DirectorySizer(pool, stop.get_token(), memo).measure(tree);
    EXPECT_TRUE(stopped.hadErrors && stopped.bytes < before);
    const DirectorySizer remembering(pool, {}, memo);
    ASSERT_EQ(remembering.measure(tree), (Measurement{before, false}));
    writeFile(tree / "late/three", 300000);
    // The same path, also spelt differently, comes from the memo and still shows the old tree.
    for (const path& spelling : {tree, path(tree.string() + "/"), tree / "f0/.."})
        EXPECT_EQ(remembering.measure(spelling), (Measurement{before, false})) << spelling;
    EXPECT_EQ(DirectorySizer(pool).measure(tree).bytes, allocatedBytesBelow(tree));
    EXPECT_EQ(remembering.measure(tree / "late").bytes, allocatedBytesBelow(tree / "late"));
}

}  // namespace
}  // namespace kelvo::testing
