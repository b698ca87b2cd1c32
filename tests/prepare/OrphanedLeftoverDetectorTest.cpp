#include <gtest/gtest.h>

#include "kelvo/DirectorySizer.h"
#include "kelvo/OrphanedLeftoverDetector.h"
#include "kelvo/PrepareRegistry.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using testing::idsOf;
using testing::TempDir;
using testing::writeFile;

std::vector<CleanTarget> scan(const std::filesystem::path& home, std::set<std::string> installed = {},
                              std::vector<std::string> unidentifiedNames = {}) {
    return OrphanedLeftoverDetector(home, std::move(installed), PrepareRegistry::protectedBundleIDs(),
                                    PrepareRegistry::protectedNames(), std::move(unidentifiedNames))
        .scan();
}

TEST(OrphanedLeftoverDetector, OneTargetPerUninstalledApplicationWithItsLocationsInOrder) {
    TempDir home;
    const auto caches = writeFile(home / "Library/Caches/com.old.App/cache.db", 9000).parent_path();
    const auto savedState = writeFile(home / "Library/Saved Application State/com.old.App.savedState/w", 3000).parent_path();
    const auto preferences = writeFile(home / "Library/Preferences/com.old.App.plist", 500);
    // Neither a lock file, the ByHost folder nor a saved state without its extension names one.
    writeFile(home / "Library/Preferences/com.lock.Only.plist.lockfile", 500);
    writeFile(home / "Library/Preferences/ByHost/com.host.App.0000.plist", 500);
    writeFile(home / "Library/Saved Application State/com.v.Plain/d", 4096);
    // Every other place contributes, and what occupies nothing is left out.
    writeFile(home / "Library/Application Support/com.v.Support/d", 4096);
    writeFile(home / "Library/Containers/com.v.Container/d", 4096);
    writeFile(home / "Library/HTTPStorages/com.v.Http/d", 4096);
    writeFile(home / "Library/Logs/com.B.Upper/d", 4096);
    testing::makeDirectory(home / "Library/Caches/com.empty.App");
    writeFile(home / "Library/Preferences/com.empty.App.plist", 0);

    const auto targets = scan(home.path());
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"leftover:com.B.Upper", "leftover:com.old.App", "leftover:com.v.Container",
                                                        "leftover:com.v.Http", "leftover:com.v.Support"}));
    ASSERT_EQ(targets.size(), 5u);
    EXPECT_EQ(targets[1].kind, CleanKind::paths({caches, savedState, preferences}));
    const DirectorySizer sizer;
    EXPECT_EQ(targets[1].sizeBytes, sizer.size(caches) + sizer.size(savedState) + sizer.size(preferences));
    EXPECT_EQ(targets[1].family, Family::appLeftovers);
    EXPECT_EQ(targets[1].level, Level::moderate);
    EXPECT_EQ(targets[1].regenCost, RegenCost::redownload);
    EXPECT_TRUE(scan(home / "missing").empty());
}

TEST(OrphanedLeftoverDetector, ProtectedInstalledAndPossiblyUnidentifiedApplicationsKeepTheirData) {
    TempDir home;
    for (const std::string name : {
             "com.google.SomethingElse",    // protected vendor
             "com.vendor.Terminal",         // last piece is a protected application name
             "com.microsoft.VSCode.ShipIt", // part of a protected application
             "com.apple.Music",             // the system's
             "com.vendor.app.Helper",       // helper of something
             "Homebrew", "com.x",           // not bundle identifiers
             "com.inst.App", "com.inst.App.Agent",  // installed, and a part of it
             "com.vendor.FooBar",           // an unidentified "Foo Bar": the last piece, blanks and case aside
             "com.foo-bar.helper",          // a middle piece, "-" aside
             "com.x.tool.kit.agent",        // a run of pieces is the dotted name "Tool.Kit"
             "com.vendor.Terminals",        // offered: not a protected name
             "com.vendor.FooBarista",       // offered: a piece must match whole
             "com.x.kit",                   // offered: "kit" alone is not "Tool.Kit"
         })
        writeFile(home / "Library/Caches" / name / "data", 4096);
    EXPECT_EQ(idsOf(scan(home.path(), {"com.inst.App"}, {"Foo Bar", "Tool.Kit"})),
              (std::vector<std::string>{"leftover:com.vendor.FooBarista", "leftover:com.vendor.Terminals", "leftover:com.x.kit"}));
}

TEST(OrphanedLeftoverDetector, ProtectionStepsWithTheDetectorsOwnLists) {
    const OrphanedLeftoverDetector detector("/home/u", {}, {"com.acme.Studio", "single"}, {"studio"});
    for (const std::string id : {"com.acme.Studio", "com.acme.Studio.Helper", "com.acme.Other", "org.vendor.STUDIO",
                                 "org.vendor.studio.", "single.x"})
        EXPECT_TRUE(detector.isProtected(id)) << id;
    for (const std::string id : {"com.acmeX.Other", "org.vendor.Studios"}) EXPECT_FALSE(detector.isProtected(id)) << id;
}

}  // namespace
}  // namespace kelvo
