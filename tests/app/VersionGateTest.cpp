#include <gtest/gtest.h>

#include "app/InMemoryStore.h"
#include "kelvo/VersionGate.h"
#include "support/LoopbackServer.h"

namespace kelvo {
namespace {

using testing::LoopbackServer;

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

// The live download of the minimum-version document against the test's own server on
// 127.0.0.1; what the gate makes of each body is the table above.
TEST(LiveFetch, GivesAnyBodyWhateverTheStatusAndNothingWithoutAnAnswer) {
    const std::string page = "<html><body><h1>503 Service Unavailable</h1></body></html>";
    const std::string document = R"({"minVersion": "0.5"})";
    const struct { std::optional<std::string> response, body; } rows[] = {
        {LoopbackServer::response("503 Service Unavailable", page), page},
        {LoopbackServer::response("200 OK", document), document},
        {std::nullopt, std::nullopt},
    };
    for (const auto& row : rows) {
        const auto server = row.response ? std::make_unique<LoopbackServer>(*row.response)
                                         : std::make_unique<LoopbackServer>(LoopbackServer::Refusing{});
        const auto url = server->url("/min-version.json");
        EXPECT_EQ(VersionGate::download(url)(), row.body) << url;
    }
    EXPECT_FALSE(VersionGate::download("127.0.0.1/min-version.json")());  // no scheme: no address
}

}  // namespace
}  // namespace kelvo
