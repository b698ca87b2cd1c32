#include <gtest/gtest.h>

#include "kelvo/DiskSpace.h"
#include "kelvo/Reporter.h"
#include "support/TargetIds.h"
#include "support/Targets.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

CleanTarget target(std::string id, Family family, Level level, std::int64_t size) {
    auto made = testing::targetOf(std::move(id), CleanKind::paths({"/p"}), size, family);
    made.level = level;
    return made;
}

TEST(Reporter, SumsByFamilyAndLevelKeepingZeroEntriesAndTheTargetsInOrder) {
    const auto summary = Reporter::summarize({
        target("x", Family::python, Level::moderate, 5),
        target("y", Family::jvm, Level::safe, 0),  // only size 0: still an entry of 0
        target("z", Family::python, Level::aggressive, 7),
    });
    EXPECT_EQ(summary.totalBytes, 12);
    EXPECT_EQ(summary.byFamily, (std::map<Family, std::int64_t>{{Family::python, 12}, {Family::jvm, 0}}));
    EXPECT_EQ(summary.byLevel, (std::map<Level, std::int64_t>{{Level::moderate, 5}, {Level::safe, 0}, {Level::aggressive, 7}}));
    EXPECT_EQ(testing::idsOf(summary.targets), (std::vector<std::string>{"x", "y", "z"}));
    const auto sorted = Reporter::largestFirst({target("five", Family::jvm, Level::safe, 5), target("nine1", Family::jvm, Level::safe, 9),
                                                target("nine2", Family::jvm, Level::safe, 9), target("one", Family::jvm, Level::safe, 1)});
    EXPECT_EQ(testing::idsOf(sorted), (std::vector<std::string>{"nine1", "nine2", "five", "one"}));
}

TEST(DiskSpace, UsedBytesAndFractionStayInRangeAtTheEdges) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    const std::vector<std::tuple<DiskSpace, std::int64_t, double>> cases{
        {{100, 25}, 75, 0.75},
        {{100, 150}, 0, 0.0},  // more free than total (purgeable space counted): nothing used
        {{0, 0}, 0, 0.0},
        {{-5, -10}, 5, 0.0},  // no total: no fraction
        {{100, 0}, 100, 1.0},
        {{largest, -1}, largest, 1.0},  // would overflow a plain subtraction
        {{std::numeric_limits<std::int64_t>::min(), 1}, 0, 0.0},
    };
    for (const auto& [space, used, fraction] : cases) {
        EXPECT_EQ(space.usedBytes(), used) << space.totalBytes << " " << space.freeBytes;
        EXPECT_DOUBLE_EQ(space.usedFraction(), fraction) << space.totalBytes << " " << space.freeBytes;
    }
    testing::TempDir directory;
    const auto current = DiskSpace::current(directory.path());
    ASSERT_TRUE(current);
    EXPECT_GT(current->totalBytes, 0);
    EXPECT_LE(current->freeBytes, current->totalBytes);
    EXPECT_EQ(DiskSpace::current(directory / "missing/deeper"), std::nullopt);
}

}  // namespace
}  // namespace kelvo
