#include "kelvo/Format.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cmath>

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

std::optional<std::int64_t> Format::parseBytes(std::string_view text) {
    std::size_t end = 0;
    while (end < text.size() && (std::isdigit(static_cast<unsigned char>(text[end])) || text[end] == '.')) ++end;
    double number = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + end, number, std::chars_format::fixed);
    if (end == 0 || error != std::errc() || rest != text.data() + end) return std::nullopt;

    std::string unit;
    for (const char c : text.substr(end))
        if (c != ' ') unit += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (unit.size() == 2 && unit.back() == 'B' && unit.front() != 'B') unit.pop_back();
    static constexpr std::string_view letters = "BKMGT";
    const auto power = unit.empty() ? 0 : letters.find(unit);
    if (unit.size() > 1 || power == std::string_view::npos) return std::nullopt;

    const double count = std::round(number * std::pow(1024.0, static_cast<double>(power)));
    // 2^63 is the first double beyond the range.
    if (count >= 9223372036854775808.0) return std::nullopt;
    return static_cast<std::int64_t>(count);
}

}  // namespace kelvo
