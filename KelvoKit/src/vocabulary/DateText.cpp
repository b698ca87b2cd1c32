#include "vocabulary/DateText.h"

namespace kelvo {

std::optional<int> DateText::digits(std::size_t width) {
    if (position_ + width > text_.size()) return std::nullopt;
    int value = 0;
    for (std::size_t index = 0; index < width; ++index) {
        const char character = text_[position_ + index];
        if (character < '0' || character > '9') return std::nullopt;
        value = value * 10 + (character - '0');
    }
    position_ += width;
    return value;
}

bool DateText::literal(char expected) {
    if (position_ >= text_.size() || text_[position_] != expected) return false;
    ++position_;
    return true;
}

std::optional<char> DateText::peek() const {
    if (position_ >= text_.size()) return std::nullopt;
    return text_[position_];
}

bool DateText::readDateAndTime(char separator) {
    const auto year = digits(4);
    if (!year || !literal('-')) return false;
    const auto month = digits(2);
    if (!month || !literal('-')) return false;
    const auto day = digits(2);
    if (!day || !literal(separator)) return false;
    const auto hour = digits(2);
    if (!hour || !literal(':')) return false;
    const auto minute = digits(2);
    if (!minute || !literal(':')) return false;
    const auto second = digits(2);
    if (!second) return false;

    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok() || *hour > 23 || *minute > 59 || *second > 59) return false;
    local_ = std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
             std::chrono::seconds(*second);
    return true;
}

std::optional<std::chrono::minutes> DateText::zoneOffset(bool withColon) {
    const auto sign = peek();
    if (sign != '+' && sign != '-') return std::nullopt;
    const std::size_t start = position_++;
    const auto hours = digits(2);
    const auto minutes = hours && (!withColon || literal(':')) ? digits(2) : std::nullopt;
    if (!minutes || *hours > 23 || *minutes > 59) {
        position_ = start;
        return std::nullopt;
    }
    const std::chrono::minutes offset = std::chrono::hours(*hours) + std::chrono::minutes(*minutes);
    return *sign == '-' ? -offset : offset;
}

std::chrono::system_clock::time_point DateText::instant(std::chrono::minutes offset) const {
    return std::chrono::system_clock::time_point(local_ - offset);
}

}  // namespace kelvo
