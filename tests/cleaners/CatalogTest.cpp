// Both catalog profiles by their properties: what every entry must satisfy, how the Linux
// locations follow the XDG folders and the tools' variables, what happens to a variable
// that points where nothing may be cleaned, and where projects are found in a home.
#include <gtest/gtest.h>

#include "kelvo/CleanerRegistry.h"
#include "catalog/CatalogCleaner.h"
#include "catalog/CommandCleaner.h"
#include "kelvo/Config.h"
#include "kelvo/L10n.h"
#include "catalog/PathCleaner.h"
#include "vocabulary/Paths.h"
#include "kelvo/PerProjectCleaner.h"
#include "kelvo/ProjectDiscovery.h"
#include "catalog/VersionedDirCleaner.h"
#include "support/ScopedEnvironment.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using Variables = std::map<std::string, std::string, std::less<>>;
constexpr auto linux = CatalogProfile::gnuLinux, macos = CatalogProfile::macos;

Environment environment(CatalogProfile profile, Variables variables = {}) {
    return {.home = "/home/dev", .tmpDir = "/tmp", .projectRoots = {"~/src"}, .catalog = profile,
            .locationVariables = std::move(variables)};
}

// Every folder an entry would measure or list: a path entry's paths, a versioned entry's parent.
std::vector<fs::path> placesOf(const Cleaner& cleaner) {
    std::vector<fs::path> places;
    if (const auto* path = dynamic_cast<const PathCleaner*>(&cleaner))
        for (const auto& relative : path->relativePaths()) places.push_back(Paths::appending(path->home(), relative));
    if (const auto* versioned = dynamic_cast<const VersionedDirCleaner*>(&cleaner)) places.push_back(versioned->parent());
    return places;
}

bool inside(const fs::path& path, const fs::path& root) {
    return Paths::isInside(Paths::standardized(path).string(), Paths::standardized(root).string());
}

TEST(Catalog, EveryEntryIsUniqueNamedInEveryLanguageRegenerableLooksOnlyInsideTheAllowedFoldersAndNeedsItsTool) {
    testing::TempDir emptyPath;
    const testing::ScopedEnvironment path({{"PATH", emptyPath.path().string()}});
    for (const auto profile : {macos, linux}) {
        auto withFlutter = environment(profile);
        withFlutter.flutterBinCache = "/opt/flutter/bin/cache";
        for (const auto& env : {environment(profile), withFlutter}) {
            SCOPED_TRACE(std::string(profile == macos ? "macos" : "linux") + (env.flutterBinCache ? " with flutter" : ""));
            const auto cleaners = CleanerRegistry::makeCleaners(env);
            const auto roots = CleanerRegistry::allowedRoots(env);
            const auto protectedPaths = CleanerRegistry::protectedPaths(env);
            const auto families = CleanerRegistry::familiesWithDetectors(env);
            ASSERT_FALSE(cleaners.empty());
            EXPECT_EQ(cleaners.back()->id(), "per-project");
            std::set<std::string> ids;
            for (const auto& cleaner : cleaners) {
                SCOPED_TRACE(cleaner->id());
                EXPECT_TRUE(ids.insert(cleaner->id()).second) << "duplicate id";
                EXPECT_NE(std::find(families.begin(), families.end(), cleaner->family()), families.end());
                if (cleaner->id() == "per-project") continue;
                for (const auto& [language, catalog] : L10n::bundle().catalogs)
                    EXPECT_TRUE(catalog.texts.contains("cleaner." + cleaner->id())) << language;
                const auto* entry = dynamic_cast<const CatalogCleaner*>(cleaner.get());
                ASSERT_TRUE(entry);
                // Only the Linux profile has entries of user data (the trash, container pruning).
                EXPECT_TRUE(profile != macos || entry->reversibility() == Reversibility::regenerable);
                // A versioned entry offers its parent's subfolders, so its parent may be a root itself.
                const bool offersChildren = dynamic_cast<const VersionedDirCleaner*>(cleaner.get()) != nullptr;
                for (const auto& place : placesOf(*cleaner)) {
                    EXPECT_TRUE(std::any_of(roots.begin(), roots.end(), [&](const auto& root) {
                        return inside(place, root) || (offersChildren && place == root);
                    })) << place;
                    for (const auto& kept : protectedPaths) EXPECT_FALSE(place == kept || inside(place, kept)) << place;
                    EXPECT_FALSE(profile == linux && inside(place, env.home / "Library")) << place;
                }
                if (const auto* command = dynamic_cast<const CommandCleaner*>(cleaner.get())) {
                    for (const char* elevation : {"sudo", "pkexec", "--system"})
                        EXPECT_EQ(command->command().find(elevation), std::string::npos) << command->command();
                    EXPECT_TRUE(command->scan().empty()) << "offered without its tool";
                }
            }
            for (const auto& kept : protectedPaths) EXPECT_TRUE(inside(kept, env.home)) << kept;
        }
    }
}

