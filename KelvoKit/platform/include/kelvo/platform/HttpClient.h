#pragma once
// Downloads over HTTP(S) with libcurl, safe to call from any thread (each call has its own
// transfer). Only http and https are spoken, redirects included.
#include <optional>
#include <string>

namespace kelvo::platform {

// The body of the response to one GET, whatever its status (an error page is a body too).
// Nothing when the text is not an address curl accepts, the transfer fails (no
// connection, a TLS failure, a server silent for 60 seconds: the usual session default),
// or the body exceeds 1 MiB, far more than any small document this is meant for.
std::optional<std::string> httpGet(const std::string& url);

}  // namespace kelvo::platform
