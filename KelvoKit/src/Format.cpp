#include "kelvo/Format.h"

#include <array>
#include <cstdio>

namespace kelvo {

std::string Format::bytes(std::int64_t count) {
    if (count <= 0) return "0 B";
    if (count < 1024) return std::to_string(count) + " B";
    static constexpr std::array<const char*, 5> units{"B", "KB", "MB", "GB", "TB"};
    double value = static_cast<double>(count) / 1024.0;
    std::size_t unit = 1;
    while (value >= 1024.0 && unit < 4) {
        value /= 1024.0;
        ++unit;
    }
    // snprintf honours LC_NUMERIC, which a front end may have set; format the two
    // decimals by hand so the separator is always a full stop.
    const auto hundredths = static_cast<long long>(value * 100.0 + 0.5);
    char text[64];
    std::snprintf(text, sizeof text, "%lld.%02lld %s", hundredths / 100, hundredths % 100, units[unit]);
    return text;
}

}  // namespace kelvo
