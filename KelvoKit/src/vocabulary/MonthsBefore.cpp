#include "vocabulary/MonthsBefore.h"

#include <limits>

namespace kelvo {

std::chrono::system_clock::time_point monthsBefore(std::chrono::system_clock::time_point now, int months) {
    using TimePoint = std::chrono::system_clock::time_point;
    using Ticks = TimePoint::duration;
    const double shiftSeconds = static_cast<double>(months) * -30.0 * 86400.0;
    // The shift in clock ticks, and the sum, must both stay inside the clock's range.
    const double shiftTicks = shiftSeconds * static_cast<double>(Ticks::period::den) / Ticks::period::num;
    constexpr double tickLimit = 9.2e18;
    if (shiftTicks <= -tickLimit) return TimePoint::min();
    if (shiftTicks >= tickLimit) return TimePoint::max();
    const auto shift = std::chrono::duration_cast<Ticks>(std::chrono::duration<double>(shiftSeconds));
    using Limits = std::numeric_limits<Ticks::rep>;
    const Ticks::rep base = now.time_since_epoch().count();
    if (shift.count() < 0 && base < Limits::min() - shift.count()) return TimePoint::min();
    if (shift.count() > 0 && base > Limits::max() - shift.count()) return TimePoint::max();
    return now + shift;
}

}  // namespace kelvo
