#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "CatalogTable.h"
#include "kelvo/CleanerRegistry.h"
#include "kelvo/CommandCleaner.h"
#include "kelvo/L10n.h"
#include "kelvo/PathCleaner.h"
#include "kelvo/PerProjectCleaner.h"
#include "kelvo/VersionedDirCleaner.h"
#include "kelvo/platform/Process.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using testing::EntryKind;
using testing::expectedArtifactSpecs;
using testing::expectedCatalog;

Environment environment(bool withFlutter) {
    Environment env;
    env.home = "/home/dev";
    env.tmpDir = "/var/tmp/dev-scratch";
    env.projectRoots = {"~/workspace", "~", "/srv/code", "clients"};
    env.keepRecentDays = 9;
    env.catalog = CatalogProfile::macos;
    if (withFlutter) env.flutterBinCache = fs::path("/opt/flutter/bin/cache");
    return env;
}

std::vector<std::string> idsOf(const CleanerList& cleaners) {
    std::vector<std::string> ids;
    for (const auto& cleaner : cleaners) ids.push_back(cleaner->id());
    return ids;
}

std::size_t indexOf(const CleanerList& cleaners, const std::string& id) {
    const auto ids = idsOf(cleaners);
    return static_cast<std::size_t>(std::find(ids.begin(), ids.end(), id) - ids.begin());
}

// The display text the current language's catalog holds for a key, if any.
std::optional<std::string> catalogText(const std::string& key) {
    const auto& catalogs = L10n::bundle().catalogs;
    const auto catalog = catalogs.find(L10n::currentLanguage());
    if (catalog == catalogs.end()) return std::nullopt;
    const auto text = catalog->second.texts.find(key);
    if (text == catalog->second.texts.end()) return std::nullopt;
    return text->second;
}

TEST(CleanerCatalog, HasTheFlutterEntryOnlyWhenACacheIsKnown) {
    const auto with = CleanerRegistry::makeCleaners(environment(true));
    const auto without = CleanerRegistry::makeCleaners(environment(false));
    ASSERT_EQ(with.size(), 103u);
    ASSERT_EQ(without.size(), 102u);
    for (const auto* list : {&with, &without}) {
        EXPECT_EQ(list->front()->id(), "derived-data");
        EXPECT_EQ(list->back()->id(), "per-project");
    }
    EXPECT_EQ(indexOf(without, "flutter-sdk-cache"), without.size());
    EXPECT_EQ(indexOf(without, "gradle-caches"), indexOf(without, "dart-analysis-cache") + 1);
    EXPECT_EQ(indexOf(with, "flutter-sdk-cache"), 16u);
    EXPECT_EQ(indexOf(with, "gradle-caches"), 17u);

    // Apart from the Flutter entry, both lists are the same entries in the same order.
    auto withIds = idsOf(with);
    withIds.erase(withIds.begin() + 16);
    EXPECT_EQ(withIds, idsOf(without));
}

TEST(CleanerCatalog, FlutterEntryNamesTheCacheFromTheFileSystemRoot) {
    const auto cleaners = CleanerRegistry::makeCleaners(environment(true));
    const auto* flutter = dynamic_cast<const PathCleaner*>(cleaners[16].get());
    ASSERT_NE(flutter, nullptr);
    EXPECT_EQ(flutter->id(), "flutter-sdk-cache");
    EXPECT_EQ(flutter->family(), Family::flutterDart);
    EXPECT_EQ(flutter->home(), fs::path("/"));
    EXPECT_EQ(flutter->relativePaths(), std::vector<std::string>{"opt/flutter/bin/cache"});
    EXPECT_EQ(flutter->level(), Level::aggressive);
    EXPECT_EQ(flutter->reversibility(), Reversibility::regenerable);
    EXPECT_EQ(flutter->regenCost(), RegenCost::redownload);
}

TEST(CleanerCatalog, EveryEntryMatchesTheWrittenTable) {
    const auto env = environment(false);
    const auto cleaners = CleanerRegistry::makeCleaners(env);
    const auto& expected = expectedCatalog();
    ASSERT_EQ(cleaners.size(), expected.size() + 1);  // + the per-project entry
    for (std::size_t index = 0; index < expected.size(); ++index) {
        const auto& row = expected[index];
        const auto* cleaner = cleaners[index].get();
        SCOPED_TRACE(row.id);
        EXPECT_EQ(cleaner->id(), row.id);
        EXPECT_EQ(cleaner->family(), row.family);
        const auto text = catalogText("cleaner." + row.id);
        ASSERT_TRUE(text.has_value()) << "no display text";
        EXPECT_EQ(cleaner->name(), *text);
        switch (row.kind) {
            case EntryKind::path: {
                const auto* path = dynamic_cast<const PathCleaner*>(cleaner);
                ASSERT_NE(path, nullptr) << "not a path cleaner";
                EXPECT_EQ(path->home(), env.home);
                EXPECT_EQ(path->relativePaths(), row.places);
                EXPECT_EQ(path->level(), row.level);
                EXPECT_EQ(path->regenCost(), row.regenCost);
                EXPECT_EQ(path->reversibility(), Reversibility::regenerable);
                break;
            }
            case EntryKind::command: {
                const auto* command = dynamic_cast<const CommandCleaner*>(cleaner);
                ASSERT_NE(command, nullptr) << "not a command cleaner";
                EXPECT_EQ(command->command(), row.places.at(0));
                EXPECT_EQ(command->estimateBytes(), 0);
                EXPECT_TRUE(static_cast<bool>(command->toolAvailable()));
                EXPECT_EQ(command->level(), row.level);
                EXPECT_EQ(command->regenCost(), row.regenCost);
                EXPECT_EQ(command->reversibility(), Reversibility::regenerable);
                break;
            }
            case EntryKind::versioned: {
                const auto* versioned = dynamic_cast<const VersionedDirCleaner*>(cleaner);
                ASSERT_NE(versioned, nullptr) << "not a versioned cleaner";
                const fs::path parent = row.places.at(0).empty() ? env.tmpDir : env.home / row.places.at(0);
                EXPECT_EQ(versioned->parent(), parent);
                EXPECT_EQ(versioned->prefixes(), std::vector<std::string>(row.places.begin() + 1, row.places.end()));
                EXPECT_EQ(versioned->level(), row.level);
                EXPECT_EQ(versioned->regenCost(), row.regenCost);
                EXPECT_EQ(versioned->reversibility(), Reversibility::regenerable);
                break;
            }
        }
    }
}

