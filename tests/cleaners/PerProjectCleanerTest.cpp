#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

#include "kelvo/CleanerRegistry.h"
#include "kelvo/PerProjectCleaner.h"
#include "kelvo/PlanSelection.h"
#include "support/DeepTree.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using Clock = PerProjectCleaner::Clock;
using Spec = PerProjectCleaner::ArtifactSpec;
using testing::TempDir;
using testing::allocatedBytesBelow;
using testing::makeDirectory;
using testing::setModificationTime;
using testing::writeFile;
using namespace std::chrono_literals;
using testing::idSetOf;
using testing::writeText;

constexpr auto day = std::chrono::seconds(86400);

// The catalog's own cleaner, so the rules are checked with its patterns.
PerProjectCleaner catalogCleaner(CatalogProfile profile = CatalogProfile::macos) {
    Environment env;
    env.home = "/nonexistent-home";
    env.tmpDir = "/nonexistent-tmp";
    env.catalog = profile;
    const auto cleaners = CleanerRegistry::makeCleaners(env);
    const auto* perProject = dynamic_cast<const PerProjectCleaner*>(cleaners.back().get());
    if (!perProject) throw std::logic_error("the catalog's last entry is not the per-project cleaner");
    return *perProject;
}
std::vector<Spec> catalogSpecs() { return catalogCleaner().specs(); }

Spec simpleSpec(std::string dirName, std::vector<std::string> requiresSibling = {}) {
    return {std::move(dirName), Level::safe, Reversibility::regenerable, RegenCost::rebuild, std::move(requiresSibling)};
}

// Recency plays no part unless a test asks for it: every folder made before this is old enough.
PerProjectCleaner makeCleaner(std::vector<fs::path> roots, std::vector<Spec> specs = catalogSpecs(),
                              std::int64_t keepRecentDays = 0, Clock::time_point now = Clock::now() + 1s) {
    return PerProjectCleaner(std::move(roots), std::move(specs), keepRecentDays, now);
}

const CleanTarget* findTarget(const std::vector<CleanTarget>& targets, const std::string& id) {
    const auto found = std::find_if(targets.begin(), targets.end(), [&](const auto& target) { return target.id == id; });
    return found == targets.end() ? nullptr : &*found;
}

std::set<fs::path> pathsOf(const std::vector<CleanTarget>& targets, const std::string& id) {
    const auto* target = findTarget(targets, id);
    if (!target) return {};
    const auto& list = target->kind.pathList();
    return {list.begin(), list.end()};
}


TEST(PerProjectCleaner, FoldersOfOneKindAcrossRootsAndProjectsMakeOneTargetInWalkOrder) {
    TempDir temp;
    writeFile(temp / "first/app1/node_modules/left-pad/index.js", 5000);
    writeFile(temp / "second/app2/node_modules/react/index.js", 12000);
    writeFile(temp / "second/app2/src/main.js", 3000);
    writeFile(temp / "second/tool/__pycache__/m.pyc", 4096);
    const auto targets = makeCleaner({temp / "first", temp / "missing", temp / "second"}).scan();
    EXPECT_EQ(idSetOf(targets), (std::set<std::string>{"per-project-node_modules", "per-project-__pycache__"}));
    const auto* modules = findTarget(targets, "per-project-node_modules");
    ASSERT_NE(modules, nullptr);
    EXPECT_EQ(modules->kind.pathList(),
              (std::vector<fs::path>{temp / "first/app1/node_modules", temp / "second/app2/node_modules"}));
    EXPECT_NE(modules->name.find("node_modules"), std::string::npos) << modules->name;
    EXPECT_NE(modules->name.find("(2)"), std::string::npos) << modules->name;
    EXPECT_EQ(modules->sizeBytes, allocatedBytesBelow(temp / "first/app1/node_modules") +
                                      allocatedBytesBelow(temp / "second/app2/node_modules"));
    EXPECT_EQ(modules->family, Family::perProject);
    EXPECT_EQ(modules->level, Level::moderate);
    EXPECT_EQ(modules->regenCost, RegenCost::redownload);
    const auto* pycache = findTarget(targets, "per-project-__pycache__");
    ASSERT_NE(pycache, nullptr);
    EXPECT_EQ(pycache->level, Level::safe);
    EXPECT_EQ(pycache->regenCost, RegenCost::rebuild);
}

