#include "kelvo/platform/Descriptor.h"

#include <unistd.h>

#include <cerrno>

namespace kelvo::platform {

void Descriptor::reset(int fd) noexcept {
    if (fd_ >= 0) {
        const int saved = errno;
        // The descriptor is released even when close reports an error (Linux, POSIX 2024):
        // closing it again could close one another thread has just been given.
        ::close(fd_);
        errno = saved;
    }
    fd_ = fd < 0 ? -1 : fd;
}

}  // namespace kelvo::platform
