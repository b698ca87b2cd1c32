#pragma once
// The one formatter of byte counts: multiples of 1024 named B, KB, MB, GB, TB, two
// decimals with a full stop whatever the user's locale ("1.50 KB"); 0 or less is "0 B".
#include <cstdint>
#include <string>

namespace kelvo::Format {
std::string bytes(std::int64_t count);
}
