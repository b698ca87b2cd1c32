#include "kelvo/platform/DirectoryReader.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "StatusFields.h"

#if defined(__linux__)
#include <sys/syscall.h>
#endif

namespace kelvo::platform {
namespace {

std::error_code errorOf(int error) { return {error, std::generic_category()}; }

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// The record's type as the directory gives it; where it gives none, the entry's status.
// Inlined: it runs once per entry of every walk.
[[gnu::always_inline]] inline void fillType(int directoryFd, unsigned char recordedType, DirectoryRecord& record) {
    if (const auto type = entryTypeFromRecord(recordedType)) {
        record.type = *type;
        record.typeError = 0;
    } else {
        record.type = DirectoryReader::typeOf(directoryFd, record.name, record.typeError);
    }
}

#if defined(__linux__)
// One listing buffer per thread, reused from directory to directory: a walk lists tens of
// thousands of directories, most of them small, and neither allocating nor clearing 64 KiB
// for each is free. A read that starts while another runs on the same thread (a visitor
// that lists a subdirectory) gets a buffer of its own.
class ListingBuffer {
public:
    static constexpr std::size_t size = 64 * 1024;

    ListingBuffer() {
        Slot& slot = threadSlot();
        if (slot.inUse) {
            owned_ = std::make_unique_for_overwrite<char[]>(size);
            data_ = owned_.get();
            return;
        }
        if (!slot.data) slot.data = std::make_unique_for_overwrite<char[]>(size);
        slot.inUse = true;
        data_ = slot.data.get();
    }
    ~ListingBuffer() {
        if (!owned_) threadSlot().inUse = false;
    }
    ListingBuffer(const ListingBuffer&) = delete;
    ListingBuffer& operator=(const ListingBuffer&) = delete;

    char* data() const { return data_; }

private:
    struct Slot {
        std::unique_ptr<char[]> data;
        bool inUse = false;
    };
    static Slot& threadSlot() {
        thread_local Slot slot;
        return slot;
    }
    std::unique_ptr<char[]> owned_;
    char* data_ = nullptr;
};

// The record getdents64 writes for each entry.
struct LinuxDirent {
    ino64_t inode;
    off64_t offset;  // the position just after this entry
    unsigned short length;
    unsigned char type;
    char name[1];  // really as long as the record says
};
#endif

}  // namespace

EntryType DirectoryReader::typeOf(int directoryFd, const char* name, int& error) {
    struct stat status {};
    if (::fstatat(directoryFd, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        error = errno;
        return EntryType::other;
    }
    error = 0;
    return entryTypeFromMode(status.st_mode);
}

std::error_code DirectoryReader::seek(int directoryFd, std::int64_t position) {
    if (::lseek(directoryFd, static_cast<off_t>(position), SEEK_SET) < 0) return errorOf(errno);
    return {};
}

ListingProgress DirectoryReader::readThrough(int directoryFd, void* target, RecordVisitor visitor,
                                             std::size_t recordLimit) const {
#if defined(__linux__)
    if (method_ == Method::systemCall) return readRecords(directoryFd, target, visitor, recordLimit);
#endif
    return readStream(directoryFd, target, visitor);
}

#if defined(__linux__)
ListingProgress DirectoryReader::readRecords(int directoryFd, void* target, RecordVisitor visitor,
                                             std::size_t recordLimit) const {
    const ListingBuffer buffer;
    ListingProgress progress;
    DirectoryRecord record;
    while (progress.records < recordLimit) {
        const long count = ::syscall(SYS_getdents64, directoryFd, buffer.data(), ListingBuffer::size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            progress.error = errorOf(errno);
            return progress;
        }
        if (count == 0) {
            progress.atEnd = true;
            return progress;
        }
        for (long offset = 0; offset < count;) {
            const auto* entry = reinterpret_cast<const LinuxDirent*>(buffer.data() + offset);
            offset += entry->length;
            ++progress.records;
            progress.position = entry->offset;
            if (isDotOrDotDot(entry->name)) continue;
            record.name = entry->name;
            record.inode = entry->inode;
            record.positionAfter = entry->offset;
            fillType(directoryFd, entry->type, record);
            if (!visitor(target, record)) return progress;
        }
    }
    return progress;
}
#endif

// A DIR stream over a duplicate of the descriptor, so the caller keeps its own.
ListingProgress DirectoryReader::readStream(int directoryFd, void* target, RecordVisitor visitor) const {
    ListingProgress progress;
    const int copy = ::dup(directoryFd);
    if (copy < 0) {
        progress.error = errorOf(errno);
        return progress;
    }
    DIR* directory = ::fdopendir(copy);
    if (!directory) {
        progress.error = errorOf(errno);
        ::close(copy);
        return progress;
    }
    ::rewinddir(directory);
    DirectoryRecord record;
    while (true) {
        errno = 0;
        const dirent* entry = ::readdir(directory);
        if (!entry) {
            if (errno != 0) progress.error = errorOf(errno);
            progress.atEnd = !progress.error;
            break;
        }
        ++progress.records;
        if (isDotOrDotDot(entry->d_name)) continue;
        record.name = entry->d_name;
        record.inode = entry->d_ino;
        fillType(directoryFd, entry->d_type, record);
        if (!visitor(target, record)) break;
    }
    ::closedir(directory);
    return progress;
}

}  // namespace kelvo::platform
