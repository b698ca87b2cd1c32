#pragma once
// An open directory, held by file descriptor, for walks that read. Children are opened
// relative to it (openat with O_NOFOLLOW), so a walk that starts here can never be
// redirected by a symbolic link, not even one swapped in while it runs, and works at any
// depth, past PATH_MAX. The handle owns its descriptor and closes it when destroyed.
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "kelvo/platform/Descriptor.h"
#include "kelvo/platform/DirectoryEntry.h"

namespace kelvo::platform {

class DirectoryHandle {
public:
    // Opens a directory by path. With followFinalLink false, a link as the last component
    // is refused (ELOOP/ENOTDIR); links earlier in the path are resolved by the system. An
    // absolute path too long for the system to resolve (past PATH_MAX) is opened from "/"
    // by openBelow instead: then no link is followed, the last one neither (ELOOP).
    static std::optional<DirectoryHandle> open(const std::filesystem::path& path, bool followFinalLink,
                                               std::error_code& error);
    // Opens a subdirectory by name, never through a link.
    std::optional<DirectoryHandle> openChild(std::string_view name, std::error_code& error) const;
    // Opens the directory that holds this one through its own "..", which no link can
    // redirect (the root's is the root itself).
    std::optional<DirectoryHandle> openParent(std::error_code& error) const;
    // Opens a directory below this one by a relative path of any length, one component at
    // a time, never through a link: a link anywhere on the way, the last component
    // included, fails with ELOOP. Empty and "." components are passed over (an empty path
    // opens this directory again); ".." is refused (EINVAL). Only the last component needs
    // read permission, the others search permission, as for a path the system resolves.
    std::optional<DirectoryHandle> openBelow(std::string_view relative, std::error_code& error) const;

    DirectoryHandle(DirectoryHandle&& other) noexcept;
    DirectoryHandle& operator=(DirectoryHandle&& other) noexcept;
    DirectoryHandle(const DirectoryHandle&) = delete;
    DirectoryHandle& operator=(const DirectoryHandle&) = delete;
    ~DirectoryHandle();

    // The content modification time of a child entry itself (a link is not followed);
    // nothing when it cannot be read. Kept apart from the listing so a walk reads dates
    // only for the few entries it cares about.
    std::optional<std::chrono::system_clock::time_point> childModificationTime(std::string_view name) const;
    // The newest content modification time among the entries themselves (links not
    // followed, one status read each on this descriptor); entries whose time cannot be read
    // are passed over. Nothing when none can be read.
    std::optional<std::chrono::system_clock::time_point> newestChildModificationTime() const;
    // The type of a child entry itself (a link is not followed); nothing when it cannot be read.
    std::optional<EntryType> childType(std::string_view name) const;
    // Up to maxBytes from the start of a child that is a regular file (never through a
    // link); nothing when it is not one or cannot be read.
    std::optional<std::string> childFileStart(std::string_view name, std::size_t maxBytes) const;

    // Calls visit(name, type) once per entry ("." and ".." left out) with the type the
    // directory itself records, read without a status call per entry (one is made only
    // where the file system records no type). The name is valid only during the call.
    // Stops early when visit returns false; the error is that of reading the directory.
    template <class Visit>
    std::error_code forEachName(Visit&& visit) const {
        using Target = std::remove_reference_t<Visit>;
        return forEachNameThrough(const_cast<void*>(static_cast<const void*>(&visit)),
                                  [](void* target, std::string_view name, EntryType type) -> bool {
                                      return (*static_cast<Target*>(target))(name, type);
                                  });
    }
    // Allocated bytes (blocks x 512) of the directory itself. Nothing when the status cannot
    // be read; the error says why.
    std::optional<std::int64_t> allocatedBytes(std::error_code& error) const;
    // The space a child entry itself takes (a link is not followed), with its count of names
    // and its identity, so that a walk can count a file with several names once. Nothing
    // when the status cannot be read; the error says why (ENOENT: the child is gone).
    std::optional<StoredItem> childStoredItem(std::string_view name, std::error_code& error) const;

    int fd() const { return fd_.get(); }

private:
    using NameVisitor = bool (*)(void* target, std::string_view name, EntryType type);
    std::error_code forEachNameThrough(void* target, NameVisitor visitor) const;
    // Reading a directory starts at the descriptor's offset: a second listing rewinds first.
    void rewindIfListed() const;

    explicit DirectoryHandle(Descriptor fd) : fd_(std::move(fd)) {}
    Descriptor fd_;
    mutable bool listed_ = false;
};

// Raises the limit of open descriptors to the hard limit once per process, so deep trees
// (one descriptor per level) can be walked.
void raiseOpenFileLimit();

}  // namespace kelvo::platform
