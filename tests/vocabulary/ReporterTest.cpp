#include <gtest/gtest.h>

#include "kelvo/Reporter.h"
#include "support/TargetIds.h"

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

// Families in declaration order whatever the input order, each group largest first, and
// no group for a family without targets.
TEST(ReporterByFamily, GroupsInFamilyOrderLargestFirst) {
    const auto groups = Reporter::byFamily({target("p1", Family::python, Level::safe, 1),
                                            target("d1", Family::docker, Level::safe, 2),
                                            target("p2", Family::python, Level::safe, 9),
                                            target("x1", Family::xcodeCore, Level::safe, 0)});
    std::vector<std::pair<Family, std::vector<std::string>>> seen;
    for (const auto& [family, members] : groups) seen.emplace_back(family, testing::idsOf(members));
    const std::vector<std::pair<Family, std::vector<std::string>>> expected{
        {Family::xcodeCore, {"x1"}}, {Family::docker, {"d1"}}, {Family::python, {"p2", "p1"}}};
    EXPECT_EQ(seen, expected);
    EXPECT_TRUE(Reporter::byFamily({}).empty());
}

}  // namespace
}  // namespace kelvo
