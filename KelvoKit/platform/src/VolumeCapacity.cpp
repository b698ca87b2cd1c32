#include "kelvo/platform/VolumeCapacity.h"

#include <sys/statvfs.h>

#include <cerrno>
#include <limits>

namespace kelvo::platform {
namespace {

// Block counts times block size, saturated at the largest signed 64-bit count instead of
// wrapping on an absurdly large volume.
std::int64_t bytesOf(std::uint64_t blocks, std::uint64_t blockSize) {
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (blockSize != 0 && blocks > largest / blockSize) return std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(blocks * blockSize);
}

}  // namespace

std::optional<VolumeFigures> volumeCapacity(const std::filesystem::path& path) {
    struct statvfs figures {};
    int result = 0;
    do {
        result = ::statvfs(path.c_str(), &figures);
    } while (result != 0 && errno == EINTR);
    if (result != 0) return std::nullopt;
    // f_frsize is the unit of the block counts; some file systems leave it 0 and mean f_bsize.
    const std::uint64_t blockSize = figures.f_frsize != 0 ? figures.f_frsize : figures.f_bsize;
    VolumeFigures volume;
    volume.totalBytes = bytesOf(figures.f_blocks, blockSize);
    // f_bavail leaves out the blocks reserved for the superuser: what the user can really fill.
    volume.availableBytes = bytesOf(figures.f_bavail, blockSize);
    if (volume.totalBytes < 1) return std::nullopt;
    return volume;
}

}  // namespace kelvo::platform
