#include <regex>

#include "ExecutionSupport.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/Trash.h"

namespace kelvo::testing {
namespace {

namespace fs = std::filesystem;
using TrashTest = ExecutionTest;

// An item goes into the home trash with an info file that leads back to where it came from.
// A link in the way is never followed: not as the item, not in the chain above it; and
// nothing of the trash itself moves.
TEST_F(TrashTest, MovesIntoHomeTrashWithInfoThatLeadsBackNeverThroughALinkNorTheTrashItself) {
    const fs::path trash = home / ".local/share/Trash", item = writeFile(home / "a b%.log", 10);
    Executor run = executor();
    run.homeTrash = trash;
    const auto report = run.execute({pathTarget("t", {item})});
    EXPECT_EQ(summary(report), lines({"deleted t", "freed 0"}));
    EXPECT_GT(report.trashedBytes, 0);
    EXPECT_EQ(report.trashed, std::vector<std::string>{"t"});
    EXPECT_FALSE(deepExists(item));
    EXPECT_TRUE(deepExists(trash / "files/a b%.log"));
    const std::string info = platform::readFile(trash / "info/a b%.log.trashinfo").value_or("");
    EXPECT_EQ(platform::originalPathIn(info), item);
    EXPECT_TRUE(std::regex_search(info, std::regex("\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n")));

    writeFile(home / "real/cache/f", 10);
    fs::create_directory_symlink(home / "real", home / "swapped");
    platform::TrashedItem trashed;
    EXPECT_EQ(platform::moveToTrash(home / "swapped/cache", trash, trashed), std::errc::too_many_symbolic_link_levels);
    for (const char* kept : {"real/cache/f", "swapped"}) EXPECT_TRUE(deepExists(home / kept)) << kept;
    writeFile(trash / "files/old", 1);  // the trash cannot go into itself
    EXPECT_EQ(summary(run.execute({pathTarget("t", {trash / "files"})})),
              lines({skipped("t", Reason::Code::trashItself, "files"), "freed 0"}));
}

// On another file system the volume's own trash takes the item; where it has none the item
// stays (never a copy). Needs a mount of its own: a private mount namespace, as root.
TEST_F(TrashTest, AnotherFileSystemUsesItsOwnTrashOrNone) {
    const fs::path volume = makeDirectory(root / "volume"), homeTrash = home / ".local/share/Trash";
    const int status = inPrivateMount(volume, [&] {
        platform::TrashedItem trashed;
        const auto own = platform::moveToTrash(writeFile(volume / "a/f", 10), homeTrash, trashed);
        const fs::path ownTrash = volume / (".Trash-" + std::to_string(::getuid()));
        if (own || trashed.trashDirectory != ownTrash || !deepExists(ownTrash / "files/f")) return false;
        fs::remove_all(ownTrash);
        writeFile(ownTrash);  // a file where the trash would go: the volume has none
        const auto none = platform::moveToTrash(volume / "a", homeTrash, trashed);
        return none == std::errc::cross_device_link && deepExists(volume / "a");
    });
    if (status == 77) GTEST_SKIP() << "no private mount namespace here (needs root): not tested";
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace kelvo::testing
