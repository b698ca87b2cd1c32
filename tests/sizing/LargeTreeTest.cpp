// Trees at the limits: a million names in one folder (in the suite labelled large, left
// out of the default run), and folders removed while they are measured.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "kelvo/DirectorySizer.h"
#include "kelvo/WorkerPool.h"
#include "support/TempDir.h"

namespace kelvo::testing {
namespace {

using std::filesystem::path;

// A folder of a million names. Making a million files on disk takes this machine about
// 50 seconds, so the names are hard links (16 files, each linked 62,500 times: below every
// file system's link limit) made in memory where the machine allows; a link costs
// far less than a file. A file counts only when all its names were met, and then once, so
// the total proves that each of the million names was listed.
TEST(LargeFolder, MillionEntriesAreEachCountedOnce) {
    constexpr int entries = 1'000'000, files = 16;
    const TempDir parent(TempDir::memory);
    const path big = makeDirectory(parent / "big");
    const int fd = ::open(big.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    const auto nameOf = [](int index) {
        char name[16];
        std::snprintf(name, sizeof name, "e%07d", index);
        return std::string(name);
    };
    for (int index = 0; index < files; ++index) writeFile(big / nameOf(index), 1);
    int made = files;
    for (; made < entries; ++made)
        if (::linkat(fd, nameOf(made % files).c_str(), fd, nameOf(made).c_str(), 0) != 0) break;
    const int linkError = errno;
    const std::int64_t perFile = allocatedBytes(big / nameOf(0));

    Measurement alone, pooled;
    if (made == entries) {
        WorkerPool pool(4);
        alone = DirectorySizer().measure(parent.path());
        pooled = DirectorySizer(pool).measure(parent.path());
    }
    const std::int64_t expected = allocatedBytes(big) + perFile * files;

    for (int index = 0; index < made; ++index) ::unlinkat(fd, nameOf(index).c_str(), 0);
    ::close(fd);

    ASSERT_EQ(made, entries) << "could not make the names: " << std::strerror(linkError);
    ASSERT_GT(perFile, 0);
    for (const Measurement* measured : {&alone, &pooled})
        EXPECT_EQ(std::tuple(measured->bytes, measured->sharedBytes, measured->hadErrors), std::tuple(expected, 0, false));
}

TEST(DirectorySizerLimits, FoldersRemovedDuringTheWalk) {
    TempDir root;
    const path tree = makeDirectory(root / "tree");
    constexpr int folders = 20;
    for (int index = 0; index < folders * 30; ++index)
        writeFile(tree / ("folder-" + std::to_string(index / 30)) / ("sub-" + std::to_string(index % 6)) /
                      ("f" + std::to_string(index % 30)), 5000);
    WorkerPool pool(4);
    const DirectorySizer sizer(pool);
    const Measurement initial = sizer.measure(tree);
    ASSERT_EQ(initial, (Measurement{allocatedBytesBelow(tree), false}));

    // Every folder but the first goes, deepest parts first as a removal would take them.
    std::atomic<bool> removing{true};
    std::thread remover([&] {
        for (int folder = folders - 1; folder > 0; --folder)
            std::filesystem::remove_all(tree / ("folder-" + std::to_string(folder)));
        removing = false;
    });
    std::vector<Measurement> during;
    while (removing) {
        during.push_back(sizer.measure(tree));
        during.push_back(DirectorySizer().measure(tree));
    }
    remover.join();

    ASSERT_FALSE(during.empty());
    for (const auto& measurement : during) {
        EXPECT_LE(measurement.bytes, initial.bytes);
        EXPECT_GE(measurement.bytes, allocatedBytesBelow(tree / "folder-0"));
    }
    EXPECT_EQ(sizer.measure(tree), (Measurement{allocatedBytesBelow(tree), false}));
    EXPECT_LT(allocatedBytesBelow(tree), initial.bytes / 10);
}

}  // namespace
}  // namespace kelvo::testing
