#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "kelvo/PlanSelection.h"
#include "kelvo/Reporter.h"
#include "kelvo/ScanPlanJSON.h"

namespace kelvo {
namespace {

CleanTarget target(std::string id, Level level, std::int64_t size = 10, bool command = false,
                   Reversibility reversibility = Reversibility::regenerable, Family family = Family::devMisc) {
    CleanTarget made;
    made.id = std::move(id);
    made.name = made.id;
    made.level = level;
    made.sizeBytes = size;
    made.reversibility = reversibility;
    made.family = family;
    made.kind = command ? CleanKind::command("tool run") : CleanKind::paths({"/p/" + made.id});
    return made;
}

TEST(PlanSelection, PreselectsRegenerableNonAggressiveAndEstimableTargets) {
    EXPECT_TRUE(PlanSelection::isPreselected(target("safe-path-0", Level::safe, 0)));
    EXPECT_FALSE(PlanSelection::isPreselected(target("safe-command-0", Level::safe, 0, true)));
    EXPECT_TRUE(PlanSelection::isPreselected(target("safe-command-1", Level::safe, 1, true)));
    EXPECT_TRUE(PlanSelection::isPreselected(target("moderate", Level::moderate)));
    EXPECT_FALSE(PlanSelection::isPreselected(target("aggressive", Level::aggressive)));
    EXPECT_FALSE(PlanSelection::isPreselected(target("user", Level::safe, 10, false, Reversibility::userData)));
    auto linked = target("linked", Level::safe);
    linked.blockedByLink = true;
    EXPECT_FALSE(PlanSelection::isPreselected(linked));
}

TEST(PlanSelection, ToggleIgnoresOutOfRangeAndSharesOneChoicePerId) {
    PlanSelection plan({target("a", Level::safe), target("b", Level::aggressive), target("a", Level::safe)});
    EXPECT_EQ(plan.selectedIDs, (std::set<std::string>{"a"}));
    plan.toggle(-1);
    plan.toggle(3);
    EXPECT_EQ(plan.selectedIDs, (std::set<std::string>{"a"}));
    plan.toggle(1);
    plan.toggle(2);
    EXPECT_EQ(plan.selectedIDs, (std::set<std::string>{"b"}));
    ASSERT_EQ(plan.selectedTargets().size(), 1u);
    plan.toggle(0);
    const auto chosen = plan.selectedTargets();
    ASSERT_EQ(chosen.size(), 3u);  // both targets named "a", in order
    EXPECT_EQ(chosen[0].id, "a");
    EXPECT_EQ(chosen[1].id, "b");
}

TEST(PlanSelection, ChoiceByIdsAndFamiliesReplacesThePreselection) {
    PlanSelection plan({target("a", Level::safe), target("b", Level::aggressive, 5, false, Reversibility::regenerable, Family::docker),
                        target("c", Level::aggressive)});
    EXPECT_EQ(plan.unknownIDs({"c", "nope", "a", "gone"}), (std::vector<std::string>{"nope", "gone"}));
    plan.choose({"c"}, {Family::docker});
    EXPECT_EQ(plan.selectedIDs, (std::set<std::string>{"b", "c"}));
}

TEST(Reporter, SummarizesByFamilyAndLevelKeepingZeroEntries) {
    const auto summary = Reporter::summarize({target("a", Level::safe, 10), target("b", Level::safe, 0),
                                              target("c", Level::moderate, 0, false, Reversibility::regenerable, Family::docker)});
    EXPECT_EQ(summary.totalBytes, 10);
    EXPECT_EQ(summary.byFamily.at(Family::devMisc), 10);
    EXPECT_EQ(summary.byFamily.at(Family::docker), 0);
    EXPECT_EQ(summary.byLevel.size(), 2u);
    EXPECT_EQ(summary.targets.size(), 3u);
}

TEST(Reporter, LargestFirstKeepsTheOrderOfEqualSizes) {
    const auto sorted = Reporter::largestFirst(
        {target("five", Level::safe, 5), target("nine1", Level::safe, 9), target("nine2", Level::safe, 9), target("one", Level::safe, 1)});
    std::vector<std::string> ids;
    for (const auto& made : sorted) ids.push_back(made.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"nine1", "nine2", "five", "one"}));
}

TEST(ScanPlanJSON, EmptyPlanHasEveryKeyInTheLayout) {
    EXPECT_EQ(ScanPlanJSON({}).encoded(),
              "{\n  \"byFamily\" : {\n\n  },\n  \"byLevel\" : {\n\n  },\n  \"targets\" : [\n\n  ],\n  \"totalBytes\" : 0\n}");
}

TEST(ScanPlanJSON, TargetLayoutSortedKeysEscapedSlashesAndStableBytes) {
    auto withSlash = target("derived-data", Level::safe, 4096);
    withSlash.name = "Derived/Data";
    withSlash.family = Family::xcodeCore;
    withSlash.regenCost = RegenCost::rebuild;
    const auto plan = ScanPlanJSON({withSlash, target("k", Level::aggressive, 1)});
    const std::string text = plan.encoded();
    EXPECT_EQ(text, plan.encoded());
    const std::string expectedTarget =
        "    {\n"
        "      \"family\" : \"xcodeCore\",\n"
        "      \"id\" : \"derived-data\",\n"
        "      \"level\" : \"safe\",\n"
        "      \"name\" : \"Derived\\/Data\",\n"
        "      \"notes\" : \"\",\n"
        "      \"preselected\" : true,\n"
        "      \"regenCost\" : \"rebuild\",\n"
        "      \"reversibility\" : \"regenerable\",\n"
        "      \"sizeBytes\" : 4096\n"
        "    },\n";
    EXPECT_NE(text.find(expectedTarget), std::string::npos) << text;
    const auto decoded = nlohmann::json::parse(text);
    EXPECT_EQ(decoded["targets"][0]["name"], "Derived/Data");
    EXPECT_EQ(decoded["targets"][1]["preselected"], false);
    EXPECT_EQ(decoded["byFamily"]["xcodeCore"], 4096);
    EXPECT_EQ(decoded["byLevel"]["aggressive"], 1);
    EXPECT_EQ(decoded["totalBytes"], 4097);
}

TEST(ScanPlanJSON, NotesAppearOnlyWhenThereAreSome) {
    ScanPlanJSON plan({});
    const std::string without = plan.encoded();
    plan.notes = {"X points to /srv/x"};
    const std::string with = plan.encoded();
    EXPECT_EQ(without.find("notes"), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(with)["notes"], nlohmann::json::array({"X points to /srv/x"}));
    EXPECT_NE(with.find("\"notes\" : [\n    \"X points to \\/srv\\/x\"\n  ],\n  \"targets\""), std::string::npos) << with;
}

TEST(ScanPlanJSON, TotalsComeFromTheSummaryAsPassed) {
    const auto docker = target("d", Level::safe, 5, false, Reversibility::regenerable, Family::docker);
    const auto plan = ScanPlanJSON({docker}, Reporter::summarize({}), {});
    const auto decoded = nlohmann::json::parse(plan.encoded());
    EXPECT_TRUE(decoded["byFamily"].empty());
    ASSERT_EQ(decoded["targets"].size(), 1u);
    EXPECT_EQ(decoded["targets"][0]["preselected"], false);
}

}  // namespace
}  // namespace kelvo
