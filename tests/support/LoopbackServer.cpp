#include "support/LoopbackServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace kelvo::testing {

LoopbackServer::LoopbackServer(Refusing)
    : noProxy_({{"http_proxy", std::nullopt}, {"HTTP_PROXY", std::nullopt}, {"all_proxy", std::nullopt},
                {"ALL_PROXY", std::nullopt}}),
      listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(listener_, reinterpret_cast<sockaddr*>(&address), length);
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
}

LoopbackServer::LoopbackServer() : LoopbackServer(Refusing{}) {
    if (::listen(listener_, 8) == 0) thread_ = std::thread([this] { serve(); });
}

LoopbackServer::LoopbackServer(const std::string& response) : LoopbackServer() { answer(response); }

LoopbackServer::~LoopbackServer() {
    ::shutdown(listener_, SHUT_RDWR);  // ends the waiting accept
    try {
        if (thread_.joinable()) response_.set_value({});  // a request still waiting gets an empty answer
    } catch (const std::future_error&) {
    }
    if (thread_.joinable()) thread_.join();
    ::close(listener_);
}

void LoopbackServer::answer(const std::string& response) { response_.set_value(response); }

std::string LoopbackServer::url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }

std::string LoopbackServer::response(const std::string& status, const std::string& body) {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" +
           body;
}

void LoopbackServer::serve() {
    const std::shared_future<std::string> response = response_.get_future().share();
    for (int client; (client = ::accept(listener_, nullptr, nullptr)) >= 0; ::close(client)) {
        std::string request(4096, '\0');
        for (ssize_t got = 0, count = 1; count > 0 && request.find("\r\n\r\n") == std::string::npos; got += count)
            count = std::max<ssize_t>(::read(client, request.data() + got, request.size() - got), 0);
        (void)!::write(client, response.get().data(), response.get().size());
    }
}

}  // namespace kelvo::testing
