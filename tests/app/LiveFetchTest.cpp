// The live download of the minimum-version document against the test's own server on
// 127.0.0.1, and the gate's answer over it.
#include <gtest/gtest.h>

#include "app/InMemoryStore.h"
#include "kelvo/VersionGate.h"
#include "support/LoopbackServer.h"

namespace kelvo {
namespace {

using testing::LoopbackServer;

TEST(LiveFetch, GivesAnyBodyWhateverTheStatusAndNothingWithoutAnAnswer) {
    const std::string page = "<html><body><h1>503 Service Unavailable</h1></body></html>";
    const std::string document = R"({"minVersion": "0.5"})";
    // The status is that of version 1.0.0 with 2.0 cached.
    const struct { std::optional<std::string> response, body; VersionStatus status; const char* cachedAfter; } rows[] = {
        {LoopbackServer::response("503 Service Unavailable", page), page, VersionStatus::mustUpdate, "2.0"},
        {LoopbackServer::response("200 OK", document), document, VersionStatus::ok, "0.5"},
        {std::nullopt, std::nullopt, VersionStatus::mustUpdate, "2.0"},
    };
    for (const auto& row : rows) {
        const auto server = row.response ? std::make_unique<LoopbackServer>(*row.response)
                                         : std::make_unique<LoopbackServer>(LoopbackServer::Refusing{});
        const auto url = server->url("/min-version.json");
        EXPECT_EQ(VersionGate::download(url)(), row.body) << url;
        auto store = std::make_shared<InMemoryStore>(std::map<std::string, std::string>{{"minVersionCached", "2.0"}});
        EXPECT_EQ(VersionGate("1.0.0", store, VersionGate::download(url)).check(), row.status);
        EXPECT_EQ(store->string("minVersionCached"), row.cachedAfter);
    }
    EXPECT_FALSE(VersionGate::download("127.0.0.1/min-version.json")());  // no scheme: no address
}

}  // namespace
}  // namespace kelvo
