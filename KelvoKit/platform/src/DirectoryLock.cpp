#include "kelvo/platform/DirectoryLock.h"

#include <sys/file.h>

#include <cerrno>

#include "OpenFlags.h"

namespace kelvo::platform {

DirectoryLock::DirectoryLock(const std::filesystem::path& directory) {
    Descriptor fd(::open(directory.c_str(), openFlags::directory));
    if (!fd.valid()) return;
    int result = 0;
    do {
        result = ::flock(fd.get(), LOCK_EX);
    } while (result != 0 && errno == EINTR);
    if (result == 0) fd_ = std::move(fd);
}

}  // namespace kelvo::platform