// Which of the two profiles tags caches by CACHEDIR.TAG is in scenarios/projects.txt and linux-home.txt.
TEST(LinuxCatalog, ProjectFoldersAreUniqueKeepTheMacOSKindsAndNeverUserState) {
    const auto macosCleaners = CleanerRegistry::makeCleaners(environment(macos));
    const auto cleaners = CleanerRegistry::makeCleaners(environment(linux));
    std::set<std::string> names;
    for (const auto& kind : dynamic_cast<const PerProjectCleaner&>(*cleaners.back()).specs())
        EXPECT_TRUE(names.insert(kind.dirName).second) << kind.dirName;
    for (const auto& kind : dynamic_cast<const PerProjectCleaner&>(*macosCleaners.back()).specs())
        EXPECT_TRUE(names.contains(kind.dirName)) << kind.dirName;
    // Settings, project links, notebook backups, service state, committed code and links.
    for (const char* kept : {".bundle", ".vercel", ".netlify", ".swiftpm", ".idea", ".ipynb_checkpoints", ".devenv",
                             "vendor", "result", "bazel-out"})
        EXPECT_FALSE(names.contains(kept)) << kept;
}

TEST(LinuxCatalog, LocationsFollowTheToolsVariableThenTheXdgFolderThenTheDefaultWhenMarksCanTellTheToolsData) {
    // offered false: the place is not among the entry's and a note names the entry.
    const std::vector<std::tuple<Variables, std::string, fs::path, bool>> cases{
        {{}, "pip-cache", "/home/dev/.cache/pip", true},
        {{{"XDG_CACHE_HOME", "/home/dev/xc"}}, "pip-cache", "/home/dev/xc/pip", true},
        {{{"XDG_CACHE_HOME", "/home/dev/xc"}, {"PIP_CACHE_DIR", "/home/dev/pc"}}, "pip-cache", "/home/dev/pc", true},
        {{{"PIP_CACHE_DIR", "relative/pip"}, {"XDG_CACHE_HOME", "~/xc"}}, "pip-cache", "/home/dev/.cache/pip", true},
        {{{"XDG_CACHE_HOME", "/home/dev/.cache/"}}, "ccache", "/home/dev/.cache/ccache", true},  // the default itself
        {{}, "rubygems", "/home/dev/.local/share/gem/ruby", true},
        {{{"GEM_HOME", "/home/dev/gems"}}, "rubygems", "/home/dev/.local/share/gem/ruby", false},  // replaced
        // No mark tells these tools' data from the user's files.
        {{{"GEM_HOME", "/home/dev/.gem"}}, "rubygems", "/home/dev/.gem/gems", false},
        {{{"XDG_STATE_HOME", "/home/dev/st"}}, "nvim-caches", "/home/dev/st/nvim/log", false},
        {{{"npm_config_cache", "/home/dev/npm"}}, "npm-cache", "/home/dev/npm/_cacache", true},
        {{{"GOPATH", "/home/dev/gp"}, {"GOMODCACHE", "/home/dev/mods"}}, "go-mod", "/home/dev/mods", true},
        {{{"ANDROID_HOME", "/home/dev/sdk"}}, "android-ndk", "/home/dev/sdk/ndk", true},
        // Naming a folder above the home (the home and a project folder: scenarios/truth.txt).
        {{{"PIP_CACHE_DIR", "/home"}}, "pip-cache", "/home", false},
    };
    for (const auto& [variables, id, place, offered] : cases) {
        SCOPED_TRACE(id + " at " + place.string());
        const auto env = environment(linux, variables);
        std::vector<fs::path> places;
        for (const auto& cleaner : CleanerRegistry::makeCleaners(env))
            if (cleaner->id() == id) places = placesOf(*cleaner);
        std::string notes;
        for (const auto& note : CleanerRegistry::build(env).notes) notes += note + "\n";
        EXPECT_EQ(notes.find(id) == std::string::npos, offered) << notes;
        EXPECT_EQ(std::find(places.begin(), places.end(), place) != places.end(), offered);
    }
}

