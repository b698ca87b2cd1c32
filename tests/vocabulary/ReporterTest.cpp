#include <gtest/gtest.h>

#include "kelvo/Reporter.h"

namespace kelvo {
namespace {

CleanTarget target(std::string id, Family family, Level level, std::int64_t size) {
    CleanTarget made;
    made.id = std::move(id);
    made.family = family;
    made.sizeBytes = size;
    made.level = level;
    return made;
}

TEST(ReporterSummarize, EmptyListGivesNothing) {
    const auto summary = Reporter::summarize({});
    EXPECT_EQ(summary.totalBytes, 0);
    EXPECT_TRUE(summary.byFamily.empty());
    EXPECT_TRUE(summary.byLevel.empty());
    EXPECT_TRUE(summary.targets.empty());
}

TEST(ReporterSummarize, SameFamilyWithAZeroSizeGivesOneEntry) {
    const auto summary = Reporter::summarize(
        {target("a", Family::docker, Level::safe, 10), target("b", Family::docker, Level::safe, 0)});
    EXPECT_EQ(summary.totalBytes, 10);
    EXPECT_EQ(summary.byFamily, (std::map<Family, std::int64_t>{{Family::docker, 10}}));
    EXPECT_EQ(summary.byLevel, (std::map<Level, std::int64_t>{{Level::safe, 10}}));
}

TEST(ReporterSummarize, SumsByFamilyAndLevelAndKeepsTheTargetsInOrder) {
    const auto summary = Reporter::summarize({
        target("x", Family::python, Level::moderate, 5),
        target("y", Family::jvm, Level::safe, 0),  // only size 0: still an entry of 0
        target("z", Family::python, Level::aggressive, 7),
    });
    EXPECT_EQ(summary.totalBytes, 12);
    EXPECT_EQ(summary.byFamily, (std::map<Family, std::int64_t>{{Family::python, 12}, {Family::jvm, 0}}));
    EXPECT_EQ(summary.byLevel,
              (std::map<Level, std::int64_t>{{Level::moderate, 5}, {Level::safe, 0}, {Level::aggressive, 7}}));
    ASSERT_EQ(summary.targets.size(), 3u);
    EXPECT_EQ(summary.targets[0].id, "x");
    EXPECT_EQ(summary.targets[1].id, "y");
    EXPECT_EQ(summary.targets[2].id, "z");
}

}  // namespace
}  // namespace kelvo
