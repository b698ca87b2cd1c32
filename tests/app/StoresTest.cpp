// The stores the minimum version is kept in: the file store (damaged files, two writing
// processes, where it lives) and the credential store on a machine without a session bus
// (CI, a server, a login over ssh; tests/keyring has it against a real Secret Service), and
// the store over both.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/CompositeStore.h"
#include "app/ICloudStore.h"
#include "app/InMemoryStore.h"
#include "app/KeychainStore.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using testing::TempDir;

TEST(ICloudStore, DamagedFileReadsAsEmptyAndTheNextWriteReplacesIt) {
    const char* damaged[] = {"", "{\"minVersionCached\": \"1.", "[\"1.0\"]", "\xff\xfe{}", R"({"minVersionCached": 7})"};
    for (const char* content : damaged) {
        TempDir root;
        const ICloudStore reader(root / "kelvo");
        testing::writeText(reader.file(), content);
        EXPECT_FALSE(reader.string("minVersionCached")) << content;
        ICloudStore(root / "kelvo").set("1.2", "minVersionCached");
        EXPECT_EQ(reader.string("minVersionCached"), "1.2") << content;
    }
}

// Each child is a separate process with its own store object; the lock and the atomic
// replacement are all that keep one writer from undoing the other.
TEST(ICloudStore, WritersInTwoProcessesKeepEachOthersKeys) {
    TempDir root;
    const auto directory = root / "state/kelvo";
    constexpr int keysPerWriter = 40;
    pid_t writers[2];
    for (int writer = 0; writer < 2; ++writer) {
        writers[writer] = ::fork();
        ASSERT_GE(writers[writer], 0);
        if (writers[writer] == 0) {
            ICloudStore store(directory);
            for (int key = 0; key < keysPerWriter; ++key)
                store.set(std::to_string(writer), std::to_string(writer) + "-" + std::to_string(key));
            ::_exit(0);
        }
    }
    for (const pid_t writer : writers) {
        int status = 0;
        ASSERT_EQ(::waitpid(writer, &status, 0), writer);
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    const ICloudStore store(directory);
    int found = 0;
    for (int writer = 0; writer < 2; ++writer)
        for (int key = 0; key < keysPerWriter; ++key)
            found += store.string(std::to_string(writer) + "-" + std::to_string(key)) == std::to_string(writer);
    EXPECT_EQ(found, 2 * keysPerWriter);
    EXPECT_EQ(testing::listing(directory), "store.json\n");  // no temporary file left behind

    ICloudStore(directory).set(std::nullopt, "0-0");
    EXPECT_FALSE(store.string("0-0"));
    EXPECT_EQ(store.string("0-1"), "0");
}

TEST(ICloudStore, LivesUnderTheStateHomeOnlyWhenThatIsAnAbsolutePath) {
    TempDir root;
    const std::pair<std::string, std::filesystem::path> rows[] = {{(root / "state").string(), root / "state/kelvo"},
                                                                  {"state", root / ".local/state/kelvo"}};
    for (const auto& [stateHome, expected] : rows) {
        const testing::ScopedEnvironment environment({{"HOME", root.path().string()}, {"XDG_STATE_HOME", stateHome}});
        EXPECT_EQ(ICloudStore().directory(), expected);
    }
}

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

TEST(CompositeStore, ReadsFromTheFirstStoreThatHasTheKeyAndCopiesItIntoTheOthers) {
    auto first = std::make_shared<InMemoryStore>(std::map<std::string, std::string>{{"j", "mine"}, {"m", "x"}});
    auto second = std::make_shared<InMemoryStore>(std::map<std::string, std::string>{{"j", "theirs"}, {"k", "v"}});
    CompositeStore composite({first, second});
    EXPECT_EQ(composite.string("k"), "v");
    EXPECT_EQ(first->string("k"), "v");
    EXPECT_EQ(composite.string("j"), "mine");
    EXPECT_EQ(second->string("j"), "theirs");
    EXPECT_EQ(composite.string("m"), "x");
    EXPECT_EQ(second->string("m"), "x");
    EXPECT_FALSE(composite.string("absent"));

    composite.set("w", "k");
    EXPECT_TRUE(first->string("k") == "w" && second->string("k") == "w");
}

}  // namespace
}  // namespace kelvo
