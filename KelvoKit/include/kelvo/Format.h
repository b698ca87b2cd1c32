#pragma once
// The one formatter of byte counts: multiples of 1024 named B, KB, MB, GB, TB, two
// decimals with a full stop whatever the user's locale ("1.50 KB"); 0 or less is "0 B".
//
// Read back, a size is typed the same way: a whole or decimal number, then optionally
// (case ignored, a space allowed before it) B, K, M, G or T, with or without a B after the
// letter ("5G", "5 GB", "500m", "1.5T", "4096"), in multiples of 1024 as above. Anything
// else, a negative number or one beyond the 64-bit range, is no size.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::Format {
std::string bytes(std::int64_t count);
std::optional<std::int64_t> parseBytes(std::string_view text);
}
