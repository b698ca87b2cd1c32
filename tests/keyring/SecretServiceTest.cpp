// The credential store against a real Secret Service: GNOME Keyring on the private session
// bus that ctest opens with dbus-run-session for this program alone. The test starts the
// daemon in a home of its own, where the daemon creates the login keyring and unlocks it
// with the test's password; the daemon ends with the bus.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>

#include "app/KeychainStore.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

// The paths of the keyring's items with the two attributes, whatever schema wrote them.
std::string itemsFor(const std::string& service, const std::string& account) {
    const std::string call = "/usr/bin/gdbus call --session --dest org.freedesktop.secrets --object-path "
                             "/org/freedesktop/secrets --method org.freedesktop.Secret.Service.SearchItems "
                             "\"{'service': '" + service + "', 'account': '" + account + "'}\"";
    FILE* pipe = ::popen(call.c_str(), "r");
    std::string paths;
    for (int c; pipe && (c = std::fgetc(pipe)) != EOF;) paths += static_cast<char>(c);
    EXPECT_TRUE(pipe && ::pclose(pipe) == 0) << call;
    return paths;
}

TEST(SecretService, KeychainStoreKeepsOneItemPerKeyInARealKeyring) {
    ASSERT_TRUE(std::getenv("DBUS_SESSION_BUS_ADDRESS")) << "run under dbus-run-session, as ctest does";
    testing::TempDir root;
    const auto runtime = testing::makeDirectory(root / "run");
    ::chmod(runtime.c_str(), 0700);
    const std::string start = "printf %s kelvo-test-password | HOME='" + root.path().string() + "' XDG_RUNTIME_DIR='" +
                              runtime.string() + "' /usr/bin/gnome-keyring-daemon --daemonize --unlock --components=secrets >/dev/null";
    ASSERT_EQ(std::system(start.c_str()), 0) << "gnome-keyring-daemon did not start";
    // Returns as soon as the daemon owns the name: a hand-off, not a guess at a delay.
    ASSERT_EQ(std::system("/usr/bin/gdbus wait --session --timeout 30 org.freedesktop.secrets"), 0)
        << "the keyring never took its name on the bus";

    const std::string service = "dev.kelvo.KelvoMenuBar.test";
    const std::string key = "minVersionCached";
    KeychainStore store(service);
    EXPECT_FALSE(store.string(key));
    store.set("1.4.2", key);
    EXPECT_EQ(store.string(key), "1.4.2");
    store.set("2.0-\u00f1", key);  // replaces the item, one per key
    EXPECT_EQ(std::ranges::count(itemsFor(service, key), '\''), 2) << itemsFor(service, key);  // one quoted path
    EXPECT_EQ(store.string(key), "2.0-\u00f1");
    EXPECT_FALSE(KeychainStore("dev.kelvo.other").string(key));
    store.set(std::nullopt, key);
    EXPECT_FALSE(store.string(key));
    EXPECT_EQ(itemsFor(service, key), "(@ao [], @ao [])\n");
}

}  // namespace
}  // namespace kelvo
