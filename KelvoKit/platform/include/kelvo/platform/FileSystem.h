#pragma once
// Path-based file-system questions and small writes. Every OS failure comes back as a
// value (nothing, false, an error_code); nothing here throws. Nothing here removes but one
// file of the program's own (removeFile): trees are removed by TreeRemoval, through
// directory descriptors, never by re-resolving paths.
//
// The status questions (existence, type, dates, sizes, owner) answer for paths
// longer than PATH_MAX too: the item is read relative to its parent, opened as
// DirectoryHandle::open opens a long path; a link it may not follow there makes the item
// unreadable.
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "kelvo/platform/DirectoryEntry.h"

namespace kelvo::platform {

using TimePoint = std::chrono::system_clock::time_point;

// Something exists at the path, links followed (a dangling link does not exist).
bool exists(const std::filesystem::path& path);
// Whether anything stands at the path, a dangling link included (links not followed);
// nothing when that cannot be told because the status is unreadable for another reason
// than absence (no search permission on the way, a link met past PATH_MAX).
std::optional<bool> isPresent(const std::filesystem::path& path);
// Whether the item itself is a symbolic link; nothing when it cannot be read (e.g. missing).
std::optional<bool> isSymbolicLink(const std::filesystem::path& path);
// Direct entries of a directory ("." and ".." left out), in the order the system gives;
// nothing when the directory cannot be listed.
std::optional<std::vector<ListedEntry>> listDirectory(const std::filesystem::path& path, bool skipHidden);
// Content modification time; links followed or not as asked; nothing when unreadable.
std::optional<TimePoint> modificationTime(const std::filesystem::path& path, bool followLinks = true);
// The space one item takes, with its names and identity, links followed; nothing when
// unreadable.
std::optional<StoredItem> storedItem(const std::filesystem::path& path);
// Last access time, links followed; nothing when unreadable. Meaningful only where the
// file system records access times (recordsAccessTimes).
std::optional<TimePoint> accessTime(const std::filesystem::path& path);
// Whether the file system holding the path records access times: false when it is mounted
// noatime, true for relatime (at most once a day), strictatime and the like; nothing when
// the mount table cannot be read.
std::optional<bool> recordsAccessTimes(const std::filesystem::path& path);
// The text of a symbolic link itself, as stored; nothing when the item is no link or unreadable.
std::optional<std::filesystem::path> linkText(const std::filesystem::path& path);
// The user id owning the item itself (links not followed); the error when it cannot be
// read (no_such_file_or_directory when nothing is there).
std::optional<unsigned> ownerOf(const std::filesystem::path& path, std::error_code& error);

// The path standardised by its text alone: "." dropped, ".." folded, no repeated or
// trailing separator, no link resolved; the empty path stays empty.
std::filesystem::path standardized(const std::filesystem::path& path);
// Resolves symbolic links along the path as far as it exists, past PATH_MAX too; the
// components that do not exist are appended as written. The result is absolute and
// standardised.
std::filesystem::path resolveSymlinks(const std::filesystem::path& path);

// The whole content of whatever opens for reading, pseudo-files of /proc included.
std::optional<std::string> readFile(const std::filesystem::path& path);
// The content of a regular file (links followed) of at most maxBytes; nothing for anything
// else: a FIFO, a device, a directory, a larger file, any error. A FIFO or device is never
// opened, and a file swapped for one meanwhile is opened without blocking and refused.
std::optional<std::string> readRegularFile(const std::filesystem::path& path, std::size_t maxBytes);
// Writes in place (no temporary file), replacing earlier content.
std::error_code writeFile(const std::filesystem::path& path, const std::string& content);
// Replaces the file whole or not at all, even across a crash: the content goes to a new
// file beside it (mode 0600, or the mode of the file it replaces), is flushed to the disk,
// renamed over the old name, and the directory is flushed too. Readers see the old content
// or the new one, never a mix. A symbolic link to a file stays a link: the file it points
// to is replaced. Anything but a regular file at the path (a FIFO, a device, a folder) is
// left alone and never opened: the answer is notRegularFileError().
std::error_code writeFileAtomically(const std::filesystem::path& path, const std::string& content);
// The error of a write refused because something other than a regular file stands there.
std::error_code notRegularFileError();
// Removes one file or symbolic link itself (never a folder, never what a link points to);
// nothing there is no error.
std::error_code removeFile(const std::filesystem::path& path);
std::error_code createDirectories(const std::filesystem::path& path);

}  // namespace kelvo::platform