TEST(PerProjectCleaner, ArtefactFoldersAreNeverEnteredAcceptedOrNot) {
    TempDir temp;
    // Nested node_modules: only the outer one, whose size includes the inner one.
    writeFile(temp / "root/app/node_modules/a/node_modules/b/index.js", 8000);
    // A rejected candidate (a "bin" without a .NET project beside it) hides what it holds.
    writeFile(temp / "root/scripts/bin/__pycache__/tool.pyc", 4096);
    // So does one rejected as recent.
    writeFile(temp / "root/android/build/__pycache__/gen.pyc", 4096);
    const auto now = Clock::now();
    setModificationTime(temp / "root/scripts/bin/__pycache__", now - 30 * day);
    setModificationTime(temp / "root/android/build/__pycache__", now - 30 * day);
    setModificationTime(temp / "root/app/node_modules", now - 30 * day);
    setModificationTime(temp / "root/android/build", now - 1 * day);
    const auto targets = makeCleaner({temp / "root"}, catalogSpecs(), 7, now).scan();
    EXPECT_EQ(idSetOf(targets), std::set<std::string>{"per-project-node_modules"});
    EXPECT_EQ(pathsOf(targets, "per-project-node_modules"), std::set<fs::path>{temp / "root/app/node_modules"});
    EXPECT_EQ(findTarget(targets, "per-project-node_modules")->sizeBytes,
              allocatedBytesBelow(temp / "root/app/node_modules"));
}

TEST(PerProjectCleaner, CatalogSiblingRulesDecideWhichFoldersBelongToTheirProjectKind) {
    TempDir temp;
    const fs::path root = temp / "root";
    const auto project = [&](const std::string& name, std::vector<std::string> siblings,
                             std::vector<std::string> artefacts) {
        for (const auto& sibling : siblings) {
            if (sibling.back() == '/') makeDirectory(root / name / sibling);
            else writeFile(root / name / sibling, 10);
        }
        for (const auto& artefact : artefacts) writeFile(root / name / artefact / "output.dat", 4096);
    };
    project("csharp", {"App.csproj"}, {"bin", "obj"});
    project("fsharp", {"Lib.fsproj"}, {"bin"});
    project("vb", {"Old.vbproj"}, {"obj"});
    project("solution", {"All.sln"}, {"bin"});
    project("scripts", {"README.md"}, {"bin", "obj"});
    project("shouting", {"APP.CSPROJ"}, {"bin"});  // case-sensitive
    project("nuxt", {"nuxt.config.mjs"}, {".output"});
    project("not-nuxt", {"nuxt.config.json", "next.config.js"}, {".output"});
    project("gatsby", {"gatsby-config.cjs"}, {".cache"});
    project("plain-cache", {"package.json"}, {".cache"});
    project("elixir", {"mix.exs"}, {"_build"});
    project("erlang", {"rebar.config"}, {"_build"});
    project("unity", {"Assets/", "ProjectSettings/"}, {"Library", "Temp"});
    project("half-unity", {"Assets/"}, {"Library", "Temp"});
    project("unreal", {"Game.uproject"}, {"Intermediate", "DerivedDataCache"});
    project("not-unreal", {"uproject", "Game.uproject.bak"}, {"Intermediate"});

    const auto targets = makeCleaner({root}).scan();
    EXPECT_EQ(pathsOf(targets, "per-project-bin"),
              (std::set<fs::path>{root / "csharp/bin", root / "fsharp/bin", root / "solution/bin"}));
    EXPECT_EQ(pathsOf(targets, "per-project-obj"), (std::set<fs::path>{root / "csharp/obj", root / "vb/obj"}));
    EXPECT_EQ(pathsOf(targets, "per-project-.output"), std::set<fs::path>{root / "nuxt/.output"});
    EXPECT_EQ(pathsOf(targets, "per-project-.cache"), std::set<fs::path>{root / "gatsby/.cache"});
    EXPECT_EQ(pathsOf(targets, "per-project-_build"), (std::set<fs::path>{root / "elixir/_build", root / "erlang/_build"}));
    EXPECT_EQ(pathsOf(targets, "per-project-Library"), std::set<fs::path>{root / "unity/Library"});
    EXPECT_EQ(pathsOf(targets, "per-project-Temp"), std::set<fs::path>{root / "unity/Temp"});
    EXPECT_EQ(pathsOf(targets, "per-project-Intermediate"), std::set<fs::path>{root / "unreal/Intermediate"});
    EXPECT_EQ(pathsOf(targets, "per-project-DerivedDataCache"), std::set<fs::path>{root / "unreal/DerivedDataCache"});
    const auto* library = findTarget(targets, "per-project-Library");
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(library->level, Level::aggressive);
}

