// The prepare domain end to end: a fake home whose Applications folder holds an old
// application, a protected one and a running one, and whose Library holds leftovers of
// an uninstalled application.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>

#include "support/AppBundle.h"
#include "support/NamedProcess.h"
#include "support/TempDir.h"
#include "support/ToolRunner.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::writeFile;

TEST(PrepareEndToEnd, OffersAndRemovesOnlyTheOldAppAndTheLeftoversOfAnUninstalledOne) {
    testing::TempDir root;
    const auto environment = testing::toolEnvironment(root.path());
    const auto home = root / "home";
    const auto apps = home / "Applications";
    for (const auto& [name, bundleID] : {std::pair{"OldTool", "com.example.OldTool"}, std::pair{"Docker", "com.docker.docker"},
                                         std::pair{"Busy", "com.example.Busy"}})
        testing::makeApp(apps, name, {.bundleID = bundleID, .executable = name, .encoding = {}, .payloadBytes = 30000});
    for (const auto* file : {"Library/Caches/com.example.OldTool/cache.db", "Library/Caches/com.gone.Editor/cache.db",
                             "Library/Preferences/com.gone.Editor.plist", "Library/Caches/com.example.Busy/cache.db",
                             "Library/Caches/com.apple.Safari/cache.db", "Documents/notes.txt"})
        writeFile(home / file, 3000);
    testing::setTreeModificationTime(home, std::chrono::system_clock::now() - 400 * 24h);
    testing::NamedProcess busy(apps / "Busy.app/Contents/MacOS/Busy");
    ASSERT_GT(busy.pid(), 0);

    const auto scan = testing::runTool({"--catalog", "macos", "prepare", "--json"}, environment);
    ASSERT_EQ(scan.exitStatus, 0) << scan.standardError;
    const auto plan = nlohmann::json::parse(scan.standardOutput);
    std::set<std::string> ids;
    for (const auto& target : plan["targets"]) ids.insert(target["id"]);
    EXPECT_EQ(ids, (std::set<std::string>{"app:com.example.OldTool", "leftover:com.gone.Editor"}));

    const std::string before = testing::listing(root.path());
    const auto clean = testing::runTool({"--catalog", "macos", "prepare", "clean", "--yes", "--id",
                                         "app:com.example.OldTool", "--id", "leftover:com.gone.Editor"},
                                        environment);
    ASSERT_EQ(clean.exitStatus, 0) << clean.standardOutput << clean.standardError;
    // Exactly those are gone: the listing equals the old one minus the removed items.
    EXPECT_EQ(testing::listing(root.path()),
              testing::listingWithout(before, {"home/Applications/OldTool.app", "home/Library/Caches/com.example.OldTool/",
                                               "home/Library/Caches/com.gone.Editor/",
                                               "home/Library/Preferences/com.gone.Editor.plist"}));
}

}  // namespace
}  // namespace kelvo
