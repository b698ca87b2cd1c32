#include <gtest/gtest.h>

#include <filesystem>

#include "kelvo/L10n.h"
#include "kelvo/SafetyGuard.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using std::filesystem::path;
using testing::TempDir;
using testing::makeDirectory;
using testing::writeFile;

std::vector<path> protectedPathsUnder(const path& home) {
    return {home / "Library/Developer/Xcode/Archives", home / "Library/Developer/Xcode/UserData",
            home / "Library/Developer/CoreSimulator/Devices", home / ".android/avd", home / ".flutter",
            home / ".swiftpm"};
}

// A home and a temporary folder of our own, with the guards of both domains built the way
// the services build them.
class SafetyGuardTest : public ::testing::Test {
protected:
    SafetyGuardTest() : home(makeDirectory(root / "home")), tmp(makeDirectory(root / "tmp")) {}

    SafetyGuard cleanGuard(std::vector<path> exclusions = {}) const {
        return {home, {home, tmp}, protectedPathsUnder(home), std::move(exclusions)};
    }
    SafetyGuard prepareGuard() const { return {home, {home, "/Applications"}, protectedPathsUnder(home), {}}; }

    TempDir root;
    path home;
    path tmp;
};

TEST_F(SafetyGuardTest, EmptyRootListRefusesEverything) {
    const SafetyGuard guard{home, {}, {}, {}};
    EXPECT_FALSE(guard.isDeletable(writeFile(home / "Library/Caches/x")));
    EXPECT_FALSE(guard.isDeletable(tmp / "y"));
    EXPECT_FALSE(guard.isDeletable(""));
}

TEST_F(SafetyGuardTest, HomeAndRootsThemselvesAreRefused) {
    const auto guard = cleanGuard();
    EXPECT_FALSE(guard.isDeletable(home));
    EXPECT_FALSE(guard.isDeletable(home / "."));
    EXPECT_FALSE(guard.isDeletable(path(home.string() + "/")));
    EXPECT_FALSE(guard.isDeletable(tmp));
    EXPECT_TRUE(guard.isDeletable(writeFile(tmp / "build.log")));
    EXPECT_TRUE(guard.isDeletable(home / "Library/Caches/com.example"));

    // The home is refused on its own account too, not only as a root.
    const SafetyGuard wide{home, {root.path()}, {}, {}};
    EXPECT_FALSE(wide.isDeletable(home));
    EXPECT_TRUE(wide.isDeletable(tmp));
}

TEST_F(SafetyGuardTest, RootEqualToThePathIsPassedOverForAnEnclosingRoot) {
    // Like the Flutter root inside the home: the inner root is deletable because the home holds it.
    const path inner = makeDirectory(home / "flutter/bin");
    const SafetyGuard guard{home, {inner, home}, {}, {}};
    EXPECT_TRUE(guard.isDeletable(inner));
    const SafetyGuard alone{home, {inner}, {}, {}};
    EXPECT_FALSE(alone.isDeletable(inner));
    EXPECT_TRUE(alone.isDeletable(inner / "cache"));
}

TEST_F(SafetyGuardTest, ApplicationsFolderBelongsToThePrepareDomainOnly) {
    EXPECT_TRUE(prepareGuard().isDeletable("/Applications/Foo.app"));
    EXPECT_FALSE(cleanGuard().isDeletable("/Applications/Foo.app"));
    EXPECT_FALSE(prepareGuard().isDeletable("/Applications"));
    EXPECT_FALSE(cleanGuard().isDeletable("/Applications"));
    // The prepare domain does not delete in the temporary folder.
    EXPECT_FALSE(prepareGuard().isDeletable(tmp / "x"));
}

TEST_F(SafetyGuardTest, InsideIsDecidedOnWholeComponents) {
    const path userA = makeDirectory(root / "a");
    makeDirectory(root / "ab");
    const SafetyGuard guard{userA, {userA}, {}, {}};
    EXPECT_FALSE(guard.isDeletable(writeFile(root / "ab/x")));
    EXPECT_FALSE(guard.isDeletable(root / "ab"));
    EXPECT_TRUE(guard.isDeletable(writeFile(userA / "x")));

    const auto clean = cleanGuard();
    EXPECT_FALSE(clean.isDeletable(home / ".flutter"));
    EXPECT_FALSE(clean.isDeletable(home / ".flutter/settings"));
    EXPECT_TRUE(clean.isDeletable(home / ".flutterx"));
    EXPECT_TRUE(clean.isDeletable(home / ".swiftpmcache"));
}