TEST(PerProjectCleaner, SiblingPatternsAreLiteralExceptForALeadingStarDot) {
    TempDir temp;
    const fs::path root = temp / "root";
    const std::vector<Spec> specs{
        simpleSpec("out", {"lit*eral|*.cfg"}),
        simpleSpec("never", {"|"}),
        simpleSpec("padded", {"||marker||"}),
        simpleSpec("self", {"self"}),
    };
    writeFile(root / "star-in-name/lit*eral", 1);
    writeFile(root / "star-in-name/out/x", 4096);
    writeFile(root / "star-as-wildcard/literal", 1);  // "*" inside an alternative is no wildcard
    writeFile(root / "star-as-wildcard/out/x", 4096);
    writeFile(root / "suffix/build.cfg", 1);
    writeFile(root / "suffix/out/x", 4096);
    writeFile(root / "no-dot/cfg", 1);  // "*.cfg" needs the dot
    writeFile(root / "no-dot/out/x", 4096);
    writeFile(root / "bars/|", 1);  // a pattern of empty alternatives matches nothing, not even "|"
    writeFile(root / "bars/never/x", 4096);
    writeFile(root / "marked/marker", 1);
    writeFile(root / "marked/padded/x", 4096);
    writeFile(root / "alone/self/x", 4096);  // the candidate is one of the names beside itself
    const auto targets = makeCleaner({root}, specs).scan();
    EXPECT_EQ(pathsOf(targets, "per-project-out"), (std::set<fs::path>{root / "star-in-name/out", root / "suffix/out"}));
    EXPECT_EQ(findTarget(targets, "per-project-never"), nullptr);
    EXPECT_EQ(pathsOf(targets, "per-project-padded"), std::set<fs::path>{root / "marked/padded"});
    EXPECT_EQ(pathsOf(targets, "per-project-self"), std::set<fs::path>{root / "alone/self"});
}

TEST(PerProjectCleaner, BuildFoldersHoldingReleaseOutputsAndInstalledPythonPackagesAreKept) {
    TempDir temp;
    const fs::path root = temp / "root";
    const fs::path outside = temp / "outside";
    writeFile(root / "deep/build/outputs/bundle/release/app-release.aab", 4096);
    writeFile(root / "upper/build/Archives/2024/App.XCARCHIVE/Info.plist", 4096);
    writeFile(outside / "signed/App.aab", 4096);
    writeFile(root / "link-to-file/build/intermediates/x.dex", 4096);
    fs::create_symlink(outside / "signed/App.aab", root / "link-to-file/build/latest");
    writeFile(outside / "exports/2024/sub/App.xcarchive/Info.plist", 4096);
    writeFile(root / "link-to-folder/build/intermediates/x.dex", 4096);
    fs::create_directory_symlink(outside / "exports", root / "link-to-folder/build/exports");
    // A link found while searching a link's target is not followed again.
    writeFile(outside / "far/z.aab", 4096);
    makeDirectory(outside / "hop");
    fs::create_directory_symlink(outside / "far", outside / "hop/next");
    writeFile(root / "two-hops/build/intermediates/x.dex", 4096);
    fs::create_directory_symlink(outside / "hop", root / "two-hops/build/out");
    writeFile(root / "plain/build/classes/Main.class", 4096);
    writeFile(root / "lookalike/build/file.aabb", 4096);
    // Only folders named "build" are searched.
    writeFile(root / "web/node_modules/pkg/bundle.aab", 4096);

    // Installed Python packages are source, not build output.
    writeFile(root / "api/pyproject.toml", 100);
    const fs::path venv = root / "api/env";  // `python3 -m venv env`
    writeFile(venv / "pyvenv.cfg", 100);
    const fs::path sitePackages = venv / "lib/python3.11/site-packages";
    writeFile(sitePackages / "pip/_internal/operations/build/__init__.py", 4096);
    writeFile(sitePackages / "pip/_internal/operations/build/wheel.py", 4096);
    writeFile(sitePackages / "pip/__pycache__/__init__.cpython-311.pyc", 4096);
    writeFile(venv / "lib/python3.11/node_modules/x.js", 4096);  // a venv's own folders are not walked either
    // A system interpreter's packages, outside any environment.
    writeFile(root / "sysroot/usr/lib/python3/dist-packages/tool/build/helpers.py", 4096);
    writeFile(root / "vendor/site-packages/bindings/.build/debug.o", 4096);
    // A project's own package that happens to be named "build", and a real build output.
    writeFile(root / "api/src/build/__init__.py", 100);
    writeFile(root / "api/src/build/steps.py", 4096);
    writeFile(root / "api/build/lib/api/__init__.py", 4096);  // a package inside the output is still output
    writeFile(root / "api/__pycache__/main.cpython-311.pyc", 4096);

    const auto targets = makeCleaner({root}).scan();
    EXPECT_EQ(idSetOf(targets), (std::set<std::string>{"per-project-build", "per-project-__pycache__", "per-project-node_modules"}));
    EXPECT_EQ(pathsOf(targets, "per-project-build"), (std::set<fs::path>{root / "two-hops/build", root / "plain/build",
                                                                         root / "lookalike/build", root / "api/build"}));
    EXPECT_EQ(pathsOf(targets, "per-project-node_modules"), std::set<fs::path>{root / "web/node_modules"});
    EXPECT_EQ(pathsOf(targets, "per-project-__pycache__"),
              (std::set<fs::path>{sitePackages / "pip/__pycache__", root / "api/__pycache__"}));
}

