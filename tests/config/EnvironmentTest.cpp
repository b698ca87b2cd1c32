#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "kelvo/Config.h"
#include "kelvo/Environment.h"
#include "kelvo/Paths.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

using std::filesystem::path;
using testing::ScopedEnvironment;

const path home = "/home/dev";

std::optional<std::string> expanded(const std::string& text) {
    const auto result = Environment::expand(text, home);
    if (!result) return std::nullopt;
    return Paths::standardized(*result).string();
}

TEST(EnvironmentExpand, TildeSlashAndRelativeForms) {
    const std::vector<std::pair<std::string, std::optional<std::string>>> cases{
        {"~", "/home/dev"},
        {"~/dev", "/home/dev/dev"},
        {"~//etc", "/home/dev/etc"},  // a second slash stays under home
        {"work", "/home/dev/work"},
        {"/opt/x", "/opt/x"},
        {"~bob/projects", std::nullopt},
        {"", std::nullopt},
        {"   \n", std::nullopt},
        {std::string("~/\0x", 4), std::nullopt},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(expanded(text), expected) << ::testing::PrintToString(text);
    // No normalisation here: ".." is for the safety guard to judge.
    EXPECT_EQ(Environment::expand("~/a/../b", home), path("/home/dev/a/../b"));
}

TEST(EnvironmentExpand, EveryWholeBlankAroundThePathIsTrimmedAndNothingElse) {
    for (const std::string blank : {" ", "\t", "\n", "\v", "\f", "\r", "\xC2\x85", "\xC2\xA0", "\xE1\x9A\x80", "\xE2\x80\x80",
                                    "\xE2\x80\x8A", "\xE2\x80\xA8", "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F",
                                    "\xE3\x80\x80"}) {
        EXPECT_EQ(expanded(blank + blank + "~/dev" + blank), "/home/dev/dev") << ::testing::PrintToString(blank);
        EXPECT_EQ(expanded(blank), std::nullopt) << ::testing::PrintToString(blank);
    }
    // Neighbours of the blanks, and text cut inside a character, are kept as written.
    for (const std::string kept : {"\x08", "\x0E", "\xC2\x84", "\xC2\xA1", "\xE1\x9A\x81", "\xE2\x80\x8B", "\xE2\x80\xA7",
                                   "\xE2\x80\xAA", "\xE2\x80\xAE", "\xE2\x81\x9E", "\xE3\x80\x81", "\xE2\x80", "\xE2",
                                   "\xC2", "\xE1\x9A", "\xE3\x80"})
        EXPECT_EQ(expanded(kept + "x" + kept), "/home/dev/" + kept + "x" + kept) << ::testing::PrintToString(kept);
}

TEST(EnvironmentRoots, HomeItselfIsNeverAProjectRootButMayBeAnExclusion) {
    Environment environment;
    environment.home = home;
    environment.projectRoots = {"~", "~/", "a", "", "~/x/..", "/home/dev/.", "~nobody", "a", "/srv/code"};
    environment.extraExclusions = {"~", "", "/opt/x", "~nobody/x", " keep "};
    EXPECT_EQ(environment.resolvedProjectRoots(), (std::vector<path>{"/home/dev/a", "/home/dev/a", "/srv/code"}));
    EXPECT_EQ(environment.resolvedExtraExclusions(), (std::vector<path>{home, "/opt/x", "/home/dev/keep"}));
    // A home spelled with a decomposed accent is the same folder as the one-character spelling.
    environment.home = "/home/caf\xC3\xA9";
    environment.projectRoots = {"/home/cafe\xCC\x81", "/home/cafe\xCC\x81/a"};
    EXPECT_EQ(environment.resolvedProjectRoots(), std::vector<path>{"/home/cafe\xCC\x81/a"});
}

TEST(LiveEnvironment, ReadsHomeTemporaryFolderConfigurationAndLocationVariables) {
    testing::TempDir fakeHome;
    testing::TempDir fakeTemporary;
    Config config;
    config.projectRoots = {"~/code"};
    config.extraExclusions = {"~/code/keep"};
    config.keepRecentDays = 9;
    config.enabledFamilies = std::vector<std::string>{"docker", "bogus", "Python"};
    ASSERT_FALSE(config.save(fakeHome.path()));
    const ScopedEnvironment variables({{"HOME", fakeHome.path().string()},
                                       {"TMPDIR", fakeTemporary.path().string()},
                                       {"XDG_CACHE_HOME", "/c"},
                                       {"npm_config_cache", ""},
                                       {"PYENV_ROOT", ""}, {"RUSTUP_HOME", ""}, {"NVM_DIR", ""}, {"FNM_DIR", ""},
                                       {"KELVO_UNLISTED_DIR", "/u"}});
    const Environment environment = Environment::live();
    EXPECT_EQ(environment.home, fakeHome.path());
    EXPECT_EQ(environment.tmpDir, fakeTemporary.path());
    EXPECT_EQ(environment.projectRoots, config.projectRoots);
    EXPECT_EQ(environment.extraExclusions, config.extraExclusions);
    EXPECT_EQ(environment.keepRecentDays, 9);
    EXPECT_EQ(environment.enabledFamilies, (std::set<Family>{Family::docker}));
    EXPECT_EQ(environment.catalog, runningSystemProfile());
    EXPECT_EQ(Environment::live(CatalogProfile::macos).catalog, CatalogProfile::macos);
    EXPECT_EQ(environment.locationVariables,
              (std::map<std::string, std::string, std::less<>>{{"XDG_CACHE_HOME", "/c"}}));
}

TEST(LiveEnvironment, AnUnsetOrEmptyHomeOrTemporaryFolderFallsBackToTheSystemsOwn) {
    const struct passwd* entry = ::getpwuid(::getuid());
    ASSERT_NE(entry, nullptr);
    for (const std::optional<std::string>& value : {std::optional<std::string>(), std::optional<std::string>("")}) {
        const ScopedEnvironment variables({{"HOME", value}, {"TMPDIR", value}});
        const Environment environment = Environment::live();
        EXPECT_EQ(environment.home, path(entry->pw_dir));
        EXPECT_EQ(environment.tmpDir, path("/tmp"));
    }
}

TEST(LiveEnvironment, AHomeThatCannotBeFoundIsTheRootWhichNoCleanAccepts) {
    constexpr unsigned stranger = 64999;
    if (!testing::runningAsRoot()) GTEST_SKIP() << "only root can run as a user without a password entry";
    if (::getpwuid(stranger)) GTEST_SKIP() << "uid " << stranger << " has a password entry on this machine";
    const auto run = testing::runAsUnprivileged([] {
        ::unsetenv("HOME");
        return Environment::liveHome().string();
    }, stranger);
    ASSERT_TRUE(run.output) << run.failure;
    EXPECT_EQ(*run.output, "/");  // which the safety guard turns down
}

TEST(LiveEnvironment, FindsTheFlutterCacheThroughALinkOnThePathOnlyInAnSdkLayout) {
    testing::TempDir root;
    const path sdk = std::filesystem::canonical(root.path()) / "sdk";
    testing::writeText(sdk / "bin/flutter", "#!/bin/sh\n");
    std::filesystem::permissions(sdk / "bin/flutter", std::filesystem::perms::owner_all);
    testing::makeDirectory(sdk / "packages/flutter_tools");
    testing::makeDirectory(root / "on-path");
    std::filesystem::create_symlink(sdk / "bin/flutter", root / "on-path/flutter");
    const ScopedEnvironment variables({{"PATH", (root / "on-path").string() + ":/usr/bin:/bin"}});
    EXPECT_EQ(Environment::findFlutterBinCache(), sdk / "bin/cache");
    EXPECT_EQ(Environment::live().flutterBinCache, sdk / "bin/cache");
    std::filesystem::remove_all(sdk / "packages");
    EXPECT_EQ(Environment::findFlutterBinCache(), std::nullopt);
}

}  // namespace
}  // namespace kelvo
