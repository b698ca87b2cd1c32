#include <gtest/gtest.h>

#include <limits>

#include "prepare/OldSimRuntimeDetector.h"
#include "kelvo/PrepareSummary.h"
#include "kelvo/SimRuntime.h"
#include "support/Instants.h"
#include "support/ScopedEnvironment.h"
#include "support/TargetIds.h"
#include "support/Targets.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::idsOf, testing::targetOf, testing::utc;

std::map<std::string, SimRuntime> parsed(const std::string& json) {
    std::map<std::string, SimRuntime> byIdentifier;
    for (const auto& runtime : SimRuntimeLister::parse(json)) byIdentifier.emplace(runtime.identifier, runtime);
    return byIdentifier;
}

TEST(SimRuntimeParse, ACompleteRuntimeAndTheDisplayNames) {
    EXPECT_EQ(SimRuntimeLister::parse(R"({"A1": {"version": "17.2", "runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.iOS-17-2",
        "sizeBytes": 7000000000, "deletable": true, "lastUsedAt": "2024-01-05T10:00:00Z", "state": "Ready"}})"),
              (std::vector<SimRuntime>{{"A1", "iOS 17.2", 7000000000, true, utc(2024, 1, 5, 10)}}));
    const auto runtimes = parsed(R"({
        "watch": {"runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.watchOS-10-2"},
        "bare": {"sizeBytes": 5},
        "unknownPlatform": {"version": "1.0", "runtimeIdentifier": "com.example.Other-1-0"},
        "numericIdentifier": {"version": "3.0", "runtimeIdentifier": 12},
        "tv": {"version": "17.0", "runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.tvOS-17-0"},
        "vision": {"version": "1.1", "runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.visionOS-1-1"},
        "watchFirst": {"version": "10.0", "runtimeIdentifier": "iOS-pairs-with-watchOS"},
        "emptyVersion": {"version": "", "runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.iOS-16-4"},
        "twice": {"runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.com.apple.CoreSimulator.SimRuntime.x"},
        "lowercase": {"version": "9.9", "runtimeIdentifier": "com.example.ios-9-9.watchos"}
    })");
    const std::map<std::string, std::string> names{
        {"watch", "watchOS-10-2"}, {"bare", "bare"},         {"unknownPlatform", "iOS 1.0"}, {"numericIdentifier", "iOS 3.0"},
        {"tv", "tvOS 17.0"},       {"vision", "visionOS 1.1"}, {"watchFirst", "watchOS 10.0"}, {"emptyVersion", "iOS-16-4"},
        {"twice", "x"},            {"lowercase", "iOS 9.9"},
    };
    ASSERT_EQ(runtimes.size(), names.size());
    for (const auto& [identifier, name] : names) EXPECT_EQ(runtimes.at(identifier).name, name) << identifier;
}

TEST(SimRuntimeParse, FieldsOfTheWrongTypeTakeTheirDefaultsAndOtherMembersAreLeftOut) {
    const auto runtimes = parsed(R"({
        "sizeAsText": {"sizeBytes": "123", "deletable": "true", "lastUsedAt": 1704448800},
        "sizeFraction": {"sizeBytes": 1.5, "deletable": 2, "lastUsedAt": "2024-01-05T10:00:00.123Z"},
        "sizeWholeFloat": {"sizeBytes": 4096.0, "deletable": 1, "lastUsedAt": ""},
        "negative": {"sizeBytes": -7, "deletable": 0},
        "tooLarge": {"sizeBytes": 18446744073709551615, "deletable": false},
        "floatPastTheTop": {"sizeBytes": 9223372036854775808.0}, "floatAtTheBottom": {"sizeBytes": -9223372036854775808.0},
        "text": "not an object", "list": [1, 2], "null": null, "number": 3
    })");
    const std::map<std::string, std::pair<std::int64_t, bool>> expected{
        {"sizeAsText", {0, false}}, {"sizeFraction", {0, false}}, {"sizeWholeFloat", {4096, true}},
        {"negative", {-7, false}},  {"tooLarge", {0, false}}, {"floatPastTheTop", {0, false}},
        {"floatAtTheBottom", {std::numeric_limits<std::int64_t>::min(), false}},
    };
    ASSERT_EQ(runtimes.size(), expected.size());
    for (const auto& [identifier, fields] : expected) {
        const auto& runtime = runtimes.at(identifier);
        EXPECT_EQ(std::pair(runtime.sizeBytes, runtime.isDeletable), fields) << identifier;
        EXPECT_EQ(runtime.lastUsed, std::nullopt) << identifier;
    }
    for (const std::string document : {R"([{"version": "17.2"}])", "not json at all", "", R"({"A1": {"version": "17.2"})", "\"text\""})
        EXPECT_TRUE(SimRuntimeLister::parse(document).empty()) << document;
}

