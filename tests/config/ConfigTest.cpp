#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <tuple>

#include "kelvo/Config.h"
#include "kelvo/Environment.h"
#include "vocabulary/Paths.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

class ConfigFile : public ::testing::Test {
protected:
    void write(const std::string& text) { testing::writeText(Config::filePath(home.path()), text); }
    Config load() const { return Config::load(home.path()); }
    std::string saved() const {
        std::ifstream file(Config::filePath(home.path()), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    testing::TempDir home;
    const std::string others = R"("projectRoots": ["~/code"], "extraExclusions": [], "defaultLevel": "safe")";
};

TEST_F(ConfigFile, AnyInvalidPartGivesTheDefaultsWhole) {
    for (const std::string& text : std::vector<std::string>{
             "{" + others + R"(, "keepRecentDays": 7, "enabledFamilies": "docker"})",
             "{" + others + R"(, "keepRecentDays": 7, "enabledFamilies": [1]})",
             "{" + others + R"(, "keepRecentDays": 7, "checkMinimumVersion": "no"})",
             "{" + others + R"(, "keepRecentDays": 7, "moveToTrash": 1})",
             R"({"projectRoots": "~/code", "extraExclusions": [], "defaultLevel": "safe", "keepRecentDays": 7})",
             R"({"projectRoots": [], "extraExclusions": [], "defaultLevel": null, "keepRecentDays": 7})",
         }) {
        write(text);
        EXPECT_EQ(load(), Config::defaults()) << text;
    }
    // A missing key and a text cut short: the scenarios (command-line.txt). How the text fails to be
    // a configuration, which the tool's messages do not show:
    using enum ConfigProblem::Kind;
    for (const auto& [text, kind] : std::vector<std::pair<std::string, ConfigProblem::Kind>>{
             {R"({"projectRoots": ["~/co)", truncated}, {"{} x", notJSON}, {"[{}]", notAnObject}, {" \n", empty}}) {
        write(text);
        EXPECT_EQ(Config::load(home.path()).problem.value_or(ConfigProblem{}).kind, kind) << text;
    }
}

// The four required keys alone make a configuration (the scenarios, command-line.txt); a null list of
// families is no list.
TEST_F(ConfigFile, KeepRecentDaysIsAWholeNumberHoweverItIsWritten) {
    constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
    constexpr auto highest = std::numeric_limits<std::int64_t>::max();
    const std::vector<std::pair<std::string, std::optional<std::int64_t>>> cases{
        {"7", 7}, {"7.0", 7}, {"1e1", 10}, {"70E-1", 7}, {"-2.0", -2}, {"-0.0", 0},
        {"9223372036854775807", highest}, {"-9223372036854775808", lowest}, {"-9.223372036854775808e18", lowest},
        // Not whole numbers, or beyond the signed 64-bit range: the defaults, whole.
        {"7.5", std::nullopt}, {"\"7\"", std::nullopt}, {"1e-1", std::nullopt}, {"9.223372036854775808e18", std::nullopt},
        {"1e300", std::nullopt}, {"-1e19", std::nullopt}, {"18446744073709551615", std::nullopt}, {"true", std::nullopt}, {"null", std::nullopt},
    };
    for (const auto& [written, days] : cases) {
        write("{" + others + R"(, "enabledFamilies": null, "keepRecentDays": )" + written + "}");
        const Config config = load();
        EXPECT_EQ(config.keepRecentDays, days.value_or(Config::defaults().keepRecentDays)) << written;
        EXPECT_EQ(config.defaultLevel, days ? "safe" : Config::defaults().defaultLevel) << written;
    }
}

TEST(ConfigFileKind, OnlyARegularFileOfAtMostOneMebibyteIsRead) {
    const std::string valid = R"({"projectRoots": [], "extraExclusions": [], "defaultLevel": "safe", "keepRecentDays": 9})";
    const auto padded = [&](std::size_t size) { return valid + std::string(size - valid.size(), ' '); };
    // A link to a regular file is read: the scenarios (config.txt).
    using Make = std::function<void(const std::filesystem::path& file)>;
    const std::vector<std::tuple<std::string, Make, bool>> cases{
        {"exactly 1 MiB", [&](auto& file) { testing::writeText(file, padded(Config::maximumFileBytes)); }, true},
        {"1 MiB and a byte", [&](auto& file) { testing::writeText(file, padded(Config::maximumFileBytes + 1)); }, false},
        {"FIFO", [](auto& file) { ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0); }, false},
        {"link to /dev/zero", [](auto& file) { std::filesystem::create_symlink("/dev/zero", file); }, false},
        {"directory", [](auto& file) { std::filesystem::create_directories(file); }, false},
    };
    for (const auto& [what, make, readable] : cases) {
        testing::TempDir home;
        std::filesystem::create_directories(Config::filePath(home.path()).parent_path());
        make(Config::filePath(home.path()));
        const auto config = Config::load(home.path());
        EXPECT_EQ(config.problem.has_value(), !readable) << what;
        EXPECT_EQ(config == Config::defaults(), !readable) << what;
    }
}

TEST_F(ConfigFile, SavedValuesComeBackEqualAndOverwriteALongerFile) {
    EXPECT_FALSE(Config::exists(home.path()));
    EXPECT_FALSE(Config::load(home.path()).problem);  // no file is no problem
    write(std::string(4096, ' ') + "{}");
    Config config{{"~/code", "/opt/work space", "caf\u00e9/\"quoted\"\\back"}, {"~/code/keep"}, "aggressive", -2,
                  std::vector<std::string>{"python", "docker"}, false, false};
    ASSERT_FALSE(config.save(home.path()));
    EXPECT_TRUE(Config::exists(home.path()));
    EXPECT_EQ(load(), config);
    // Unchosen, only the leftovers of removed applications go to the trash; a choice is for every family.
    for (const auto& [choice, leftovers, caches] : std::vector<std::tuple<std::optional<bool>, bool, bool>>{
             {std::nullopt, true, false}, {false, false, false}, {true, true, true}}) {
        config.moveToTrash = choice;
        ASSERT_FALSE(config.save(home.path()));
        const auto env = Environment::fromConfig(home.path(), home.path(), load());
        EXPECT_EQ(env.movesToTrash(Family::appLeftovers), leftovers);
        EXPECT_EQ(env.movesToTrash(Family::python), caches);
    }

    const std::string saved = this->saved();
    const auto families = saved.find("\"enabledFamilies\"");
    ASSERT_NE(families, std::string::npos);
    EXPECT_LT(saved.find("\"defaultLevel\""), families);
    EXPECT_LT(families, saved.find("\"extraExclusions\""));
}

using std::filesystem::path;
using testing::ScopedEnvironment;
const path dev = "/home/dev";

std::optional<std::string> expanded(const std::string& text) {
    const auto result = Environment::expand(text, dev);
    if (!result) return std::nullopt;
    return Paths::standardized(*result).string();
}

TEST(EnvironmentExpand, TildeSlashAndRelativeFormsWithTheBlanksAroundThemTrimmed) {
    const std::vector<std::pair<std::string, std::optional<std::string>>> cases{
        {"~", "/home/dev"}, {"~/dev", "/home/dev/dev"},
        {"~//etc", "/home/dev/etc"},  // a second slash stays under home
        {"work", "/home/dev/work"}, {"/opt/x", "/opt/x"}, {"~bob/projects", std::nullopt}, {"", std::nullopt},
        {"   \n", std::nullopt}, {std::string("~/\0x", 4), std::nullopt},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(expanded(text), expected) << ::testing::PrintToString(text);
    // No normalisation here: ".." is for the safety guard to judge.
    EXPECT_EQ(Environment::expand("~/a/../b", dev), path("/home/dev/a/../b"));
    // Every whole blank around the path is trimmed, and nothing else.
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
    environment.home = dev;
    environment.projectRoots = {"~", "~/", "a", "", "~/x/..", "/home/dev/.", "~nobody", "a", "/srv/code"};
    environment.extraExclusions = {"~", "", "/opt/x", "~nobody/x", " keep "};
    EXPECT_EQ(environment.resolvedProjectRoots(), (std::vector<path>{"/home/dev/a", "/home/dev/a", "/srv/code"}));
    EXPECT_EQ(environment.resolvedExtraExclusions(), (std::vector<path>{dev, "/opt/x", "/home/dev/keep"}));
    // A home spelled with a decomposed accent is the same folder as the one-character spelling.
    environment.home = "/home/caf\xC3\xA9";
    environment.projectRoots = {"/home/cafe\xCC\x81", "/home/cafe\xCC\x81/a"};
    EXPECT_EQ(environment.resolvedProjectRoots(), std::vector<path>{"/home/cafe\xCC\x81/a"});
}

// Home, temporary folder and the file's other values: every scenario runs on them.
TEST(LiveEnvironment, TakesTheFilesKnownFamiliesAndTheListedLocationVariablesThatAreSet) {
    testing::TempDir fakeHome;
    ASSERT_FALSE((Config{.enabledFamilies = std::vector<std::string>{"docker", "bogus", "Python"}}).save(fakeHome.path()));
    const ScopedEnvironment variables({{"HOME", fakeHome.path().string()}, {"XDG_CACHE_HOME", "/c"}, {"npm_config_cache", ""},
                                       {"PYENV_ROOT", ""}, {"RUSTUP_HOME", ""}, {"NVM_DIR", ""}, {"FNM_DIR", ""},
                                       {"KELVO_UNLISTED_DIR", "/u"}});
    const Environment environment = Environment::live();
    EXPECT_EQ(environment.enabledFamilies, (std::set<Family>{Family::docker}));
    EXPECT_EQ(environment.locationVariables, (std::map<std::string, std::string, std::less<>>{{"XDG_CACHE_HOME", "/c"}}));
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

}  // namespace
}  // namespace kelvo
