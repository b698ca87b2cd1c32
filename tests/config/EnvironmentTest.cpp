#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "kelvo/Config.h"
#include "kelvo/Environment.h"
#include "kelvo/Paths.h"
#include "support/TempDir.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

using std::filesystem::path;

const path home = "/home/dev";

std::optional<std::string> expanded(const std::string& text) {
    const auto result = Environment::expand(text, home);
    if (!result) return std::nullopt;
    return Paths::standardized(*result).string();
}

TEST(EnvironmentExpand, TildeSlashAndRelativeForms) {
    EXPECT_EQ(expanded("  ~/dev  "), "/home/dev/dev");
    EXPECT_EQ(expanded("\t~/dev\n"), "/home/dev/dev");
    EXPECT_EQ(expanded("\u00a0~/dev\u3000"), "/home/dev/dev");  // pasted no-break and ideographic spaces
    EXPECT_EQ(Environment::expand("~", home), home);
    EXPECT_EQ(expanded("~bob/projects"), std::nullopt);
    EXPECT_EQ(expanded(""), std::nullopt);
    EXPECT_EQ(expanded("   \n"), std::nullopt);
    EXPECT_EQ(Environment::expand("/opt/x", home), path("/opt/x"));
    EXPECT_EQ(expanded("work"), "/home/dev/work");
    // A second slash after the tilde stays under home instead of starting a new absolute path.
    EXPECT_EQ(expanded("~//etc"), "/home/dev/etc");
    // No normalisation here: ".." is for the safety guard to judge.
    EXPECT_EQ(Environment::expand("~/a/../b", home)->string(), "/home/dev/a/../b");
}

TEST(EnvironmentExpand, TextCutInsideACharacterIsKeptAsWritten) {
    for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
             {"\xE2\x80", "/home/dev/\xE2\x80"},
             {"\xE2\x80" "A", "/home/dev/\xE2\x80" "A"},
             {"~/x\xE2", "/home/dev/x\xE2"},
             {"\xE2\x80\xAF~/dev\xE2\x80\xA8", "/home/dev/dev"},  // whole U+202F and U+2028 are still blanks
         })
        EXPECT_EQ(expanded(text), expected) << ::testing::PrintToString(text);
}

TEST(EnvironmentRoots, HomeItselfIsNeverAProjectRoot) {
    Environment environment;
    environment.home = home;
    environment.projectRoots = {"~", "~/", "a", "", "~/x/..", "/home/dev/.", "~nobody", "a", "/srv/code"};
    EXPECT_EQ(environment.resolvedProjectRoots(), (std::vector<path>{"/home/dev/a", "/home/dev/a", "/srv/code"}));
    // A home spelled with a decomposed accent is the same folder as the one-character spelling.
    environment.home = "/home/caf\xC3\xA9";
    environment.projectRoots = {"/home/cafe\xCC\x81", "/home/cafe\xCC\x81/a"};
    EXPECT_EQ(environment.resolvedProjectRoots(), std::vector<path>{"/home/cafe\xCC\x81/a"});
}

TEST(EnvironmentRoots, ExclusionsKeepHome) {
    Environment environment;
    environment.home = home;
    environment.extraExclusions = {"~", "", "/opt/x", "~nobody/x", " keep "};
    EXPECT_EQ(environment.resolvedExtraExclusions(), (std::vector<path>{home, "/opt/x", "/home/dev/keep"}));
}