// Runs `work` on a thread whose stack is `bytes` long: a walk that went one call deeper
// per folder level would overflow it long before the bottom of a chain of thousands.
void runOnStackOf(std::size_t bytes, std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, bytes);
    pthread_t thread;
    const auto start = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(PerProjectCleaner, ChainsOfThousandsOfFoldersAreWalkedToTheBottomOnASmallStack) {
    TempDir temp;
    const fs::path root = temp / "root";
    const fs::path bottom = testing::makeFolderChain(root / "app", 2100);
    testing::writeDeepFile(bottom / "node_modules/pkg/index.js", 4096);
    // The searches inside build folders go deep too: one finds an archive at the bottom of
    // its own chain, the other at the bottom of a chain a link leads to.
    testing::writeDeepFile(testing::makeFolderChain(root / "android/build", 500) / "app.aab", 4096);
    testing::writeDeepFile(testing::makeFolderChain(temp / "exports", 1000) / "App.xcarchive/Info.plist", 4096);
    fs::create_directory_symlink(temp / "exports", makeDirectory(root / "ios/build") / "exports");

    std::vector<CleanTarget> targets;
    runOnStackOf(128 * 1024, [&] { targets = makeCleaner({root}).scan(); });
    EXPECT_EQ(idSetOf(targets), std::set<std::string>{"per-project-node_modules"});
    EXPECT_EQ(pathsOf(targets, "per-project-node_modules"), std::set<fs::path>{bottom / "node_modules"});
    const auto* modules = findTarget(targets, "per-project-node_modules");
    ASSERT_NE(modules, nullptr);
    EXPECT_EQ(modules->sizeBytes, testing::deepAllocatedBytesBelow(bottom / "node_modules"));
    EXPECT_EQ(modules->notes, "");
}

TEST(PerProjectCleaner, FoldersModifiedWithinKeepRecentDaysAreKept) {
    TempDir temp;
    const fs::path root = temp / "root";
    const auto now = std::chrono::time_point_cast<std::chrono::seconds>(Clock::now());
    struct Case {
        std::int64_t keepRecentDays;
        Clock::duration age;
        bool offered;
    };
    const std::vector<Case> cases{
        {7, 3 * day, false}, {7, 8 * day, true}, {7, 7 * day, true}, {7, 7 * day - 1s, false},
        {0, 1s, true},       {0, 0s, true},      {0, -1h, false},  // dated in the future
    };
    for (const auto& [days, age, offered] : cases) {
        const fs::path folder = root / (std::to_string(days) + "-" + std::to_string(age.count())) / "node_modules";
        writeFile(folder / "x.js", 4096);
        setModificationTime(folder, now - age);
        EXPECT_EQ(pathsOf(makeCleaner({root}, catalogSpecs(), days, now).scan(), "per-project-node_modules").contains(folder),
                  offered)
            << folder;
        fs::remove_all(root);
    }
    // An unreadable date cannot be produced on a folder the walk can see (both come from
    // one status read), so the rule itself is checked for it.
    EXPECT_FALSE(makeCleaner({}, {}, 7, now).isRecent(std::nullopt));
}

