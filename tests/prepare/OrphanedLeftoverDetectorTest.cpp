#include <gtest/gtest.h>

#include "support/TempDir.h"
#include "kelvo/DirectorySizer.h"
#include "kelvo/L10n.h"
#include "kelvo/OrphanedLeftoverDetector.h"
#include "kelvo/PrepareRegistry.h"

namespace kelvo {
namespace {

using testing::TempDir;
using testing::writeFile;

OrphanedLeftoverDetector detectorFor(const std::filesystem::path& home, std::set<std::string> installed = {}) {
    return OrphanedLeftoverDetector(home, std::move(installed), PrepareRegistry::protectedBundleIDs(),
                                    PrepareRegistry::protectedNames());
}

std::vector<std::string> idsOf(const std::vector<CleanTarget>& targets) {
    std::vector<std::string> ids;
    for (const auto& target : targets) ids.push_back(target.id);
    return ids;
}

TEST(OrphanedLeftoverDetector, IdentityOfTheDetector) {
    const auto detector = detectorFor("/nowhere");
    EXPECT_EQ(detector.id(), "app-leftovers");
    EXPECT_EQ(detector.name(), "Restos de apps desinstaladas");
    EXPECT_EQ(detector.family(), Family::appLeftovers);
}

TEST(OrphanedLeftoverDetector, OneTargetPerUninstalledApplicationWithItsLocationsInOrder) {
    TempDir home;
    const auto caches = writeFile(home / "Library/Caches/com.old.App/cache.db", 9000).parent_path();
    const auto savedState = writeFile(home / "Library/Saved Application State/com.old.App.savedState/window", 3000).parent_path();
    const auto preferences = writeFile(home / "Library/Preferences/com.old.App.plist", 500);
    // Neither a lock file nor the ByHost folder names a bundle identifier.
    writeFile(home / "Library/Preferences/com.lock.Only.plist.lockfile", 500);
    writeFile(home / "Library/Preferences/ByHost/com.host.App.0000.plist", 500);

    const auto targets = detectorFor(home.path()).scan();
    ASSERT_EQ(targets.size(), 1u);
    const auto& target = targets[0];
    EXPECT_EQ(target.id, "leftover:com.old.App");
    EXPECT_EQ(target.name, L10n::t("cleaner.leftover.target", std::string("com.old.App")));
    EXPECT_EQ(target.family, Family::appLeftovers);
    EXPECT_EQ(target.kind, CleanKind::paths({caches, savedState, preferences}));
    const DirectorySizer sizer;
    EXPECT_EQ(target.sizeBytes, sizer.size(caches) + sizer.size(savedState) + sizer.size(preferences));
    EXPECT_GE(target.sizeBytes, 12500);
    EXPECT_EQ(target.reversibility, Reversibility::regenerable);
    EXPECT_EQ(target.regenCost, RegenCost::redownload);
    EXPECT_EQ(target.level, Level::moderate);
    EXPECT_EQ(target.notes, "App no instalada; datos sobrantes.");
}

TEST(OrphanedLeftoverDetector, ProtectedSystemAndNonIdentifierNamesAreNeverOffered) {
    TempDir home;
    for (const std::string name : {
             "com.google.SomethingElse",    // protected vendor
             "com.vendor.Terminal",         // last piece is a protected application name
             "com.microsoft.VSCode.ShipIt", // part of a protected application
             "org.mozilla.thunderbird",     // protected vendor
             "com.apple.Music",             // the system's
             "com.vendor.app.Helper",       // helper of something
             "Homebrew", "pip", "com.x",    // not bundle identifiers
             "com.vendor.Terminals",        // offered: not a protected name
         })
        writeFile(home / "Library/Caches" / name / "data", 4096);
    EXPECT_EQ(idsOf(detectorFor(home.path()).scan()), (std::vector<std::string>{"leftover:com.vendor.Terminals"}));
}

TEST(OrphanedLeftoverDetector, InstalledApplicationsAndTheirPartsAreNotOrphans) {
    TempDir home;
    writeFile(home / "Library/Caches/com.inst.App/data", 4096);
    writeFile(home / "Library/Application Support/com.inst.App.Agent/data", 4096);
    writeFile(home / "Library/Logs/com.gone.App/log", 4096);
    EXPECT_EQ(idsOf(detectorFor(home.path(), {"com.inst.App"}).scan()), (std::vector<std::string>{"leftover:com.gone.App"}));
    EXPECT_EQ(idsOf(detectorFor(home.path()).scan()),
              (std::vector<std::string>{"leftover:com.gone.App", "leftover:com.inst.App", "leftover:com.inst.App.Agent"}));
}

TEST(OrphanedLeftoverDetector, BundlesWithoutAReadableIdentifierKeepWhatMayBeTheirs) {
    TempDir home;
    for (const std::string name : {
             "com.vendor.FooBar",          // kept: the last piece is "Foo Bar", blanks and case aside
             "com.foo-bar.helper",         // kept: a middle piece, "-" aside
             "com.spotify.client",         // kept: the vendor piece
             "com.x.tool.kit.agent",       // kept: a run of pieces is the dotted name "Tool.Kit"
             "com.vendor.FooBarista",      // offered: a piece must match whole
             "com.x.kit",                  // offered: "kit" alone is not "Tool.Kit"
             "com.other.App",              // offered
         })
        writeFile(home / "Library/Caches" / name / "data", 4096);
    const OrphanedLeftoverDetector detector(home.path(), {}, PrepareRegistry::protectedBundleIDs(),
                                            PrepareRegistry::protectedNames(), {"Foo Bar", "Spotify", "Tool.Kit"});
    EXPECT_EQ(idsOf(detector.scan()), (std::vector<std::string>{"leftover:com.other.App", "leftover:com.vendor.FooBarista",
                                                                "leftover:com.x.kit"}));
}

TEST(OrphanedLeftoverDetector, NothingForLocationsThatOccupyNothing) {
    TempDir home;
    testing::makeDirectory(home / "Library/Caches/com.empty.App");
    testing::makeDirectory(home / "Library/Logs/com.empty.App");
    testing::writeFile(home / "Library/Preferences/com.empty.App.plist", 0);
    EXPECT_TRUE(detectorFor(home.path()).scan().empty());
}

TEST(OrphanedLeftoverDetector, TargetsInAscendingIdentifierOrder) {
    TempDir home;
    writeFile(home / "Library/Caches/com.b.X/data", 4096);
    writeFile(home / "Library/Logs/com.a.Y/data", 4096);
    writeFile(home / "Library/Preferences/com.B.Upper.plist", 4096);
    EXPECT_EQ(idsOf(detectorFor(home.path()).scan()),
              (std::vector<std::string>{"leftover:com.B.Upper", "leftover:com.a.Y", "leftover:com.b.X"}));
}

TEST(OrphanedLeftoverDetector, EveryPlaceContributesCandidates) {
    TempDir home;
    writeFile(home / "Library/Application Support/com.v.Support/d", 4096);
    writeFile(home / "Library/Containers/com.v.Container/d", 4096);
    writeFile(home / "Library/HTTPStorages/com.v.Http/d", 4096);
    writeFile(home / "Library/Saved Application State/com.v.Saved.savedState/d", 4096);
    // Only the savedState extension names a saved state; other entries there are ignored.
    writeFile(home / "Library/Saved Application State/com.v.Plain/d", 4096);
    EXPECT_EQ(idsOf(detectorFor(home.path()).scan()),
              (std::vector<std::string>{"leftover:com.v.Container", "leftover:com.v.Http", "leftover:com.v.Saved",
                                        "leftover:com.v.Support"}));
}

TEST(OrphanedLeftoverDetector, MissingHTTPStoragesFolderIsLikeAnEmptyOne) {
    TempDir withFolder;
    TempDir withoutFolder;
    for (const auto* home : {&withFolder, &withoutFolder}) writeFile(home->path() / "Library/Caches/com.old.App/d", 4096);
    testing::makeDirectory(withFolder / "Library/HTTPStorages");
    const auto with = detectorFor(withFolder.path()).scan();
    const auto without = detectorFor(withoutFolder.path()).scan();
    ASSERT_EQ(with.size(), 1u);
    ASSERT_EQ(without.size(), 1u);
    EXPECT_EQ(with[0].id, without[0].id);
    EXPECT_EQ(with[0].sizeBytes, without[0].sizeBytes);
}

TEST(OrphanedLeftoverDetector, NoLibraryAtAll) {
    TempDir home;
    EXPECT_TRUE(detectorFor(home.path()).scan().empty());
    EXPECT_TRUE(detectorFor(home / "missing").scan().empty());
}

TEST(OrphanedLeftoverDetector, ProtectionStepsWithTheDetectorsOwnLists) {
    const OrphanedLeftoverDetector detector("/home/u", {}, {"com.acme.Studio", "single"}, {"studio"});
    EXPECT_TRUE(detector.isProtected("com.acme.Studio"));
    EXPECT_TRUE(detector.isProtected("com.acme.Studio.Helper"));
    EXPECT_TRUE(detector.isProtected("com.acme.Other"));        // brand prefix com.acme
    EXPECT_TRUE(detector.isProtected("org.vendor.STUDIO"));     // last piece, lower-cased
    EXPECT_TRUE(detector.isProtected("org.vendor.studio."));    // empty pieces dropped
    EXPECT_FALSE(detector.isProtected("com.acmeX.Other"));
    EXPECT_FALSE(detector.isProtected("org.vendor.Studios"));
    EXPECT_TRUE(detector.isProtected("single.x"));              // a sub-component, though "single" has no brand
}

}  // namespace
}  // namespace kelvo
