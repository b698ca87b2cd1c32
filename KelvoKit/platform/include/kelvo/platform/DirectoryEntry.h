#pragma once
// One entry of a directory listing as the system reports it, shared by the path-based
// listing and the descriptor-based one.
#include <optional>
#include <string>

namespace kelvo::platform {

enum class EntryType { directory, file, symlink, other };

struct ListedEntry {
    std::string name;
    std::optional<EntryType> type;  // the entry's own type (links not followed); nothing if unknown
};

}  // namespace kelvo::platform
