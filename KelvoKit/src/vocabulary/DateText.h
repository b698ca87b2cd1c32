#pragma once
// Private to the library: reading the fixed-width date texts that platform tools print
// ("2024-03-01 14:22:05 +0000", "2024-03-01T14:22:05Z"). A reader walks the text once,
// front to back; a read that fails means the text does not have the expected form, and
// the caller gives up (only literal and peek may be used to try an alternative). Nothing
// here throws.
#include <chrono>
#include <cstddef>
#include <optional>
#include <string_view>

namespace kelvo {

class DateText {
public:
    explicit DateText(std::string_view text) : text_(text) {}

    // Exactly `width` decimal digits.
    std::optional<int> digits(std::size_t width);
    // The one character `expected`.
    bool literal(char expected);
    // The next character, not consumed; nothing at the end.
    std::optional<char> peek() const;
    bool atEnd() const { return position_ == text_.size(); }

    // "yyyy-MM-dd", then `separator`, then "HH:mm:ss". False when any piece is missing or
    // out of range (a day that the month does not have, hour 24, second 60).
    bool readDateAndTime(char separator);
    // A zone offset "+HHMM" or, with a colon, "+HH:MM" ("-" for zones west of UTC), as
    // minutes east of UTC. Nothing when malformed or a day or more.
    std::optional<std::chrono::minutes> zoneOffset(bool withColon);
    // The instant read by readDateAndTime in a zone `offset` east of UTC (negative: west).
    std::chrono::system_clock::time_point instant(std::chrono::minutes offset) const;

private:
    std::string_view text_;
    std::size_t position_ = 0;
    std::chrono::sys_seconds local_{};
};

}  // namespace kelvo