TEST(CleanerCatalog, PerProjectEntryTakesTheEnvironmentAndTheArtefactTable) {
    const auto env = environment(false);
    const auto before = std::chrono::system_clock::now();
    const auto cleaners = CleanerRegistry::makeCleaners(env);
    const auto after = std::chrono::system_clock::now();
    const auto* perProject = dynamic_cast<const PerProjectCleaner*>(cleaners.back().get());
    ASSERT_NE(perProject, nullptr);
    EXPECT_EQ(perProject->id(), "per-project");
    EXPECT_EQ(perProject->name(), "Artefactos por proyecto");
    EXPECT_EQ(perProject->family(), Family::perProject);
    EXPECT_EQ(perProject->roots(),
              (std::vector<fs::path>{"/home/dev/workspace", "/srv/code", "/home/dev/clients"}));
    EXPECT_EQ(perProject->keepRecentDays(), 9);
    EXPECT_GE(perProject->now(), before);
    EXPECT_LE(perProject->now(), after);

    const auto& specs = perProject->specs();
    const auto& expected = expectedArtifactSpecs();
    ASSERT_EQ(specs.size(), expected.size());
    for (std::size_t index = 0; index < expected.size(); ++index) {
        SCOPED_TRACE(expected[index].dirName);
        EXPECT_EQ(specs[index].dirName, expected[index].dirName);
        EXPECT_EQ(specs[index].level, expected[index].level);
        EXPECT_EQ(specs[index].reversibility, Reversibility::regenerable);
        EXPECT_EQ(specs[index].regenCost, expected[index].regenCost);
        EXPECT_EQ(specs[index].requiresSibling, expected[index].requiresSibling);
    }
}

// Run by PerProjectNameIsFixedInEveryLanguage in a child process per language (the language
// is chosen once per process); on its own it checks the current language.
TEST(CleanerCatalogLanguage, PerProjectNameIsFixedWhileOthersAreLookedUp) {
    if (const char* wanted = std::getenv("KELVO_TEST_EXPECT_LANGUAGE")) {
        ASSERT_EQ(L10n::currentLanguage(), wanted);
    }
    const auto cleaners = CleanerRegistry::makeCleaners(environment(false));
    EXPECT_EQ(cleaners.back()->name(), "Artefactos por proyecto");
    const auto text = catalogText("cleaner.derived-data");
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(cleaners.front()->name(), *text);
}

TEST(CleanerCatalog, PerProjectNameIsFixedInEveryLanguage) {
    const auto self = fs::read_symlink("/proc/self/exe");
    ASSERT_FALSE(L10n::bundle().catalogs.empty());
    for (const auto& [language, catalog] : L10n::bundle().catalogs) {
        SCOPED_TRACE(language);
        const std::string command = "env LC_ALL=" + language + " KELVO_TEST_EXPECT_LANGUAGE=" + language + " '" +
                                    self.string() +
                                    "' --gtest_filter=CleanerCatalogLanguage.PerProjectNameIsFixedWhileOthersAreLookedUp"
                                    " >/dev/null 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0);
    }
}

TEST(CleanerCatalog, CommandEntriesNeedTheirTools) {
    testing::TempDir emptyPath;
    const char* saved = std::getenv("PATH");
    const std::string original = saved ? saved : "";
    ::setenv("PATH", emptyPath.path().c_str(), 1);
    std::size_t commandTargets = 0;
    for (const auto& cleaner : CleanerRegistry::makeCleaners(environment(false)))
        if (dynamic_cast<const CommandCleaner*>(cleaner.get())) commandTargets += cleaner->scan().size();
    if (saved) ::setenv("PATH", original.c_str(), 1);
    else ::unsetenv("PATH");
    EXPECT_EQ(commandTargets, 0u);
}

TEST(CleanerCatalog, ProtectedPathsAreTheSixUnderHome) {
    EXPECT_EQ(CleanerRegistry::protectedPaths(environment(false)),
              (std::vector<fs::path>{"/home/dev/Library/Developer/Xcode/Archives",
                                     "/home/dev/Library/Developer/Xcode/UserData",
                                     "/home/dev/Library/Developer/CoreSimulator/Devices", "/home/dev/.android/avd",
                                     "/home/dev/.flutter", "/home/dev/.swiftpm"}));
}

}  // namespace
}  // namespace kelvo
