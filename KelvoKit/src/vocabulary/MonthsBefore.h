#pragma once
// The cut-off of the age rules ("not used for N months"): now minus months of exactly
// 30 x 86,400 seconds, formed in floating point (months x -30.0 x 86400.0). Month counts
// beyond the clock's range give its earliest (or latest) instant rather than overflowing.
#include <chrono>

namespace kelvo {

std::chrono::system_clock::time_point monthsBefore(std::chrono::system_clock::time_point now, int months);

}  // namespace kelvo
