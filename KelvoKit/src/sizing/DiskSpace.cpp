#include "kelvo/DiskSpace.h"

#include <algorithm>
#include <limits>

#include "kelvo/platform/VolumeCapacity.h"

namespace kelvo {
namespace {

// total - free without overflow: the fields are public, so any pair of values may arrive.
std::int64_t usedOf(std::int64_t total, std::int64_t free) {
    std::int64_t used = 0;
    if (__builtin_sub_overflow(total, free, &used)) return free < 0 ? std::numeric_limits<std::int64_t>::max() : 0;
    return std::max<std::int64_t>(used, 0);
}

}  // namespace

std::optional<DiskSpace> DiskSpace::current(const std::filesystem::path& at) {
    const auto volume = platform::volumeCapacity(at);
    if (!volume || volume->totalBytes < 1) return std::nullopt;
    return DiskSpace{volume->totalBytes, volume->availableBytes};
}

std::int64_t DiskSpace::usedBytes() const { return usedOf(totalBytes, freeBytes); }

double DiskSpace::usedFraction() const {
    if (totalBytes < 1) return 0.0;
    const double fraction = static_cast<double>(usedOf(totalBytes, freeBytes)) / static_cast<double>(totalBytes);
    return std::clamp(fraction, 0.0, 1.0);
}

}  // namespace kelvo
