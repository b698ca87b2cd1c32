#pragma once
// Fixed instants for tests, written as UTC calendar fields.
#include <chrono>

namespace kelvo::testing {

inline std::chrono::system_clock::time_point utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0,
                                                 int second = 0) {
    using namespace std::chrono;
    return sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day)) + hours(hour) +
           minutes(minute) + seconds(second);
}

}  // namespace kelvo::testing
