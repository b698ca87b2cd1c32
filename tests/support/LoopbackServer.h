#pragma once
// An HTTP server on 127.0.0.1 for the tests of downloads. It answers every request with
// one response, given when it is made or later with answer(): until then a request waits,
// so a test can look at what happens while an answer is awaited. Made Refusing, it only
// holds a port that nothing listens on, so a connection there is refused. While it lives,
// the proxy variables are unset: a proxy of the machine's would stand in between.
#include <future>
#include <optional>
#include <string>
#include <thread>

#include "support/ScopedEnvironment.h"

namespace kelvo::testing {

class LoopbackServer {
public:
    struct Refusing {};

    LoopbackServer();
    explicit LoopbackServer(const std::string& response);
    explicit LoopbackServer(Refusing);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    void answer(const std::string& response);
    std::string url(const std::string& path) const;

    // A whole response with the status line ("200 OK") and the body.
    static std::string response(const std::string& status, const std::string& body);

private:
    void serve();

    ScopedEnvironment noProxy_;
    int listener_;
    int port_ = 0;
    std::promise<std::string> response_;
    std::thread thread_;
};

}  // namespace kelvo::testing
