#pragma once
// Private to the platform layer: the fields of a status record and of a directory record
// in the library's own terms, written once for every walk and query.
#include <dirent.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdint>
#include <optional>

#include "kelvo/platform/DirectoryEntry.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo::platform {

// The type a directory records for an entry; nothing where it records none (DT_UNKNOWN).
inline std::optional<EntryType> entryTypeFromRecord(unsigned char recordedType) {
    switch (recordedType) {
        case DT_DIR: return EntryType::directory;
        case DT_REG: return EntryType::file;
        case DT_LNK: return EntryType::symlink;
        case DT_UNKNOWN: return std::nullopt;
        default: return EntryType::other;
    }
}

inline EntryType entryTypeFromMode(mode_t mode) {
    if (S_ISDIR(mode)) return EntryType::directory;
    if (S_ISREG(mode)) return EntryType::file;
    if (S_ISLNK(mode)) return EntryType::symlink;
    return EntryType::other;
}

inline StoredItem storedItemOf(const struct stat& status) {
    return {static_cast<std::int64_t>(status.st_blocks) * 512, S_ISDIR(status.st_mode),
            static_cast<std::uint64_t>(status.st_nlink),
            static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

inline std::chrono::system_clock::time_point modificationTimeOf(const struct stat& status) {
#if defined(__APPLE__)
    const struct timespec& modified = status.st_mtimespec;
#else
    const struct timespec& modified = status.st_mtim;
#endif
    using Clock = std::chrono::system_clock;
    return Clock::time_point(std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(modified.tv_sec) +
                                                                         std::chrono::nanoseconds(modified.tv_nsec)));
}

}  // namespace kelvo::platform