TEST(PerProjectCleaner, NothingFromEmptyKindsLinksUnusableRootsOrAStoppedScan) {
    TempDir temp;
    makeDirectory(temp / "root/a/node_modules");
    // Links are neither entered nor offered.
    writeFile(temp / "outside/project/node_modules/x.js", 4096);
    writeFile(temp / "outside/cache/data.pyc", 4096);
    fs::create_directory_symlink(temp / "outside", temp / "root/linked");
    fs::create_directory_symlink(temp / "outside/cache", temp / "root/a/__pycache__");
    writeFile(temp / "root/b/node_modules/.package-lock.json", 0);  // an empty file allocates nothing
    writeFile(temp / "root/c/__pycache__/m.pyc", 4096);
    writeFile(temp / "a-file", 4096);
    const auto cleaner = makeCleaner({temp / "root"});
    const auto targets = cleaner.scan();
    EXPECT_EQ(idSetOf(targets), std::set<std::string>{"per-project-__pycache__"});
    EXPECT_EQ(pathsOf(targets, "per-project-__pycache__"), std::set<fs::path>{temp / "root/c/__pycache__"});
    EXPECT_TRUE(makeCleaner({temp / "missing", temp / "a-file"}).scan().empty());
    std::stop_source stop;
    stop.request_stop();
    const DirectorySizer sizer;
    EXPECT_TRUE(cleaner.scan(ScanContext{sizer, stop.get_token()}).empty());
}

// Folders below a project root that tag themselves as caches (Cache Directory Tagging).
constexpr const char* signature = "Signature: 8a477f597d28d172789f06886806bc55";
const Spec tagged = simpleSpec("CACHEDIR.TAG");
const Spec pycache = simpleSpec("__pycache__");

std::set<fs::path> taggedFolders(const PerProjectCleaner& cleaner) {
    for (const auto& target : cleaner.scan()) {
        const auto& folders = target.kind.pathList();
        if (target.id == "per-project-CACHEDIR.TAG") return {folders.begin(), folders.end()};
    }
    return {};
}

TEST(CacheTag, OnlyARegularFileWithTheExactSignatureTagsAFolder) {
    struct Case {
        std::string name;
        std::string tagText;  // "" for a tag that is not a regular file
        bool offered;
    };
    const std::vector<Case> cases{
        {"valid", std::string(signature) + "\n# This file is a cache directory tag.\n", true},
        {"signature-only", signature, true},
        {"upper-case", "SIGNATURE: 8A477F597D28D172789F06886806BC55", false},
        {"truncated", std::string(signature).substr(0, 42), false},
        {"leading-blank", std::string(" ") + signature, false},
        {"link", "", false},
        {"folder", "", false},
    };
    TempDir temp;
    const auto root = temp / "projects";
    writeText(temp / "elsewhere/CACHEDIR.TAG", signature);
    for (const auto& [name, text, offered] : cases) {
        const auto folder = root / name / "out";
        writeFile(folder / "data.bin", 4096);
        if (name == "link") fs::create_symlink(temp / "elsewhere/CACHEDIR.TAG", folder / "CACHEDIR.TAG");
        else if (name == "folder") fs::create_directory(folder / "CACHEDIR.TAG");
        else writeText(folder / "CACHEDIR.TAG", text);
    }
    const auto found = taggedFolders(PerProjectCleaner({root}, {}, 0, Clock::now() + std::chrono::seconds(1), tagged));
    for (const auto& [name, text, offered] : cases) EXPECT_EQ(found.contains(root / name / "out"), offered) << name;
}

