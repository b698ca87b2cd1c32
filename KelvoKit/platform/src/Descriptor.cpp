#include "kelvo/platform/Descriptor.h"

#include <unistd.h>

#include <cerrno>

namespace kelvo::platform {

void Descriptor::close(int fd) noexcept {
    const int saved = errno;
    // The descriptor is released even when close reports an error (Linux, POSIX 2024):
    // closing it again could close one another thread has just been given.
    ::close(fd);
    errno = saved;
}

}  // namespace kelvo::platform
