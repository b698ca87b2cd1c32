#pragma once
// The one reader of directory entries in the platform layer, over a descriptor the caller
// owns and keeps open. It leaves out "." and "..", gives every entry its own type (a link
// is not followed; a status call is made only where the directory records no type), and
// retries a read interrupted by a signal.
//
// On Linux it reads with getdents64 into a large buffer: few system calls even for a
// directory of a million entries, no DIR stream bound to the descriptor, and a position
// for every entry from which a later read goes on, even through another descriptor of the
// same directory. Elsewhere (and when asked, on Linux too) it reads a readdir stream over
// a duplicate of the descriptor, always the whole directory from its start, and reports
// no positions. Nothing here throws.
#include <cstddef>
#include <cstdint>
#include <system_error>
#include <type_traits>

#include "kelvo/platform/DirectoryEntry.h"

namespace kelvo::platform {

// One entry as read, valid only during the visit that receives it.
struct DirectoryRecord {
    const char* name = nullptr;         // zero-terminated
    EntryType type = EntryType::other;  // the entry's own type
    int typeError = 0;                  // the directory records no type and the entry's status
                                        // could not be read (errno; the type is then `other`)
    std::uint64_t inode = 0;
    std::int64_t positionAfter = 0;     // resumes the listing just after this entry
};

// What a read came to.
struct ListingProgress {
    std::error_code error;       // reading the directory failed: the read stopped there
    bool atEnd = false;          // the directory was read to its end
    std::size_t records = 0;     // records read, "." and ".." included
    std::int64_t position = 0;   // just after the last record read (none read: 0; stream: 0)
};

class DirectoryReader {
public:
    enum class Method { systemCall, stream };
#if defined(__linux__)
    static constexpr Method nativeMethod = Method::systemCall;
#else
    static constexpr Method nativeMethod = Method::stream;
#endif
    // Whether the native reads report positions that outlive the descriptor they came from.
    static constexpr bool resumable = nativeMethod == Method::systemCall;

    explicit DirectoryReader(Method method = nativeMethod) : method_(method) {}

    // Reads directoryFd on from its position, calling visit(const DirectoryRecord&) for each
    // entry until it returns false, the directory ends or reading fails, or, between two
    // getdents64 calls, once at least recordLimit records have been read. A stop ends the read
    // early: the descriptor's position is then past entries never visited, and the
    // positionAfter of the last one visited is where to go on from.
    template <class Visit>
    ListingProgress read(int directoryFd, Visit&& visit, std::size_t recordLimit = SIZE_MAX) const {
        using Target = std::remove_reference_t<Visit>;
        return readThrough(directoryFd, const_cast<void*>(static_cast<const void*>(&visit)),
                           [](void* target, const DirectoryRecord& record) -> bool {
                               return (*static_cast<Target*>(target))(record);
                           },
                           recordLimit);
    }

    // Makes the next read of directoryFd start at `position`: 0 for the start, or a position
    // a read of the same directory reported.
    static std::error_code seek(int directoryFd, std::int64_t position);

    // The type of `name` in a directory that records none for it (a link is not followed);
    // `other`, with the errno in `error`, when its status cannot be read.
    static EntryType typeOf(int directoryFd, const char* name, int& error);

private:
    using RecordVisitor = bool (*)(void* target, const DirectoryRecord& record);
    ListingProgress readThrough(int directoryFd, void* target, RecordVisitor visitor, std::size_t recordLimit) const;
#if defined(__linux__)
    ListingProgress readRecords(int directoryFd, void* target, RecordVisitor visitor, std::size_t recordLimit) const;
#endif
    ListingProgress readStream(int directoryFd, void* target, RecordVisitor visitor) const;

    Method method_;
};

}  // namespace kelvo::platform
