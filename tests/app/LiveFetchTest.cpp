// The live download of the minimum-version document against the test's own server on
// 127.0.0.1, and the gate's answer over it.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "kelvo/InMemoryStore.h"
#include "kelvo/VersionGate.h"
#include "support/ScopedEnvironment.h"

namespace kelvo {
namespace {

// Answers every connection with one fixed response until destroyed. Without a response
// it only reserves a loopback port and closes it: connecting there is refused.
class LoopbackServer {
public:
    explicit LoopbackServer(std::optional<std::string> response) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        ::bind(listener_, reinterpret_cast<sockaddr*>(&address), length);
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
        url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/min-version.json";
        if (!response || ::listen(listener_, 4) != 0) return;
        thread_ = std::thread([this, response = *response] {
            for (int client; (client = ::accept(listener_, nullptr, nullptr)) >= 0; ::close(client)) {
                std::string request(4096, '\0');
                for (std::size_t got = 0; request.find("\r\n\r\n") == std::string::npos;) {
                    const ssize_t count = ::read(client, request.data() + got, request.size() - got);
                    if (count <= 0) break;
                    got += static_cast<std::size_t>(count);
                }
                (void)!::write(client, response.data(), response.size());
            }
        });
    }
    ~LoopbackServer() {
        ::shutdown(listener_, SHUT_RDWR);  // ends the waiting accept
        if (thread_.joinable()) thread_.join();
        ::close(listener_);
    }

    std::string url;

private:
    int listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::thread thread_;
};

std::string httpResponse(const std::string& status, const std::string& body) {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" +
           body;
}

TEST(LiveFetch, GivesAnyBodyWhateverTheStatusAndNothingWithoutAnAnswer) {
    // A proxy of the machine's would stand between the test and its server.
    const testing::ScopedEnvironment noProxy(
        {{"http_proxy", std::nullopt}, {"HTTP_PROXY", std::nullopt}, {"all_proxy", std::nullopt}, {"ALL_PROXY", std::nullopt}});
    const std::string page = "<html><body><h1>503 Service Unavailable</h1></body></html>";
    const std::string document = R"({"minVersion": "0.5"})";
    const struct {
        std::optional<std::string> response;
        std::optional<std::string> body;
        VersionStatus status;  // for version 1.0.0 with 2.0 cached
        const char* cachedAfter;
    } rows[] = {
        {httpResponse("503 Service Unavailable", page), page, VersionStatus::mustUpdate, "2.0"},
        {httpResponse("200 OK", document), document, VersionStatus::ok, "0.5"},
        {std::nullopt, std::nullopt, VersionStatus::mustUpdate, "2.0"},
    };
    for (const auto& row : rows) {
        const LoopbackServer server(row.response);
        EXPECT_EQ(VersionGate::download(server.url)(), row.body) << server.url;
        auto store = std::make_shared<InMemoryStore>(std::map<std::string, std::string>{{"minVersionCached", "2.0"}});
        EXPECT_EQ(VersionGate("1.0.0", store, VersionGate::download(server.url)).check(), row.status);
        EXPECT_EQ(store->string("minVersionCached"), row.cachedAfter);
    }
    EXPECT_FALSE(VersionGate::download("127.0.0.1/min-version.json")());  // no scheme: no address
}

}  // namespace
}  // namespace kelvo
