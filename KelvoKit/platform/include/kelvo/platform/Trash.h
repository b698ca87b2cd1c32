#pragma once
// Moving an item into the desktop trash, the way file managers find it again: the home
// trash for what lies on the home trash's file system, else the volume's own trash
// ($topdir/.Trash/$uid when .Trash is a sticky directory and no link, otherwise
// $topdir/.Trash-$uid). Each trashed item is files/NAME with info/NAME.trashinfo telling
// where it came from and when.
//
// The item is renamed, never copied: an item that would have to cross file systems gives
// EXDEV and stays where it is. The item's parent is reached from "/" without following any
// link, and the rename is relative to directory descriptors (renameat2 with
// RENAME_NOREPLACE), so a link swapped in anywhere on the way stops the move (ELOOP) and a
// link at the item itself is moved as a link, never followed. The info file is created
// first (O_EXCL), which claims the name; a clash in either folder tries the next name
// ("NAME.2", "NAME.3", ...). Errors are values; nothing here throws.
#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>

namespace kelvo::platform {

struct TrashedItem {
    std::filesystem::path trashDirectory;  // the trash used (holds files/ and info/)
    std::string name;                      // the name under files/ (and info/NAME.trashinfo)
};

// Moves the item at an absolute, standardised path into its trash. homeTrash is the home
// trash's folder ($XDG_DATA_HOME/Trash), made when missing.
std::error_code moveToTrash(const std::filesystem::path& item, const std::filesystem::path& homeTrash,
                            TrashedItem& trashed);

// The text of an info file, and the reverse: the original path of one (empty when the text
// is no valid info file). Paths are percent-encoded byte by byte; dates are local time.
std::string trashInfoText(const std::filesystem::path& original, std::chrono::system_clock::time_point deleted);
std::filesystem::path originalPathIn(const std::string& trashInfo);

}  // namespace kelvo::platform
