#pragma once
// The capacity of one volume: total bytes and the bytes available to the user (blocks
// reserved for the superuser are not counted as free). Plain values; equal when both
// fields are equal, whatever they hold.
#include <cstdint>
#include <filesystem>
#include <optional>

namespace kelvo {

struct DiskSpace {
    std::int64_t totalBytes = 0;
    std::int64_t freeBytes = 0;

    // The volume holding the path; nothing when it cannot be asked or reports no capacity.
    static std::optional<DiskSpace> current(const std::filesystem::path& at);

    std::int64_t usedBytes() const;   // never negative
    double usedFraction() const;      // in [0, 1]; 0 when the total is unknown
    friend bool operator==(const DiskSpace&, const DiskSpace&) = default;
};

}  // namespace kelvo
