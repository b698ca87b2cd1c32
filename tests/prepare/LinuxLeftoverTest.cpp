// Leftovers of removed Flatpak and Snap applications, with the installations in a fake
// system root and a fake home.
#include <gtest/gtest.h>

#include "kelvo/Environment.h"
#include "kelvo/PrepareRegistry.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using testing::TempDir, testing::writeFile, testing::writeText;

// A home with data of installed, removed, protected and hidden applications, and a system
// root with a Flatpak system installation, an extra one named by its configuration, and snaps.
struct FakeSystem {
    FakeSystem() {
        // Installed: one app per installation kind, and two snaps (a mount and a package file).
        fs::create_directories(system / "var/lib/flatpak/app/org.example.System/current");
        fs::create_directories(home / ".local/share/flatpak/app/org.example.User");
        fs::create_directories(temp / "extra/app/org.example.Extra");
        fs::create_directories(temp / "extra/repo");
        writeText(system / "etc/flatpak/installations.d/extra.conf",
                  "[Installation \"extra\"]\n  Path=" + (temp / "extra").string() + "  \nDisplayName=Extra\n");
        fs::create_directories(system / "snap/mounted");
        writeFile(system / "var/lib/snapd/snaps/packed_12.snap", 10);
        for (const char* id : {"org.example.System", "org.example.User", "org.example.Extra", "org.example.Gone",
                               "org.mozilla.firefox", ".hidden"})
            writeFile(home / ".var/app" / id / "data/saved.bin", 4096);
        fs::create_symlink(temp / "extra", home / ".var/app/org.example.Link");
        for (const char* name : {"mounted", "packed", "gone-snap", "firefox"})
            writeFile(home / "snap" / name / "common/state.bin", 4096);
    }

    // What the leftover detector offers, with the notes it takes.
    std::vector<CleanTarget> scan(const std::shared_ptr<ScanNotes>& notes = nullptr) const {
        const DirectorySizer sizer;
        return PrepareRegistry::makePreparers(env, 6, std::chrono::system_clock::now(), nullptr, {}, std::nullopt, nullptr, system)
            .at(0)->scan(ScanContext{sizer, {}, notes});
    }

    TempDir temp;
    fs::path home = temp / "home";
    fs::path system = temp / "root";
    Environment env{.home = home, .tmpDir = temp / "tmp", .catalog = CatalogProfile::gnuLinux};
};

TEST(LinuxLeftovers, DataNoInstallationHasIsOfferedWholeAndUnreadableInstallationsOfferNothingOfTheirKind) {
    const auto replaceByFile = [](const fs::path& folder) {
        fs::remove_all(folder);
        writeFile(folder);
    };
    const std::set<std::string> snapsOnly{"leftover:snap:gone-snap"};
    // Unknown Flatpak installations are said (one note), unknown snaps are not.
    const std::vector<std::tuple<std::string, std::function<void(FakeSystem&)>, std::set<std::string>, std::size_t>> cases{
        {"flatpak app folder is a file", [&](auto& fake) { replaceByFile(fake.system / "var/lib/flatpak/app"); }, snapsOnly, 1},
        {"installation file unreadable",
         [](auto& fake) { fs::create_directory(fake.system / "etc/flatpak/installations.d/x.conf"); }, snapsOnly, 1},
        // A declared installation on a disk not mounted: its folder missing, or an empty mount point.
        {"declared installation missing", [](auto& fake) { fs::remove_all(fake.temp / "extra"); }, snapsOnly, 1},
        {"declared installation empty", [](auto& fake) { fs::remove_all(fake.temp / "extra/repo"); }, snapsOnly, 1},
        {"snap packages folder is a file", [&](auto& fake) { replaceByFile(fake.system / "var/lib/snapd/snaps"); },
         {"leftover:org.example.Gone"}, 0},
        {"nothing installed anywhere",
         [](auto& fake) { for (const fs::path& gone : {fake.system, fake.home / ".local/share/flatpak"}) fs::remove_all(gone); },
         {"leftover:org.example.Gone", "leftover:org.example.System", "leftover:org.example.User",
          "leftover:org.example.Extra", "leftover:snap:gone-snap", "leftover:snap:mounted", "leftover:snap:packed"}, 0},
        // The moved system folder replaces the one under the root: org.example.System is no longer installed.
        {"installations the variables name",
         [](auto& fake) {
             const auto moved = fake.temp / "moved";
             fs::create_directories(moved / "system/app/org.example.Gone");
             fs::create_directories(moved / "user/app/org.example.Mine");
             writeFile(fake.home / ".var/app/org.example.Mine/data/x.bin", 4096);
             fake.env.locationVariables = {{"FLATPAK_SYSTEM_DIR", (moved / "system").string()},
                                           {"FLATPAK_USER_DIR", (moved / "user").string()},
                                           {"FLATPAK_CONFIG_DIR", (moved / "config").string()}};
         },
         {"leftover:org.example.System", "leftover:org.example.User", "leftover:org.example.Extra", "leftover:snap:gone-snap"}, 0},
    };
    for (const auto& [name, change, expected, noteCount] : cases) {
        SCOPED_TRACE(name);
        FakeSystem fake;
        change(fake);
        const auto notes = std::make_shared<ScanNotes>();
        EXPECT_EQ(testing::idSetOf(fake.scan(notes)), expected);
        EXPECT_EQ(notes->take().size(), noteCount);
    }
    // As installed: the data of applications no installation has, each folder offered whole.
    const FakeSystem fake;
    const auto targets = fake.scan();
    ASSERT_EQ(testing::idsOf(targets), (std::vector<std::string>{"leftover:org.example.Gone", "leftover:snap:gone-snap"}));
    EXPECT_EQ(targets[1].kind.pathList(), std::vector<fs::path>{fake.home / "snap/gone-snap"});
    EXPECT_EQ(targets[1].sizeBytes, testing::allocatedBytesBelow(fake.home / "snap/gone-snap"));
}

}  // namespace
}  // namespace kelvo
