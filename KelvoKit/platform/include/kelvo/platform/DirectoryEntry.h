#pragma once
// One entry of a directory listing as the system reports it, and what a size needs of an
// item's status, shared by the path-based questions and the descriptor-based ones.
#include <cstdint>
#include <optional>
#include <string>

namespace kelvo::platform {

enum class EntryType { directory, file, symlink, other };

struct ListedEntry {
    std::string name;
    std::optional<EntryType> type;  // the entry's own type (links not followed); nothing if unknown
};

// The space an item takes and whether it takes it alone: an item with several names (hard
// links) is one file, told apart from others by its device and inode. A directory's count
// of names counts its subdirectories' "..", not links.
struct StoredItem {
    std::int64_t allocatedBytes = 0;  // blocks x 512
    bool isDirectory = false;
    std::uint64_t names = 1;          // its hard links, this one included
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
};

}  // namespace kelvo::platform