// Sets environment variables for one test and puts the earlier values back.
class LiveEnvironment : public ::testing::Test {
protected:
    void TearDown() override {
        // Newest first, so a variable set twice ends with its value from before the test.
        for (auto it = saved.rbegin(); it != saved.rend(); ++it) {
            const auto& [name, value] = *it;
            if (value)
                ::setenv(name.c_str(), value->c_str(), 1);
            else
                ::unsetenv(name.c_str());
        }
    }
    void set(const std::string& name, const std::optional<std::string>& value) {
        const char* old = std::getenv(name.c_str());
        saved.emplace_back(name, old ? std::optional<std::string>(old) : std::nullopt);
        if (value)
            ::setenv(name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(name.c_str());
    }

    std::vector<std::pair<std::string, std::optional<std::string>>> saved;
};

TEST_F(LiveEnvironment, ReadsHomeTemporaryFolderAndConfiguration) {
    testing::TempDir fakeHome;
    testing::TempDir fakeTemporary;
    Config config;
    config.projectRoots = {"~/code"};
    config.extraExclusions = {"~/code/keep"};
    config.keepRecentDays = 9;
    config.enabledFamilies = std::vector<std::string>{"docker", "bogus", "Python"};
    ASSERT_FALSE(config.save(fakeHome.path()));
    set("HOME", fakeHome.path().string());
    set("TMPDIR", fakeTemporary.path().string());

    const Environment environment = Environment::live();
    EXPECT_EQ(environment.home, fakeHome.path());
    EXPECT_EQ(environment.tmpDir, fakeTemporary.path());
    EXPECT_EQ(environment.projectRoots, config.projectRoots);
    EXPECT_EQ(environment.extraExclusions, config.extraExclusions);
    EXPECT_EQ(environment.keepRecentDays, 9);
    EXPECT_EQ(environment.enabledFamilies, (std::set<Family>{Family::docker}));
}

TEST_F(LiveEnvironment, WithoutHomeUsesThePasswordDatabase) {
    const struct passwd* entry = ::getpwuid(::getuid());
    ASSERT_NE(entry, nullptr);
    set("HOME", std::nullopt);
    set("TMPDIR", std::nullopt);
    const Environment environment = Environment::live();
    EXPECT_EQ(environment.home, path(entry->pw_dir));
    EXPECT_EQ(environment.tmpDir, path("/tmp"));
    set("HOME", "");
    EXPECT_EQ(Environment::live().home, path(entry->pw_dir));
}

TEST_F(LiveEnvironment, AHomeThatCannotBeFoundIsTheRootWhichNoCleanAccepts) {
    constexpr unsigned stranger = 64999;
    if (!testing::runningAsRoot()) GTEST_SKIP() << "only root can run as a user without a password entry";
    if (::getpwuid(stranger)) GTEST_SKIP() << "uid " << stranger << " has a password entry on this machine";
    const auto run = testing::runAsUnprivileged([] {
        ::unsetenv("HOME");
        return Environment::liveHome().string();
    }, stranger);
    ASSERT_TRUE(run.output) << run.failure;
    EXPECT_EQ(*run.output, "/");  // which SafetyGuard::refusalFor turns down
}

TEST_F(LiveEnvironment, FindsTheFlutterCacheThroughALinkOnThePath) {
    testing::TempDir root;
    const path sdk = std::filesystem::canonical(root.path()) / "sdk";
    testing::writeText(sdk / "bin/flutter", "#!/bin/sh\n");
    std::filesystem::permissions(sdk / "bin/flutter", std::filesystem::perms::owner_all);
    testing::makeDirectory(sdk / "packages/flutter_tools");
    testing::makeDirectory(root / "on-path");
    std::filesystem::create_symlink(sdk / "bin/flutter", root / "on-path/flutter");
    set("PATH", (root / "on-path").string() + ":/usr/bin:/bin");

    EXPECT_EQ(Environment::findFlutterBinCache(), sdk / "bin/cache");
    EXPECT_EQ(Environment::live().flutterBinCache, sdk / "bin/cache");

    // Without the SDK's layout the tool found is not trusted.
    std::filesystem::remove_all(sdk / "packages");
    EXPECT_EQ(Environment::findFlutterBinCache(), std::nullopt);
    set("PATH", "/nonexistent");
    EXPECT_EQ(Environment::findFlutterBinCache(), std::nullopt);
}

}  // namespace
}  // namespace kelvo