TEST_F(SafetyGuardTest, FoldersHoldingAProtectedPathAreRefused) {
    makeDirectory(home / "Library/Developer/CoreSimulator/Devices");
    makeDirectory(home / "Library/Developer/CoreSimulator/Caches");
    const auto guard = cleanGuard();
    EXPECT_FALSE(guard.isDeletable(home / "Library/Developer/CoreSimulator"));
    EXPECT_FALSE(guard.isDeletable(home / "Library/Developer"));
    EXPECT_FALSE(guard.isDeletable(home / "Library"));
    EXPECT_FALSE(guard.isDeletable(home / ".android"));
    EXPECT_FALSE(guard.isDeletable(home / "Library/Developer/CoreSimulator/Devices/ABC"));
    EXPECT_TRUE(guard.isDeletable(home / "Library/Developer/CoreSimulator/Caches"));
    EXPECT_TRUE(guard.isDeletable(home / "Library/Developer/Xcode/DerivedData"));
    EXPECT_TRUE(guard.isDeletable(home / ".android/cache"));
}

TEST_F(SafetyGuardTest, DotDotSpellingIsJudgedWhereItLeads) {
    makeDirectory(home / "Library/Caches");
    makeDirectory(home / "Library/Developer/Xcode/Archives");
    const auto guard = cleanGuard();
    EXPECT_FALSE(guard.isDeletable(home / "Library/Caches/../Developer/Xcode/Archives/x"));
    EXPECT_FALSE(guard.isDeletable(home / "Library/Caches/../../../outside"));
    EXPECT_FALSE(guard.isDeletable(home / "Library/Caches/.."));
    EXPECT_TRUE(guard.isDeletable(home / "Library/Developer/../Caches/./x"));
    // Missing components are judged as written after standardisation.
    EXPECT_FALSE(guard.isDeletable(home / "no/such/../../.flutter/x"));
    EXPECT_TRUE(guard.isDeletable(home / "no/such/thing"));
}

TEST_F(SafetyGuardTest, LinksAreJudgedByTheirTargets) {
    const auto guard = cleanGuard();
    std::filesystem::create_directory_symlink("/usr", home / "system-link");
    EXPECT_FALSE(guard.isDeletable(home / "system-link"));
    EXPECT_FALSE(guard.isDeletable(home / "system-link/lib"));

    // A link to a protected folder inside the home is refused, though its own path is fine.
    makeDirectory(home / "Library/Developer/Xcode/Archives");
    std::filesystem::create_directory_symlink(home / "Library/Developer/Xcode/Archives", home / "archives-link");
    EXPECT_FALSE(guard.isDeletable(home / "archives-link"));
    EXPECT_FALSE(guard.isDeletable(home / "archives-link/2024"));

    // A link that leads into the home is allowed, wherever it stands.
    const path cache = makeDirectory(home / "Library/Caches/tool");
    std::filesystem::create_directory_symlink(cache, root / "outside-link");
    EXPECT_TRUE(guard.isDeletable(root / "outside-link"));
}

TEST_F(SafetyGuardTest, ListsAreNormalisedLikeTheCandidate) {
    // Home, roots and protected paths given through a link compare equal to their targets.
    std::filesystem::create_directory_symlink(home, root / "home-link");
    const path linkedHome = root / "home-link";
    const SafetyGuard guard{linkedHome, {linkedHome}, protectedPathsUnder(linkedHome), {}};
    EXPECT_FALSE(guard.isDeletable(home));
    EXPECT_FALSE(guard.isDeletable(home / ".flutter/bin"));
    EXPECT_TRUE(guard.isDeletable(home / "Library/Caches/x"));

    // The lists are read afresh at each question: a link that changes is seen at once.
    const path target = makeDirectory(home / "Library/Caches/moving");
    std::filesystem::create_directory_symlink(target, home / "moving-link");
    EXPECT_TRUE(cleanGuard().isDeletable(home / "moving-link"));
    std::filesystem::remove(home / "moving-link");
    std::filesystem::create_directory_symlink("/etc", home / "moving-link");
    EXPECT_FALSE(cleanGuard().isDeletable(home / "moving-link"));
}

