#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "support/Instants.h"
#include "kelvo/SimRuntime.h"

namespace kelvo {
namespace {

using testing::utc;

std::optional<SimRuntime> find(const std::vector<SimRuntime>& runtimes, const std::string& identifier) {
    const auto found = std::find_if(runtimes.begin(), runtimes.end(),
                                    [&](const SimRuntime& runtime) { return runtime.identifier == identifier; });
    if (found == runtimes.end()) return std::nullopt;
    return *found;
}

TEST(SimRuntimeParse, OneCompleteRuntime) {
    const auto runtimes = SimRuntimeLister::parse(R"({
        "A1": {"version": "17.2", "runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.iOS-17-2",
               "sizeBytes": 7000000000, "deletable": true, "lastUsedAt": "2024-01-05T10:00:00Z",
               "state": "Ready", "build": "21C62"}
    })");
    EXPECT_EQ(runtimes, (std::vector<SimRuntime>{{"A1", "iOS 17.2", 7000000000, true, utc(2024, 1, 5, 10)}}));
}

TEST(SimRuntimeParse, DisplayNames) {
    const auto runtimes = SimRuntimeLister::parse(R"({
        "watch": {"runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.watchOS-10-2"},
        "bare": {"sizeBytes": 5},
        "unknownPlatform": {"version": "1.0", "runtimeIdentifier": "com.example.Other-1-0"},
        "noIdentifier": {"version": "2.0"},
        "numericIdentifier": {"version": "3.0", "runtimeIdentifier": 12},
        "tv": {"version": "17.0", "runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.tvOS-17-0"},
        "vision": {"version": "1.1", "runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.visionOS-1-1"},
        "watchFirst": {"version": "10.0", "runtimeIdentifier": "iOS-pairs-with-watchOS"},
        "emptyVersion": {"version": "", "runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.iOS-16-4"},
        "twice": {"runtimeIdentifier": "com.apple.CoreSimulator.SimRuntime.com.apple.CoreSimulator.SimRuntime.x"},
        "lowercase": {"version": "9.9", "runtimeIdentifier": "com.example.ios-9-9.watchos"}
    })");
    ASSERT_EQ(runtimes.size(), 11u);
    const std::map<std::string, std::string> expected{
        {"watch", "watchOS-10-2"}, {"bare", "bare"},           {"unknownPlatform", "iOS 1.0"}, {"noIdentifier", "iOS 2.0"},
        {"numericIdentifier", "iOS 3.0"}, {"tv", "tvOS 17.0"}, {"vision", "visionOS 1.1"}, {"watchFirst", "watchOS 10.0"},
        {"emptyVersion", "iOS-16-4"},   {"twice", "x"},        {"lowercase", "iOS 9.9"},
    };
    for (const auto& [identifier, name] : expected) {
        const auto runtime = find(runtimes, identifier);
        ASSERT_TRUE(runtime) << identifier;
        EXPECT_EQ(runtime->name, name) << identifier;
    }
}

TEST(SimRuntimeParse, FieldsOfTheWrongTypeTakeTheirDefaults) {
    const auto runtimes = SimRuntimeLister::parse(R"({
        "sizeAsText": {"sizeBytes": "123", "deletable": "true"},
        "sizeFraction": {"sizeBytes": 1.5, "deletable": 2},
        "sizeWholeFloat": {"sizeBytes": 4096.0, "deletable": 1},
        "negative": {"sizeBytes": -7, "deletable": 0},
        "tooLarge": {"sizeBytes": 18446744073709551615, "deletable": false},
        "missing": {}
    })");
    ASSERT_EQ(runtimes.size(), 6u);
    const std::map<std::string, std::pair<std::int64_t, bool>> expected{
        {"sizeAsText", {0, false}}, {"sizeFraction", {0, false}}, {"sizeWholeFloat", {4096, true}},
        {"negative", {-7, false}},  {"tooLarge", {0, false}},     {"missing", {0, false}},
    };
    for (const auto& [identifier, fields] : expected) {
        const auto runtime = find(runtimes, identifier);
        ASSERT_TRUE(runtime) << identifier;
        EXPECT_EQ(runtime->sizeBytes, fields.first) << identifier;
        EXPECT_EQ(runtime->isDeletable, fields.second) << identifier;
        EXPECT_EQ(runtime->lastUsed, std::nullopt) << identifier;
    }
}

