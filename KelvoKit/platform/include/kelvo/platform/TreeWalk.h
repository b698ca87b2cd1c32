#pragma once
// A depth-first walk of the tree below an open directory, for the searches that look at a
// tree name by name (the project walk, the searches inside build folders). It never follows
// a symbolic link: every subdirectory is opened from its parent's descriptor
// (DirectoryHandle::openChild), so no path is resolved and a tree deeper than PATH_MAX is
// walked like a shallow one. It runs in a loop, not by recursion.
//
// Entries are visited in listing order, and a subdirectory's entries right after the
// visit that entered it (pre-order). A directory is listed whole before its first entry is
// visited, so a visitor may look at every name beside the one it visits. Only directories
// with entries left to visit stay open, each with its listing: memory and descriptors grow
// with the number of such directories on the current path (a chain of folders keeps one
// open), the path text with the depth. A subdirectory that cannot be opened is passed
// over; a listing that failed part-way says so. Both are told to an optional reporter,
// except a subdirectory that vanished or was replaced by a link or a file before it could
// be opened (nothing was there to read). Nothing here throws.
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "kelvo/platform/DirectoryHandle.h"

namespace kelvo::platform {

// What the walk does after a visit: go on with the next entry, walk the visited
// subdirectory first (for any other entry the same as next), leave the directory whose
// entry was visited (its other entries are not visited), or end the walk.
enum class WalkStep { next, enter, leave, stop };

// The directory whose entries are being visited.
class WalkedDirectory {
public:
    const DirectoryHandle& handle() const { return handle_; }
    // The path the walk was given for its top, with the names below it joined by "/".
    const std::string& path() const { return *path_; }
    std::string pathOf(std::string_view name) const;
    // 0 for the walk's top.
    std::size_t depth() const { return depth_; }
    // False when reading the directory failed part-way: names may be missing.
    bool listedCompletely() const { return !listingError_; }

    // Whether some entry's name (the visited one's included) satisfies the predicate.
    template <class Predicate>
    bool anyName(Predicate&& predicate) const {
        for (std::size_t at = 0; at < entries_.size();) {
            const std::string_view name = nameAt(at);
            if (predicate(name)) return true;
            at += name.size() + 2;
        }
        return false;
    }

private:
    friend class TreeWalk;
    WalkedDirectory(DirectoryHandle handle, const std::string& path, std::size_t depth);
    // Each entry is packed as its type, its name and a zero byte, so a listing is one string.
    std::string_view nameAt(std::size_t at) const { return std::string_view(entries_.data() + at + 1); }

    DirectoryHandle handle_;
    const std::string* path_;
    std::size_t pathLength_;
    std::size_t depth_;
    std::error_code listingError_;
    std::string entries_;
    std::size_t next_ = 0;
};

class TreeWalk {
public:
    struct IgnoreUnread {
        void operator()(const std::string&, std::error_code) const {}
    };

    // Calls visit(const WalkedDirectory&, std::string_view name, EntryType type) for the
    // entries below `top`, whose path is `topPath` (used only to build paths for visitors),
    // and report(const std::string& path, std::error_code) for each directory the walk
    // could not read whole (the top included). True when a visit stopped the walk.
    template <class Visit, class Report = IgnoreUnread>
    static bool run(DirectoryHandle top, std::string topPath, Visit&& visit, Report&& report = Report()) {
        using Target = std::remove_reference_t<Visit>;
        using Reporter = std::remove_reference_t<Report>;
        return runThrough(std::move(top), std::move(topPath), const_cast<void*>(static_cast<const void*>(&visit)),
                          [](void* target, const WalkedDirectory& directory, std::string_view name, EntryType type) {
                              return (*static_cast<Target*>(target))(directory, name, type);
                          },
                          const_cast<void*>(static_cast<const void*>(&report)),
                          [](void* target, const std::string& path, std::error_code error) {
                              (*static_cast<Reporter*>(target))(path, error);
                          });
    }

private:
    using Visitor = WalkStep (*)(void* target, const WalkedDirectory& directory, std::string_view name,
                                 EntryType type);
    using UnreadVisitor = void (*)(void* target, const std::string& path, std::error_code error);
    static bool runThrough(DirectoryHandle top, std::string topPath, void* target, Visitor visitor,
                           void* unreadTarget, UnreadVisitor unread);
};

}  // namespace kelvo::platform
