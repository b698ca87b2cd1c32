#pragma once
// The capacity of the volume that holds a path.
#include <cstdint>
#include <filesystem>
#include <optional>

namespace kelvo::platform {

struct VolumeFigures {
    std::int64_t totalBytes = 0;
    std::int64_t availableBytes = 0;  // available to the unprivileged user
};

std::optional<VolumeFigures> volumeCapacity(const std::filesystem::path& path);

}  // namespace kelvo::platform