TEST(CacheTag, ATaggedFolderIsOneCandidateNeverEnteredNotARootAndNotRecent) {
    TempDir temp;
    const auto root = temp / "projects";
    writeText(root / "CACHEDIR.TAG", signature);  // the root itself is never offered
    writeText(root / "app/target/CACHEDIR.TAG", signature);
    writeFile(root / "app/target/debug/__pycache__/m.pyc", 4096);
    writeText(root / "app/target/debug/CACHEDIR.TAG", signature);
    writeText(root / "young/cache/CACHEDIR.TAG", signature);
    writeFile(root / "lib/__pycache__/n.pyc", 4096);
    const auto now = Clock::now();
    for (const auto& entry : fs::recursive_directory_iterator(root))
        testing::setModificationTime(entry.path(), now - std::chrono::hours(24 * 30));
    testing::setModificationTime(root / "young/cache", now - std::chrono::hours(24));

    const PerProjectCleaner cleaner({root}, {pycache}, 7, now, tagged);
    EXPECT_EQ(taggedFolders(cleaner), std::set<fs::path>{root / "app/target"});
    const auto targets = cleaner.scan();
    ASSERT_EQ(targets.size(), 2u);  // the tagged kind and the __pycache__ outside it
    EXPECT_EQ(targets[1].kind.pathList(), std::vector<fs::path>{root / "lib/__pycache__"});

    // Without the tagged kind, tags mean nothing and the walk goes inside.
    const PerProjectCleaner untagged({root}, {pycache}, 7, now);
    EXPECT_TRUE(taggedFolders(untagged).empty());
    EXPECT_EQ(untagged.scan().at(0).kind.pathList().size(), 2u);
}

// Runs a shell script in `folder` with git on a clean environment: no user or system
// configuration, nothing of the machine's but the programs in /usr/bin and /bin. `f PATH`
// writes a 4 KiB file.
void shellIn(const fs::path& folder, const std::string& script) {
    fs::create_directories(folder);
    const std::string command = "cd '" + folder.string() + "' && env -i HOME='" + folder.string() +
                                "' GIT_CONFIG_NOSYSTEM=1 PATH=/usr/bin:/bin sh -ec '" +
                                "f() { mkdir -p \"$(dirname \"$1\")\"; head -c 4096 /dev/zero > \"$1\"; }; " +
                                "git() { command git -c user.name=t -c user.email=t@t \"$@\"; }; " + script + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + script);
}

// Every folder offered by a scan, and the notes it left.
std::pair<std::set<fs::path>, std::string> offeredAndNotes(const PerProjectCleaner& cleaner) {
    const DirectorySizer sizer;
    const auto notes = std::make_shared<ScanNotes>();
    std::set<fs::path> offered;
    for (const auto& target : cleaner.scan(ScanContext{sizer, {}, notes}))
        offered.insert(target.kind.pathList().begin(), target.kind.pathList().end());
    std::string text;
    for (const auto& note : notes->take()) text += note + "\n";
    return {offered, text};
}

TEST(PerProjectCleaner, FoldersHoldingFilesTheirRepositoryTracksAreNeverOffered) {
    // The script runs in the case's folder; the project root is its "work".
    struct Case { std::string name, script, candidate; bool offered; };
    const std::vector<Case> cases{
        {"tracked", "cd work && git init -q && f app/build/ci/run.sh && f app/main.go && git add app", "app/build", false},
        {"ignored", "cd work && git init -q && f app/build/o && echo build/ > app/.gitignore && git add app", "app/build", true},
        {"untracked", "cd work && git init -q && f app/main.c && git add app && f app/build/o", "app/build", true},
        {"above-root", "git init -q && f work/app/build/gen/keep && git add work", "app/build", false},
        {"nested", "cd work && git init -q && f app/x && git add app/x && cd app && git init -q && f build/x && git add build",
         "app/build", false},
        {"git-file", "cd work && git init -q --separate-git-dir ../repo && f node_modules/p/x && git add -f node_modules",
         "node_modules", false},
        {"own-tree", "f work/app/build/index.html && cd work/app/build && git init -q && git add .", "app/build", false},
        {"tagged-fixture", std::string("cd work && git init -q && f app/fixture/data && printf \"") + signature +
                               "\" > app/fixture/CACHEDIR.TAG && git add app",
         "app/fixture", false},
        {"corrupt-index", "cd work && git init -q && f app/build/o && echo x > .git/index", "app/build", false},
    };
    TempDir temp;
    std::vector<fs::path> roots;
    for (const auto& test : cases) {
        roots.push_back(makeDirectory(temp / test.name / "work"));
        shellIn(temp / test.name, test.script);
    }
    const auto linux = catalogCleaner(CatalogProfile::gnuLinux);
    const auto [offered, notes] = offeredAndNotes(
        PerProjectCleaner(roots, linux.specs(), 0, Clock::now() + 1s, linux.cacheTagged()));
    for (const auto& test : cases)
        EXPECT_EQ(offered.contains(temp / test.name / "work" / test.candidate), test.offered) << test.name;
    EXPECT_NE(notes.find((temp / "corrupt-index/work").string()), std::string::npos) << notes;
}

