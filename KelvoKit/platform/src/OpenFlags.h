#pragma once
// Private to the platform layer: the ways it opens directories and files, each written
// once. Every one closes on exec, so no program started meanwhile inherits a descriptor.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace kelvo::platform::openFlags {

// A directory to read, a link as the last component followed (a path as given).
inline constexpr int directory = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
// A directory to read, never through a link: everything below a walk's top.
inline constexpr int directoryNoFollow = directory | O_NOFOLLOW;
// A directory only passed through, or pinned as the base of *at calls, never through a
// link: like a path lookup this needs search permission and no read permission. Where
// O_PATH does not exist a descriptor for reading stands in.
#if defined(O_PATH)
inline constexpr int pinnedDirectory = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
#else
inline constexpr int pinnedDirectory = directoryNoFollow;
#endif
// A file's content, never through a link and never waiting on a FIFO swapped in under
// its name.
inline constexpr int fileNoFollow = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

// The error of opening `name` below directoryFd as a directory without following a link,
// which failed with `error`: a link under the name is reported as a link (ELOOP), whatever
// the system said (Linux says ENOTDIR).
inline int noFollowError(int directoryFd, const char* name, int error) {
    struct stat status {};
    if (error == ENOTDIR && ::fstatat(directoryFd, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode))
        return ELOOP;
    return error;
}

}  // namespace kelvo::platform::openFlags
