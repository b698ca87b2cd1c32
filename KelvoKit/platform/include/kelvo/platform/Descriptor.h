#pragma once
// The one owner of a file descriptor in the platform layer: it closes what it holds when
// destroyed or given another, and moves but never copies, so every descriptor is closed
// exactly once. An invalid descriptor (-1) holds nothing.
#include <utility>

namespace kelvo::platform {

class Descriptor {
public:
    Descriptor() = default;
    // Takes over fd, typically straight from open(), openat() or the like: a negative
    // result (the call failed, errno says why) makes an invalid descriptor.
    explicit Descriptor(int fd) noexcept : fd_(fd < 0 ? -1 : fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) reset(std::exchange(other.fd_, -1));
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(); }

    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    // Closes what is held, if anything, and holds fd instead. Leaves errno as it was, so a
    // failed open can be followed by closing another descriptor before errno is read.
    void reset(int fd = -1) noexcept {
        if (fd_ >= 0) close(fd_);
        fd_ = fd < 0 ? -1 : fd;
    }

private:
    // Handles move often (walks keep them in containers): only a real close leaves the header.
    static void close(int fd) noexcept;

    int fd_ = -1;
};

}  // namespace kelvo::platform