TEST(Catalog, APlaceIsOfferedOnlyWithItsToolsMarksWithoutAWorkTreeAndNotThroughAVariableNamingTheUsersFolders) {
    // "~" stands for the home in the variables; the offered ids, none when empty.
    const std::vector<std::tuple<CatalogProfile, Variables, std::vector<std::string>, std::string, std::set<std::string>>> cases{
        {linux, {{"CARGO_HOME", "~/rust"}}, {"rust/git/checkouts/x"}, "cargo-git", {"cargo-git"}},
        {linux, {{"CARGO_HOME", "~/rust"}}, {"rust/git/src/main.rs"}, "cargo-git", {}},
        {linux, {{"CARGO_HOME", "~/rust"}}, {"rust/git/db/x", "rust/git/.git"}, "cargo-git", {}},
        {linux, {}, {".cache/pip/notes.txt"}, "pip-cache", {}},
        {linux, {}, {".npm/_cacache/index-v5/x"}, "npm-cache", {"npm-cache"}},
        {linux, {}, {".cache/go-build/README"}, "go-build", {}},
        {linux, {}, {".cache/go-build/README", ".cache/go-build/trim.txt"}, "go-build", {"go-build"}},
        {linux, {}, {".config/Code/Cache/x"}, "vscode-caches", {"vscode-caches"}},
        {linux, {}, {"Android/Sdk/ndk/26/source.properties", "Android/Sdk/ndk/2/a"}, "android-ndk", {"android-ndk/26"}},
        {linux, {}, {"Android/Sdk/ndk/.git", "Android/Sdk/ndk/26/source.properties"}, "android-ndk", {}},
        {macos, {}, {".cargo/registry/.git/HEAD", ".cargo/registry/cache/x"}, "cargo-registry", {}},
    };
    for (const auto& [profile, variables, files, id, offered] : cases) {
        SCOPED_TRACE(id + " with " + files.front());
        testing::TempDir home;
        auto env = environment(profile);
        env.home = home.path();
        for (const auto& [name, value] : variables) env.locationVariables[name] = home.path().native() + value.substr(1);
        for (const auto& file : files) testing::writeFile(home / file, 4096);
        std::set<std::string> ids;
        for (const auto& cleaner : CleanerRegistry::makeCleaners(env))
            if (cleaner->id() == id) ids = testing::idSetOf(cleaner->scan());
        EXPECT_EQ(ids, offered);
    }
}

TEST(ProjectDiscovery, FindsTheFoldersHoldingProjectsInATableOfHomes) {
    // Files home-relative ("/" at the end: a folder; "@" at the start: a link out); the folders
    // expected; the configured project folders (none: the defaults).
    const std::vector<std::tuple<std::vector<std::string>, std::vector<std::string>, std::vector<std::string>>> homes{
        {{"code/app/package.json", "code/group/lib/Cargo.toml", "src/github.com/x/tool/go.mod", "solo/pyproject.toml",
          "a/b/c/d/e/f/CMakeLists.txt", "work/api/Api.csproj", "work/api/sub/package.json"},
         {"code", "solo", "src/github.com/x", "work"}, {}},
        {{"repos/dotfiles/.git/", "notes/.hg/", "notes/x/"}, {"notes", "repos"}, {}},
        {{".local/share/p/package.json", ".config/x/Cargo.toml", "stuff/.hidden/p/package.json", "dev/.git"}, {"dev"}, {}},
        {{".cargo/registry/src/idx/serde/Cargo.toml", "go/pkg/mod/github.com/x/y@v1/go.mod", "go/src/me/p/go.mod",
          "node_modules/left-pad/package.json", "build/p/CMakeLists.txt", "@linked"}, {"go/src/me"}, {}},
        {{"Documents/report.txt", "Music/a/b/", "Pictures/"}, {}, {}}, {{"code/app/package.json"}, {}, {"~/elsewhere"}},
    };
    for (const auto& [files, folders, roots] : homes) {
        SCOPED_TRACE(files[0]);
        testing::TempDir root;
        const fs::path home = root / "home";
        testing::writeText(root / "outside/app/package.json", "");
        for (const auto& file : files)
            if (file.starts_with('@')) fs::create_directory_symlink(root / "outside", home / file.substr(1));
            else file.ends_with('/') ? (void)fs::create_directories(home / file) : (void)testing::writeText(home / file, "");
        Environment env = environment(linux);
        env.home = home;
        env.projectRoots = roots.empty() ? Config::defaults().projectRoots : roots;
        // The default folder first, then the found ones; a configured folder alone.
        std::vector<fs::path> found, walked{roots.empty() ? home / "workspace" : home / "elsewhere"};
        for (const auto& folder : folders) found.push_back(home / folder);
        walked.insert(walked.end(), found.begin(), found.end());
        const Environment completed = ProjectDiscovery::completed(env);
        EXPECT_EQ(completed.foundProjectRoots, roots.empty() ? std::optional(found) : std::nullopt);
        EXPECT_EQ(completed.resolvedProjectRoots(), walked);
        env.catalog = macos;
        EXPECT_FALSE(ProjectDiscovery::completed(env).foundProjectRoots);
    }
}

}  // namespace
}  // namespace kelvo