TEST(PerProjectCleaner, EnvironmentsNeedTheirConfigurationAndALockToBePreselected) {
    struct Case { std::string name; std::vector<std::string> files; std::string targetId; /* "": not offered */ };
    const std::vector<Case> cases{
        {"uv", {"pyproject.toml", "uv.lock", ".venv/pyvenv.cfg"}, "per-project-.venv"},
        {"pip", {"setup.py", "requirements-dev.txt", "venv/pyvenv.cfg"}, "per-project-venv"},
        {"by-hand", {"pyproject.toml", ".venv/pyvenv.cfg"}, "per-project-.venv:unpinned"},
        {"pipfile", {"Pipfile", ".venv/pyvenv.cfg"}, "per-project-.venv:unpinned"},
        {"no-cfg", {"pyproject.toml", "poetry.lock", ".venv/bin/python"}, ""},
    };
    TempDir temp;
    for (const auto& test : cases)
        for (const auto& file : test.files) writeFile(temp / test.name / file, 4096);
    const auto targets = PerProjectCleaner({temp.path()}, catalogCleaner(CatalogProfile::gnuLinux).specs(), 0,
                                           Clock::now() + 1s).scan();
    for (const auto& test : cases) {
        std::string found;
        for (const auto& target : targets)
            for (const auto& folder : target.kind.pathList())
                if (folder.parent_path() == temp / test.name) found = target.id;
        EXPECT_EQ(found, test.targetId) << test.name;
    }
    for (const auto& target : targets) {
        const bool unpinned = target.id.ends_with(PerProjectCleaner::unpinnedSuffix);
        EXPECT_EQ(PlanSelection::isPreselected(target), !unpinned) << target.id;
        EXPECT_EQ(target.notes.find("uv.lock") != std::string::npos, unpinned) << target.notes;
    }
}

TEST(PerProjectCleaner, ProjectsChangedWithinKeepRecentDaysKeepTheirArtefacts) {
    // The fresh entry is made a day before now; everything else a month.
    struct Case { std::string name, freshEntry; bool offered; };
    const std::vector<Case> cases{
        {"fresh-source", "main.ts", false},
        {"fresh-manifest", "package.json", false},
        {"all-old", "", true},
        {"fresh-inside-other-artefact", ".next/cache/x", true},
    };
    TempDir temp;
    const auto now = Clock::now();
    for (const auto& test : cases) {
        const fs::path project = temp / test.name;
        for (const char* file : {"node_modules/p/index.js", "main.ts", "package.json", ".next/cache/x"})
            writeFile(project / file, 4096);
        for (const auto& entry : fs::recursive_directory_iterator(project)) setModificationTime(entry.path(), now - 30 * day);
        if (!test.freshEntry.empty()) setModificationTime(project / test.freshEntry, now - day);
    }
    const auto modules = pathsOf(makeCleaner({temp.path()}, catalogSpecs(), 7, now).scan(), "per-project-node_modules");
    for (const auto& test : cases) EXPECT_EQ(modules.contains(temp / test.name / "node_modules"), test.offered) << test.name;
}

TEST(PerProjectCleaner, UnreadableProjectFoldersAndIndexesAreNamedAndWhatTheyHideIsNotOffered) {
    TempDir temp;
    const fs::path root = temp / "work";
    writeFile(root / "open/node_modules/p/x", 4096);
    writeFile(root / "locked/app/node_modules/p/x", 4096);
    ::chmod((root / "locked").c_str(), 0);
    shellIn(root / "repo", "git init -q && f main.c && git add main.c && f build/o && chmod 000 .git/index");
    const auto run = testing::runAsUnprivileged([&] {
        const auto [offered, notes] = offeredAndNotes(makeCleaner({root}));
        std::string text = notes;
        for (const auto& folder : offered) text += "offered " + folder.string() + "\n";
        return text;
    });
    if (run.switchRefused) GTEST_SKIP() << run.failure;
    ASSERT_TRUE(run.output) << run.failure;
    const std::string& text = *run.output;
    EXPECT_NE(text.find("offered " + (root / "open/node_modules").string() + "\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("offered " + (root / "repo/build").string()), std::string::npos) << text;
    EXPECT_NE(text.find((root / "locked").string() + " ("), std::string::npos) << text;
    EXPECT_NE(text.find((root / "repo").string() + " ("), std::string::npos) << text;
}

}  // namespace
}  // namespace kelvo