TEST(SimRuntimeParse, LastUsedDates) {
    const auto runtimes = SimRuntimeLister::parse(R"({
        "fraction": {"lastUsedAt": "2024-01-05T10:00:00.123Z"},
        "empty": {"lastUsedAt": ""},
        "number": {"lastUsedAt": 1704448800},
        "offset": {"lastUsedAt": "2024-01-05T12:30:00+02:30"}
    })");
    ASSERT_EQ(runtimes.size(), 4u);
    EXPECT_EQ(find(runtimes, "fraction")->lastUsed, std::nullopt);
    EXPECT_EQ(find(runtimes, "empty")->lastUsed, std::nullopt);
    EXPECT_EQ(find(runtimes, "number")->lastUsed, std::nullopt);
    EXPECT_EQ(find(runtimes, "offset")->lastUsed, utc(2024, 1, 5, 10));
}

TEST(SimRuntimeParse, MalformedDocumentsAndMembers) {
    EXPECT_TRUE(SimRuntimeLister::parse(R"([{"version": "17.2"}])").empty());
    EXPECT_TRUE(SimRuntimeLister::parse("not json at all").empty());
    EXPECT_TRUE(SimRuntimeLister::parse("").empty());
    EXPECT_TRUE(SimRuntimeLister::parse(R"({"A1": {"version": "17.2"})").empty());  // truncated
    EXPECT_TRUE(SimRuntimeLister::parse("\"text\"").empty());

    const auto runtimes = SimRuntimeLister::parse(R"({
        "text": "not an object", "list": [1, 2], "null": null, "number": 3,
        "kept": {"version": "17.0", "deletable": true}, "alsoKept": {}
    })");
    std::vector<std::string> identifiers;
    for (const auto& runtime : runtimes) identifiers.push_back(runtime.identifier);
    std::sort(identifiers.begin(), identifiers.end());
    EXPECT_EQ(identifiers, (std::vector<std::string>{"alsoKept", "kept"}));
}

TEST(SimRuntimeDate, InternetDateTimeOnly) {
    EXPECT_EQ(SimRuntimeLister::parseDate("2024-03-01T14:22:05Z"), utc(2024, 3, 1, 14, 22, 5));
    EXPECT_EQ(SimRuntimeLister::parseDate("2024-03-01T14:22:05+01:00"), utc(2024, 3, 1, 13, 22, 5));
    EXPECT_EQ(SimRuntimeLister::parseDate("2024-03-01T00:22:05-05:30"), utc(2024, 3, 1, 5, 52, 5));
    EXPECT_EQ(SimRuntimeLister::parseDate("2024-12-31T23:59:59Z"), utc(2024, 12, 31, 23, 59, 59));
    for (const std::string text : {"", "2024-01-05T10:00:00.123Z", "2024-01-05T10:00:00", "2024-01-05 10:00:00Z",
                                   "2024-01-05T10:00Z", "2024-01-05T10:00:00+0100", "2024-01-05T10:00:00+01",
                                   "2024-02-30T10:00:00Z", "2024-01-05T25:00:00Z", "2024-01-05T10:00:00Zjunk",
                                   " 2024-01-05T10:00:00Z", "2024-1-05T10:00:00Z"})
        EXPECT_EQ(SimRuntimeLister::parseDate(text), std::nullopt) << text;
}

TEST(SimRuntimeLister, LiveListIsEmptyWithoutTheSimulatorTool) {
    if (std::filesystem::exists("/usr/bin/xcrun")) GTEST_SKIP() << "/usr/bin/xcrun exists here";
    EXPECT_TRUE(SimRuntimeLister::live().empty());
}

}  // namespace
}  // namespace kelvo
