#include <gtest/gtest.h>

#include "app/InMemoryStore.h"
#include "kelvo/VersionGate.h"

namespace kelvo {
namespace {

TEST(VersionGate, ComparesDottedVersionsNumberByNumber) {
    const struct { const char *current, *minimum; bool older; } rows[] = {
        {"1.2", "1.10", true},       {"1.2.0", "1.2", false},  {"1.9", "1.8.9", false}, {"1.2", "1.2.1", true},
        {"1.2-beta", "1.2", true},   {"", "0", false},         {"", "1", true},         {"1..2", ".1.2.", false},
        {"007", "7", false},         {"beta", "0.1", true},    {"+3", "3", false},      {"-1", "0", true},
        {"+-3", "-3", false},        {"99999999999999999999", "1", true},             {"1.10", "1.9", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(VersionGate::isOlder(row.current, row.minimum), row.older) << row.current << " vs " << row.minimum;
}

TEST(VersionGate, DecidesFromTheDocumentElseFromTheCachedMinimum) {
    const struct {
        std::optional<std::string> fetched, cachedBefore;
        const char* current;
        VersionStatus expected;
        std::optional<std::string> cachedAfter;
    } rows[] = {
        {R"({"minVersion": "1.0.1"})", std::nullopt, "1.0.0", VersionStatus::mustUpdate, "1.0.1"},
        {R"({"minVersion": "1.0"})", std::nullopt, "1.0.0", VersionStatus::ok, "1.0"},
        {std::nullopt, "2.0", "1.9", VersionStatus::mustUpdate, "2.0"},
        {std::nullopt, std::nullopt, "1.9", VersionStatus::ok, std::nullopt},
        {"<html><body>502 Bad Gateway</body></html>", "2.0", "1.9", VersionStatus::mustUpdate, "2.0"},
        {R"({"minVersion": 3})", "1.0", "1.5", VersionStatus::ok, "1.0"},
        // A newer document lowers the minimum; other members are ignored.
        {R"({"minVersion": "1.0", "note": "x"})", "3.0", "1.5", VersionStatus::ok, "1.0"},
    };
    for (const auto& row : rows) {
        auto store = std::make_shared<InMemoryStore>();
        store->set(row.cachedBefore, "minVersionCached");
        const VersionGate gate(row.current, store, [&] { return row.fetched; });
        EXPECT_EQ(gate.check(), row.expected) << row.fetched.value_or("no answer");
        EXPECT_EQ(store->string("minVersionCached"), row.cachedAfter) << row.fetched.value_or("no answer");
    }
}

}  // namespace
}  // namespace kelvo
