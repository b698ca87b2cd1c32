#include <gtest/gtest.h>

#include "kelvo/SafetyGuard.h"
#include "support/ServiceGuards.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using fs::path;
using namespace testing;

// "é" as one character, and as e + U+0301 the way some file systems store it.
const std::string composed = "caf\xC3\xA9", decomposed = "cafe\xCC\x81";

struct SafetyGuardTest : ::testing::Test {
    TempDir root;
    path home = makeDirectory(root / "home"), tmp = makeDirectory(root / "tmp");
};

TEST_F(SafetyGuardTest, TheServicesGuardsAllowOnlyWhatLiesInsideTheirRootsAndHoldsNothingProtected) {
    writeFile(home / "Library/Caches/x");
    for (const std::string folder : {"Library/Developer/CoreSimulator/Devices", "Library/Developer/CoreSimulator/Caches",
                                     "Library/Developer/Xcode/Archives", "Projects/other/build", "../home2"})
        makeDirectory(home / folder);
    makeDirectory(home / "Projects" / decomposed / "node_modules");
    fs::create_directory_symlink("/usr", home / "system-link");
    fs::create_directory_symlink(home / "Library/Developer/Xcode/Archives", home / "archives-link");
    fs::create_directory_symlink(makeDirectory(home / "Library/Caches/tool"), root / "outside-link");
    Environment mac = environmentAt(home, tmp), linux = mac;
    mac.catalog = CatalogProfile::macos;
    linux.catalog = CatalogProfile::gnuLinux;
    const SafetyGuard clean = cleanGuard(mac), prepare = prepareGuard(mac), prepareOnLinux = prepareGuard(linux);
    const SafetyGuard excluding = cleanGuard(environmentAt(home, tmp, {"~/Projects/keep", "~/Projects/" + composed}));

    const struct { const SafetyGuard& guard; path candidate; bool deletable; } cases[] = {
        // The roots and the home themselves, however spelt.
        {clean, home, false}, {clean, home / ".", false}, {clean, path(home.string() + "/"), false},
        {clean, tmp, false}, {clean, "", false}, {clean, tmp / "build.log", true},
        {clean, home / "Library/Caches/com.example", true}, {clean, "relative/x", false},
        // /Applications belongs to the prepare domain on macOS, the temporary folder to the clean one.
        {prepare, "/Applications/Foo.app", true}, {clean, "/Applications/Foo.app", false},
        {prepareOnLinux, "/Applications/Foo.app", false}, {prepareOnLinux, home / ".pyenv/versions/3.9.1", true},
        {prepare, "/Applications", false}, {prepare, tmp / "x", false},
        // Inside is decided on whole components.
        {clean, root / "home2/x", false}, {clean, home / ".flutter", false}, {clean, home / ".flutter/settings", false},
        {clean, home / ".flutterx", true}, {clean, home / ".swiftpmcache", true},
        // Protected paths, what lies inside them and what holds them.
        {clean, home / "Library/Developer/CoreSimulator", false}, {clean, home / "Library", false},
        {clean, home / ".android", false}, {clean, home / "Library/Developer/CoreSimulator/Devices/ABC", false},
        {clean, home / "Library/Developer/CoreSimulator/Caches", true}, {clean, home / ".android/cache", true},
        {prepare, home / "Library/Developer/Xcode/Archives/x", false}, {prepare, home / ".android/avd", false},
        // ".." is judged where it leads; missing components as written after standardisation.
        {clean, home / "Library/Caches/../Developer/Xcode/Archives/x", false},
        {clean, home / "Library/Caches/../../../outside", false}, {clean, home / "Library/Caches/..", false},
        {clean, home / "Library/Developer/../Caches/./x", true}, {clean, home / "no/such/../../.flutter/x", false},
        {clean, home / "no/such/thing", true},
        // Links are judged by their targets.
        {clean, home / "system-link", false}, {clean, home / "system-link/lib", false},
        {clean, home / "archives-link", false}, {clean, home / "archives-link/2024", false},
        {clean, root / "outside-link", true},
        // Exclusions refuse themselves, their content and their parents; canonically
        // equivalent spellings name one place.
        {excluding, home / "Projects/keep", false}, {excluding, home / "Projects/keep/build", false},
        {excluding, home / "Projects", false}, {excluding, home / "Projects/other/build", true},
        {excluding, home / "Projects/keeper", true}, {clean, home / "Projects", true},
        {excluding, home / "Projects" / decomposed / "node_modules", false},
        {excluding, home / "Projects" / (decomposed + "2"), true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.guard.isDeletable(c.candidate), c.deletable)
            << c.candidate << (&c.guard == &prepare ? " (prepare)" : &c.guard == &excluding ? " (excluding)" : "");
}

TEST_F(SafetyGuardTest, HomeAndFlutterRootsAreComparedAsTheyResolve) {
    // A Flutter SDK inside the home: its bin folder is a root the home encloses, so deletable.
    auto env = environmentAt(home, tmp);
    env.flutterBinCache = makeDirectory(home / "flutter/bin/cache");
    EXPECT_TRUE(cleanGuard(env).isDeletable(home / "flutter/bin"));
    env.flutterBinCache = makeDirectory(root / "sdk/bin/cache");
    EXPECT_FALSE(cleanGuard(env).isDeletable(root / "sdk/bin"));
    EXPECT_TRUE(cleanGuard(env).isDeletable(root / "sdk/bin/cache") && prepareGuard(env).isDeletable(root / "sdk/bin/cache"));
    // A home inside another root is still refused on its own account.
    auto nested = environmentAt(makeDirectory(root / "sdk/bin/me"), tmp);
    nested.flutterBinCache = env.flutterBinCache;
    EXPECT_FALSE(cleanGuard(nested).isDeletable(root / "sdk/bin/me"));
    EXPECT_TRUE(cleanGuard(nested).isDeletable(root / "sdk/bin/other"));

    // A home given through a link, or in the other Unicode spelling, is the same folder.
    fs::create_directory_symlink(home, root / "home-link");
    const path spelledHome = makeDirectory(root / decomposed);
    for (const auto& [given, real] : {std::pair{root / "home-link", home}, std::pair{root / composed, spelledHome}}) {
        const SafetyGuard guard = cleanGuard(environmentAt(given, tmp));
        EXPECT_FALSE(guard.isDeletable(real)) << given;
        EXPECT_FALSE(guard.isDeletable(makeDirectory(real / ".android/avd"))) << given;
        EXPECT_TRUE(guard.isDeletable(makeDirectory(real / ".android/cache"))) << given;
    }

    // The lists are read afresh at each question: a link that changes is seen at once.
    const SafetyGuard guard = cleanGuard(environmentAt(home, tmp));
    fs::create_directory_symlink(makeDirectory(home / "Library/Caches/moving"), home / "moving-link");
    EXPECT_TRUE(guard.isDeletable(home / "moving-link"));
    fs::remove(home / "moving-link");
    fs::create_directory_symlink("/etc", home / "moving-link");
    EXPECT_FALSE(guard.isDeletable(home / "moving-link"));
}

TEST_F(SafetyGuardTest, AHomeOrTemporaryFolderAtTheRootAnchorsNothing) {
    const path cache = writeFile(home / "Library/Caches/x");
    fs::create_directory_symlink("/", root / "root-link");
    using enum Reason::Code;
    const struct { path home, tmp; std::optional<Reason::Code> code; } cases[] = {  // no code: accepted
        {home, tmp, std::nullopt}, {"/", tmp, homeUnanchored}, {root / "root-link", tmp, homeUnanchored},
        {"", tmp, homeUnanchored}, {"home", tmp, homeUnanchored}, {home, "/", tmpDirUnanchored},
        {home, "//", tmpDirUnanchored}, {home, root / "root-link/.", tmpDirUnanchored},
    };
    for (const auto& c : cases) {
        const auto env = environmentAt(c.home, c.tmp);
        const bool homeRefused = c.code == homeUnanchored;
        const auto refusal = c.code ? std::optional(Reason{*c.code, (homeRefused ? c.home : c.tmp).string()}) : std::nullopt;
        EXPECT_EQ(SafetyGuard::refusalFor(env), refusal) << c.home << " " << c.tmp;
        // A home that anchors nothing makes the guard refuse everything, even inside another root.
        if (homeRefused) {
            EXPECT_FALSE(cleanGuard(env).isDeletable(cache) || cleanGuard(env).isDeletable(tmp / "y")) << c.home;
        }
    }
    // "/" is never a root, even when the temporary folder says so.
    EXPECT_FALSE(cleanGuard(environmentAt(home, "/")).isDeletable("/etc/passwd"));
}

}  // namespace
}  // namespace kelvo
