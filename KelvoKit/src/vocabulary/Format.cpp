#include "kelvo/Format.h"

#include <array>
#include <charconv>

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
    // snprintf honours LC_NUMERIC, which a front end may have set; to_chars is "%.2f" in
    // the C locale: a full stop always, and the same correct rounding (1.125 gives 1.12).
    char text[64];
    const auto written = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 2);
    return std::string(text, written.ptr) + " " + units[unit];
}

}  // namespace kelvo
