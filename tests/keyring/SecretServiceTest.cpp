// The credential store against a real Secret Service: GNOME Keyring on the private session
// bus that ctest opens with dbus-run-session for this program alone. The test starts the
// daemon in a home of its own, where the daemon creates the login keyring and unlocks it
// with the test's password; the daemon ends with the bus.
#include <gtest/gtest.h>
#include <libsecret/secret.h>
#include <sys/stat.h>

#include "app/KeychainStore.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

// Every item with the two attributes, whatever schema wrote it: its secret, or "locked".
std::vector<std::string> itemsFor(const std::string& service, const std::string& account) {
    SecretSchema* anySchema = secret_schema_new("any", SECRET_SCHEMA_DONT_MATCH_NAME, "service", SECRET_SCHEMA_ATTRIBUTE_STRING,
                                                "account", SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr);
    GHashTable* attributes =
        secret_attributes_build(anySchema, "service", service.c_str(), "account", account.c_str(), nullptr);
    GList* items = secret_service_search_sync(nullptr, anySchema, attributes,
                                              SecretSearchFlags(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS),
                                              nullptr, nullptr);
    g_hash_table_unref(attributes);
    secret_schema_unref(anySchema);
    std::vector<std::string> secrets;
    for (GList* item = items; item; item = item->next) {
        SecretValue* value = secret_item_get_secret(static_cast<SecretItem*>(item->data));
        secrets.push_back(value ? secret_value_get_text(value) : "locked");
        if (value) secret_value_unref(value);
    }
    g_list_free_full(items, g_object_unref);
    return secrets;
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
    EXPECT_EQ(itemsFor(service, key), std::vector<std::string>{"2.0-\u00f1"});
    EXPECT_EQ(store.string(key), "2.0-\u00f1");
    EXPECT_FALSE(KeychainStore("dev.kelvo.other").string(key));
    store.set(std::nullopt, key);
    EXPECT_FALSE(store.string(key));
    EXPECT_TRUE(itemsFor(service, key).empty());
}

}  // namespace
}  // namespace kelvo