TEST_F(SafetyGuardTest, ExclusionsRefuseThemselvesTheirContentAndTheirParents) {
    const path keep = makeDirectory(home / "Projects/keep");
    makeDirectory(home / "Projects/other/build");
    const auto guard = cleanGuard({keep});
    EXPECT_FALSE(guard.isDeletable(keep));
    EXPECT_FALSE(guard.isDeletable(keep / "build"));
    EXPECT_FALSE(guard.isDeletable(home / "Projects"));
    EXPECT_TRUE(guard.isDeletable(home / "Projects/other/build"));
    EXPECT_TRUE(guard.isDeletable(home / "Projects/keeper"));
    EXPECT_TRUE(cleanGuard().isDeletable(home / "Projects"));
}

TEST_F(SafetyGuardTest, CanonicallyEquivalentSpellingsNameOnePlace) {
    // On disk the name is e + U+0301; the user typed the one-character é, or the reverse.
    const std::string composed = "caf\xC3\xA9";
    const std::string decomposed = "cafe\xCC\x81";
    const path project = makeDirectory(home / "Projects" / decomposed / "node_modules");
    EXPECT_FALSE(cleanGuard({home / "Projects" / composed}).isDeletable(project));
    EXPECT_FALSE(cleanGuard({home / "Projects" / composed / "node_modules"}).isDeletable(home / "Projects"));
    EXPECT_TRUE(cleanGuard({home / "Projects" / (composed + "2")}).isDeletable(project));

    // Protected paths, the home and the roots are compared the same way.
    const path spelledHome = makeDirectory(root / decomposed);
    const path typedHome = root / composed;
    const SafetyGuard guard{typedHome, {typedHome}, protectedPathsUnder(typedHome), {}};
    EXPECT_FALSE(guard.isDeletable(spelledHome));
    EXPECT_FALSE(guard.isDeletable(makeDirectory(spelledHome / ".android/avd")));
    EXPECT_TRUE(guard.isDeletable(makeDirectory(spelledHome / ".android/cache")));
}

TEST_F(SafetyGuardTest, TheFileSystemRootIsNeverARootAndAHomeThereAnchorsNothing) {
    const path cache = writeFile(home / "Library/Caches/x");
    EXPECT_FALSE((SafetyGuard{home, {"/"}, {}, {}}.isDeletable(cache)));
    std::filesystem::create_directory_symlink("/", root / "root-link");
    for (const path& unusable : {path("/"), root / "root-link", path(""), path("relative/home")}) {
        EXPECT_FALSE((SafetyGuard{unusable, {home, tmp}, {}, {}}.isDeletable(cache))) << unusable;
        EXPECT_FALSE((SafetyGuard{unusable, {home, tmp}, {}, {}}.isDeletable(tmp / "y"))) << unusable;
    }
}

TEST_F(SafetyGuardTest, AnEnvironmentWithoutAHomeOrTemporaryFolderOfItsOwnIsRefused) {
    std::filesystem::create_directory_symlink("/", root / "root-link");
    struct Case {
        path home, tmp;
        const char* key;  // nullptr: accepted
    };
    const Case cases[] = {
        {home, tmp, nullptr},
        {"/", tmp, "exec.refuse.home"},
        {root / "root-link", tmp, "exec.refuse.home"},
        {"", tmp, "exec.refuse.home"},
        {"home", tmp, "exec.refuse.home"},
        {home, "/", "exec.refuse.tmpDir"},
        {home, "//", "exec.refuse.tmpDir"},
        {home, root / "root-link/.", "exec.refuse.tmpDir"},
    };
    for (const auto& c : cases) {
        Environment env;
        env.home = c.home;
        env.tmpDir = c.tmp;
        const auto reason = SafetyGuard::refusalFor(env);
        if (!c.key) {
            EXPECT_FALSE(reason) << c.home << " " << c.tmp;
            continue;
        }
        const path& named = std::string(c.key) == "exec.refuse.home" ? c.home : c.tmp;
        EXPECT_EQ(reason, L10n::t(c.key, named.string())) << c.home << " " << c.tmp;
    }
}

}  // namespace
}  // namespace kelvo