TEST(SimRuntimeDate, InternetDateTimeOnly) {
    const std::vector<std::pair<std::string, std::optional<std::chrono::system_clock::time_point>>> cases{
        {"2024-03-01T14:22:05Z", utc(2024, 3, 1, 14, 22, 5)}, {"2024-03-01T14:22:05+01:00", utc(2024, 3, 1, 13, 22, 5)},
        {"2024-03-01T00:22:05-05:30", utc(2024, 3, 1, 5, 52, 5)}, {"2024-12-31T23:59:59Z", utc(2024, 12, 31, 23, 59, 59)},
        {"2024-03-01T23:00:00+23:00", utc(2024, 3, 1)}, {"2024-03-01T00:59:00+00:59", utc(2024, 3, 1)},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(SimRuntimeLister::parseDate(text), expected) << text;
    for (const std::string text : {"", "2024-01-05T10:00:00.123Z", "2024-01-05T10:00:00", "2024-01-05 10:00:00Z",
                                   "2024-01-05T10:00Z", "2024-01-05T10:00:00+0100", "2024-01-05T10:00:00+01", "2024-01-05T10:00:00+24:00", "2024-01-05T10:00:00+00:60",
                                   "2024-02-30T10:00:00Z", "2024-01-05T25:00:00Z", "2024-01-05T10:00:00Zjunk",
                                   " 2024-01-05T10:00:00Z", "2024-1-05T10:00:00Z"})
        EXPECT_EQ(SimRuntimeLister::parseDate(text), std::nullopt) << text;
}

TEST(OldSimRuntimeDetector, OffersDeletableRuntimesUsedBeforeTheCutOffOrAllWithoutNow) {
    const auto cutOff = utc(2024, 4, 1);  // 3 months of 30 days before the 30th of June
    const RuntimeLister lister = [runtimes = std::vector<SimRuntime>{
        {"A-1_b.C", "iOS 17.2", 7000000000, true, utc(2024, 3, 1)}, {"Locked", "iOS 16.0", 5000000000, false, utc(2024, 3, 1)},
        {"Edge", "iOS 16.1", 10, true, cutOff}, {"JustBefore", "iOS 16.2", 20, true, cutOff - 1s},
        {"NeverUsed", "iOS 15.0", 40, true, std::nullopt},
        {"x; rm -rf ~", "odd", 1, true, std::nullopt},  // a strange identifier stays one shell word
        {"it's", "quote", 1, true, std::nullopt},
    }] { return runtimes; };
    const auto targets = OldSimRuntimeDetector(lister, 3, utc(2024, 6, 30)).scan();
    ASSERT_EQ(idsOf(targets), (std::vector<std::string>{"sim-runtime:A-1_b.C", "sim-runtime:JustBefore"}));
    EXPECT_EQ(targets[0].kind, CleanKind::command("xcrun simctl runtime delete A-1_b.C"));
    EXPECT_EQ(targets[0].sizeBytes, 7000000000);
    const auto all = OldSimRuntimeDetector(lister, 3, std::nullopt).scan();
    ASSERT_EQ(idsOf(all), (std::vector<std::string>{"sim-runtime:A-1_b.C", "sim-runtime:Edge", "sim-runtime:JustBefore",
                                                    "sim-runtime:NeverUsed", "sim-runtime:x; rm -rf ~", "sim-runtime:it's"}));
    EXPECT_EQ(all[4].kind.commandLine(), "xcrun simctl runtime delete 'x; rm -rf ~'");
    EXPECT_EQ(all[5].kind.commandLine(), "xcrun simctl runtime delete 'it'\\''s'");
}

CleanTarget leftover(std::int64_t bytes) { return targetOf("leftover:x", CleanKind::paths({"/h/x"}), bytes, Family::appLeftovers); }
CleanTarget app(std::int64_t bytes) { return targetOf("app:x", CleanKind::paths({"/h/X.app"}), bytes, Family::unusedApps); }
CleanTarget runtime(std::int64_t bytes) {
    return targetOf("sim-runtime:x", CleanKind::command("xcrun simctl runtime delete x"), bytes, Family::simulators);
}

TEST(PrepareSummary, ReadsAsWritten) {
    const testing::ScopedEnvironment english(testing::ScopedEnvironment::Values{{"LC_ALL", "C"}});
    // Given out of order; a target of another family adds to the total without a part, and
    // a command of known size is not of unknown size.
    const auto other = targetOf("derived-data", CleanKind::command("true"), 7, Family::xcodeCore);
    const std::vector<std::pair<std::vector<CleanTarget>, std::string>> cases{
        {{}, "Will free 0 B. Removal is permanent."},
        {{leftover(1024), runtime(0)},
         "Will free 1.00 KB (1 leftover · 1 runtime), plus 1 of unknown size. Removal is permanent."},
        {{app(100), app(200)}, "Will free 300 B (2 apps). Removal is permanent. 2 applications will be uninstalled."},
        {{runtime(5000), app(2000), leftover(3000), leftover(4000), other},
         "Will free 13.68 KB (2 leftovers · 1 app · 1 runtime). Removal is permanent. One application will be uninstalled."},
    };
    for (const auto& [targets, expected] : cases) EXPECT_EQ(PrepareSummary::line(targets), expected);
}

}  // namespace
}  // namespace kelvo
