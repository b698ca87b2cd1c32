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
using testing::makeDirectory;
using testing::setModificationTime;
using testing::writeFile;
using namespace std::chrono_literals;
using testing::idSetOf;

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

TEST(PerProjectCleaner, AStoppedScanFindsNothing) {
    TempDir temp;
    writeFile(temp / "root/c/__pycache__/m.pyc", 4096);
    std::stop_source stop;
    stop.request_stop();
    const DirectorySizer sizer;
    EXPECT_TRUE(makeCleaner({temp / "root"}).scan(ScanContext{sizer, stop.get_token()}).empty());
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

constexpr const char* signature = "Signature: 8a477f597d28d172789f06886806bc55";

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
