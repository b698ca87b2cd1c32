#include "kelvo/platform/DirectoryLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace kelvo::platform {

DirectoryLock::DirectoryLock(const std::filesystem::path& directory) {
    const int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    int result = 0;
    do {
        result = ::flock(fd, LOCK_EX);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        ::close(fd);
        return;
    }
    fd_ = fd;
}

DirectoryLock::~DirectoryLock() {
    // Closing the only descriptor of the open file releases the lock.
    if (fd_ >= 0) ::close(fd_);
}

}  // namespace kelvo::platform
