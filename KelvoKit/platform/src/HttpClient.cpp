#include "kelvo/platform/HttpClient.h"

#include <curl/curl.h>

#include <memory>
#include <mutex>

namespace kelvo::platform {
namespace {

constexpr std::size_t maximumBody = 1 << 20;

std::size_t appendToBody(char* data, std::size_t size, std::size_t count, void* target) {
    auto& body = *static_cast<std::string*>(target);
    const std::size_t length = size * count;
    // Answering fewer bytes than given makes curl stop the transfer with a write error.
    if (body.size() + length > maximumBody) return 0;
    body.append(data, length);
    return length;
}

}  // namespace

std::optional<std::string> httpGet(const std::string& url) {
    static std::once_flag initialised;
    std::call_once(initialised, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });

    // Parsed strictly first: without a scheme the text is no address (curl alone would guess one).
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> address(curl_url(), &curl_url_cleanup);
    if (!address || curl_url_set(address.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) return std::nullopt;
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), &curl_easy_cleanup);
    if (!handle) return std::nullopt;
    CURL* curl = handle.get();
    std::string body;
    curl_easy_setopt(curl, CURLOPT_CURLU, address.get());
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, 10L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);  // no SIGALRM-based resolver time-outs in threads
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, 60L);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, 60L);
    curl_easy_setopt(curl, CURLOPT_ACCEPT_ENCODING, "");  // every encoding this curl decodes
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &appendToBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
    if (curl_easy_perform(curl) != CURLE_OK) return std::nullopt;
    return body;
}

}  // namespace kelvo::platform
