// The credential store on a machine without a session bus (CI, a server, a login over
// ssh). The store talks to a real Secret Service in tests/keyring.
#include <gtest/gtest.h>

#include "kelvo/KeychainStore.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using testing::TempDir;

// GLib, asked for a session bus it cannot find, runs dbus-launch from PATH whenever a
// display is set; a stand-in that leaves a mark shows whether that was ever tried.
TEST(KeychainStore, WithoutASessionBusReadsNothingAndLaunchesNoBus) {
    TempDir root;
    const auto mark = root / "dbus-launch-ran";
    const auto launcher = testing::writeText(root / "bin/dbus-launch", "#!/bin/sh\n/usr/bin/touch '" + mark.string() + "'\nexit 1\n");
    std::filesystem::permissions(launcher, std::filesystem::perms::owner_all);
    const testing::ScopedEnvironment environment({
        {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
        {"XDG_RUNTIME_DIR", (root / "run").string()},  // no bus socket in it
        {"DISPLAY", ":99"},
        {"PATH", (root / "bin").string()},
        {"HOME", root.path().string()},
    });
    KeychainStore store("dev.kelvo.test");
    store.set("1.0", "minVersionCached");
    EXPECT_FALSE(store.string("minVersionCached"));
    store.set(std::nullopt, "minVersionCached");
    EXPECT_FALSE(std::filesystem::exists(mark));
}

}  // namespace
}  // namespace kelvo
