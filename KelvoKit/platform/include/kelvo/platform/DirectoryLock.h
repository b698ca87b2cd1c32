#pragma once
// An exclusive advisory lock (flock) on a directory, held from construction to
// destruction. Every holder of a lock on the same directory, in this process or another,
// waits for the one before it, so read-modify-write cycles on the files inside do not
// interleave. Construction blocks until the lock is granted; the lock is only as long as
// the holder's short piece of work. `held()` is false when the directory could not be
// opened or locked: the caller decides whether to go on without it.
#include <filesystem>

#include "kelvo/platform/Descriptor.h"

namespace kelvo::platform {

class DirectoryLock {
public:
    explicit DirectoryLock(const std::filesystem::path& directory);
    DirectoryLock(const DirectoryLock&) = delete;
    DirectoryLock& operator=(const DirectoryLock&) = delete;

    bool held() const { return fd_.valid(); }

private:
    // Closing the only descriptor of the open file releases the lock.
    Descriptor fd_;
};

}  // namespace kelvo::platform
