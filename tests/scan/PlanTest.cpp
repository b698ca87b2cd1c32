#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "kelvo/PlanSelection.h"
#include "kelvo/ScanPlanJSON.h"
#include "support/Targets.h"

namespace kelvo {
namespace {

using testing::targetOf;

CleanTarget target(std::string id, Level level, std::int64_t size = 10, Family family = Family::devMisc) {
    auto made = targetOf(std::move(id), CleanKind::paths({"/p"}), size, family);
    made.level = level;
    return made;
}

TEST(PlanSelection, PreselectsRegenerableNonAggressiveEstimableTargetsNotBehindALink) {
    const auto with = [](CleanTarget made, auto change) {
        change(made);
        return made;
    };
    const std::vector<std::pair<CleanTarget, bool>> cases{
        {target("safe-path-0", Level::safe, 0), true},
        {target("moderate", Level::moderate), true},
        {target("aggressive", Level::aggressive), false},
        {with(target("command-0", Level::safe, 0), [](auto& t) { t.kind = CleanKind::command("x"); }), false},
        {with(target("command-1", Level::safe, 1), [](auto& t) { t.kind = CleanKind::command("x"); }), true},
        {with(target("user", Level::safe), [](auto& t) { t.reversibility = Reversibility::userData; }), false},
        {with(target("linked", Level::safe), [](auto& t) { t.blockedByLink = true; }), false},
    };
    for (const auto& [made, preselected] : cases) EXPECT_EQ(PlanSelection::isPreselected(made), preselected) << made.id;
}

TEST(PlanSelection, OneChoicePerIdByToggleOrByIdsAndFamilies) {
    PlanSelection plan({target("a", Level::safe), target("b", Level::aggressive, 5, Family::docker), target("a", Level::safe),
                        target("c", Level::aggressive)});
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
    auto slashed = target("derived-data", Level::safe, 4096, Family::xcodeCore);
    slashed.name = "Derived/Data";
    ScanPlanJSON plan({slashed});
    plan.notes = {"X points to /srv/x"};
    EXPECT_EQ(plan.encoded(), R"({
  "byFamily" : {
    "xcodeCore" : 4096
  },
  "byLevel" : {
    "safe" : 4096
  },
  "notes" : [
    "X points to \/srv\/x"
  ],
  "targets" : [
    {
      "family" : "xcodeCore",
      "id" : "derived-data",
      "level" : "safe",
      "name" : "Derived\/Data",
      "notes" : "",
      "preselected" : true,
      "regenCost" : "rebuild",
      "reversibility" : "regenerable",
      "sizeBytes" : 4096
    }
  ],
  "totalBytes" : 4096
})");
}

TEST(ScanPlanJSON, TheDocumentDecodesToThePlan) {
    auto noted = target("noted", Level::moderate, 12, Family::docker);
    noted.notes = "partial \"size\"\n";
    noted.regenCost = RegenCost::redownload;
    const ScanPlanJSON plan({noted, target("a/b", Level::aggressive, 0), target("", Level::safe, 3)});
    const auto decoded = nlohmann::json::parse(plan.encoded());
    EXPECT_EQ(decoded.at("totalBytes").get<std::int64_t>(), plan.totalBytes);
    using Totals = std::map<std::string, std::int64_t>;
    EXPECT_EQ(decoded.at("byFamily").get<Totals>(), plan.byFamily);
    EXPECT_EQ(decoded.at("byLevel").get<Totals>(), plan.byLevel);
    EXPECT_FALSE(decoded.contains("notes"));
    ASSERT_EQ(decoded.at("targets").size(), plan.targets.size());
    for (std::size_t index = 0; index < plan.targets.size(); ++index) {
        const auto& json = decoded["targets"][index];
        const auto& expected = plan.targets[index];
        const ScanPlanJSON::Target read{json.at("id"), json.at("name"), json.at("family"), json.at("sizeBytes"),
                                        json.at("level"), json.at("reversibility"), json.at("regenCost"),
                                        json.at("preselected"), json.at("notes")};
        EXPECT_EQ(std::tie(read.id, read.name, read.family, read.sizeBytes, read.level, read.reversibility,
                           read.regenCost, read.preselected, read.notes),
                  std::tie(expected.id, expected.name, expected.family, expected.sizeBytes, expected.level,
                           expected.reversibility, expected.regenCost, expected.preselected, expected.notes));
    }
    EXPECT_EQ(plan.totalBytes, 15);
    EXPECT_EQ(plan.byFamily.at("docker"), 12);
}

}  // namespace
}  // namespace kelvo
