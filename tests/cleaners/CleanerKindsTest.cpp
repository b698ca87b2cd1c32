// The three kinds of entry on trees of their own: paths measured whole, a command offered
// while its tool is there, and the build folders the per-project walk finds in projects.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>

#include <functional>

#include "kelvo/CleanerRegistry.h"
#include "catalog/CommandCleaner.h"
#include "kelvo/L10n.h"
#include "catalog/PathCleaner.h"
#include "kelvo/PerProjectCleaner.h"
#include "support/DeepTree.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using Clock = PerProjectCleaner::Clock;
using Spec = PerProjectCleaner::ArtifactSpec;
using namespace std::chrono_literals;
using testing::allocatedBytes, testing::allocatedBytesBelow, testing::idSetOf, testing::makeDirectory, testing::writeFile;
constexpr auto day = std::chrono::seconds(86400);

class PathCleanerScan : public ::testing::Test {
protected:
    PathCleaner cleaner(std::vector<std::string> relativePaths) const {
        return PathCleaner("tool-cache", "Tool cache", Family::devMisc, home.path(), std::move(relativePaths),
                           Level::moderate, Reversibility::regenerable, RegenCost::redownload);
    }
    testing::TempDir home;
};

TEST_F(PathCleanerScan, NothingWhenEveryPathIsMissingEmptyDanglingOrTheScanIsStopped) {
    makeDirectory(home / "empty");
    writeFile(home / "zero-length", 0);
    fs::create_symlink(home / "gone", home / "dangling");
    EXPECT_TRUE(cleaner({"empty", "zero-length", "dangling", "missing"}).scan().empty());
    writeFile(home / "cache/data", 8192);
    std::stop_source stop;
    stop.request_stop();
    const DirectorySizer sizer;
    EXPECT_TRUE(cleaner({"cache"}).scan(ScanContext{sizer, stop.get_token()}).empty());
}

TEST_F(PathCleanerScan, ALinkedPathStaysInTheTargetUnmeasuredAndInnerLinksAreNotFollowed) {
    const fs::path elsewhere = writeFile(home / "elsewhere/brew/bottle", 1 << 20).parent_path();
    fs::create_directory_symlink(elsewhere, home / "linked");
    const fs::path file = writeFile(home / "cache/original", 8192);
    fs::create_hard_link(file, home / "cache/second-name");  // one file, counted once
    fs::create_symlink(elsewhere / "bottle", home / "cache/to-outside");
    const auto both = cleaner({"linked", "cache"}).scan();
    ASSERT_EQ(both.size(), 1u);
    EXPECT_EQ(both[0].kind, CleanKind::paths({home / "linked", home / "cache"}));
    EXPECT_EQ(both[0].sizeBytes, allocatedBytes(file) + allocatedBytes(home / "cache/to-outside"));
    // Offered on its own too, at nothing, so that the scan can say why it is not cleaned.
    const auto alone = cleaner({"linked"}).scan();
    ASSERT_EQ(alone.size(), 1u);
    EXPECT_EQ(alone[0].sizeBytes, 0);
}

TEST_F(PathCleanerScan, AnUnreadableFolderGivesAPartialSizeNote) {
    const fs::path readable = writeFile(home / "cache/readable", 8192);
    writeFile(home / "cache/locked/secret", 1 << 20);
    ASSERT_EQ(::chmod((home / "cache/locked").c_str(), 0), 0);
    const std::int64_t readablePart = allocatedBytes(readable) + allocatedBytes(home / "cache/locked");
    const PathCleaner scanned = cleaner({"cache"});
    const auto run = testing::runAsUnprivileged([&] {
        std::string out = std::to_string(scanned.scan().size());
        for (const auto& target : scanned.scan()) out += "\n" + std::to_string(target.sizeBytes) + "\n" + target.notes;
        return out;
    });
    if (run.switchRefused) GTEST_SKIP() << run.failure;
    ASSERT_TRUE(run.output.has_value()) << run.failure;
    EXPECT_EQ(*run.output, "1\n" + std::to_string(readablePart) + "\n" + CleanTarget::partialSizeNote());
    EXPECT_NE(CleanTarget::partialSizeNote(), "");
}

CommandCleaner makeCommand(const std::string& command, std::int64_t estimate, CommandCleaner::ToolCheck check) {
    return CommandCleaner("some-command", "Some command", Family::reactNative, command, Level::moderate,
                          Reversibility::regenerable, RegenCost::reindex, estimate, std::move(check));
}

TEST(CommandCleaner, TheToolIsTheFirstWordSplitAtSpacesOnly) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"xcrun simctl delete unavailable", "xcrun"}, {"watchman watch-del-all; watchman shutdown-server", "watchman"},
        {"  brew cleanup -s", "brew"},  // empty pieces are left out
        {"conda", "conda"}, {"tool\tflag rest", "tool\tflag"},  // a tab stays inside the word
        {"", ""}, {"   ", "   "},  // no piece at all: the whole command
    };
    for (const auto& [command, tool] : cases) EXPECT_EQ(makeCommand(command, 0, [](auto&) { return true; }).tool(), tool) << command;
}

TEST(CommandCleaner, OffersTheWholeLineWithItsEstimateOnlyWhileTheCheckFindsItsTool) {
    std::vector<std::string> asked;
    bool installed = false;
    const std::string line = "watchman watch-del-all; watchman shutdown-server";
    const auto cleaner = makeCommand(line, 0, [&](const std::string& tool) {
        asked.push_back(tool);
        return installed;
    });
    EXPECT_TRUE(cleaner.scan().empty());
    installed = true;  // asked again on every scan: nothing is remembered
    const auto targets = cleaner.scan();
    EXPECT_EQ(asked, (std::vector<std::string>{"watchman", "watchman"}));
    ASSERT_EQ(targets.size(), 1u);
    EXPECT_EQ(targets[0].kind, CleanKind::command(line));
    EXPECT_EQ(std::tuple(targets[0].level, targets[0].regenCost), std::tuple(Level::moderate, RegenCost::reindex));
    // An unknown estimate is size zero with a note; a known one is the size.
    EXPECT_EQ(targets[0].sizeBytes, 0);
    EXPECT_EQ(targets[0].notes, L10n::t("cleaner.note.unknownSize"));
    EXPECT_NE(targets[0].notes, "cleaner.note.unknownSize") << "the catalog lacks the note's text";
    const auto known = makeCommand(line, 5000, [](auto&) { return true; }).scan();
    ASSERT_EQ(known.size(), 1u);
    EXPECT_EQ(std::pair(known[0].sizeBytes, known[0].notes), std::pair(std::int64_t{5000}, std::string()));
}

// The catalog's own build-folder kinds, so the rules are checked with its patterns.
PerProjectCleaner catalogCleaner(CatalogProfile profile = CatalogProfile::macos) {
    Environment env;
    env.home = "/nonexistent-home";
    env.tmpDir = "/nonexistent-tmp";
    env.catalog = profile;
    const auto cleaners = CleanerRegistry::makeCleaners(env);
    return dynamic_cast<const PerProjectCleaner&>(*cleaners.back());
}

// Recency plays no part unless a test asks for it: every folder made before this is old enough.
PerProjectCleaner makeCleaner(std::vector<fs::path> roots, std::vector<Spec> specs = catalogCleaner().specs(),
                              std::int64_t keepRecentDays = 0, Clock::time_point now = Clock::now() + 1s) {
    return PerProjectCleaner(std::move(roots), std::move(specs), keepRecentDays, now);
}

// The folders of the target with this id; of every target when the id is empty.
std::set<fs::path> pathsOf(const std::vector<CleanTarget>& targets, const std::string& id = "") {
    std::set<fs::path> paths;
    for (const auto& target : targets)
        if (id.empty() || target.id == id) paths.insert(target.kind.pathList().begin(), target.kind.pathList().end());
    return paths;
}

// Every folder offered by a scan, and the notes it left.
std::pair<std::set<fs::path>, std::string> offeredAndNotes(const PerProjectCleaner& cleaner) {
    const DirectorySizer sizer;
    const auto notes = std::make_shared<ScanNotes>();
    const auto offered = pathsOf(cleaner.scan(ScanContext{sizer, {}, notes}));
    std::string text;
    for (const auto& note : notes->take()) text += note + "\n";
    return {offered, text};
}

TEST(PerProjectCleaner, SiblingPatternsAreLiteralExceptForALeadingStarDot) {
    testing::TempDir temp;
    const fs::path root = temp / "root";
    const auto kind = [](std::string name, std::string sibling) {
        return Spec{std::move(name), Level::safe, Reversibility::regenerable, RegenCost::rebuild, {std::move(sibling)}};
    };
    // Beside each candidate folder, a file whose name the pattern may or may not match.
    const std::vector<std::tuple<std::string, std::string, std::string>> projects{
        {"star-in-name", "lit*eral", "out"}, {"star-as-wildcard", "literal", "out"},  // "*" inside an alternative is no wildcard
        {"suffix", "build.cfg", "out"}, {"no-dot", "cfg", "out"},  // "*.cfg" needs the dot
        {"bars", "|", "never"},  // a pattern of empty alternatives matches nothing, not even "|"
        {"marked", "marker", "padded"}, {"alone", "", "self"},  // the candidate is one of the names beside itself
    };
    for (const auto& [project, sibling, folder] : projects) {
        if (!sibling.empty()) writeFile(root / project / sibling, 1);
        writeFile(root / project / folder / "x", 4096);
    }
    const auto targets =
        makeCleaner({root}, {kind("out", "lit*eral|*.cfg"), kind("never", "|"), kind("padded", "||marker||"), kind("self", "self")}).scan();
    EXPECT_EQ(pathsOf(targets, "per-project-out"), (std::set<fs::path>{root / "star-in-name/out", root / "suffix/out"}));
    EXPECT_EQ(pathsOf(targets, "per-project-padded"), std::set<fs::path>{root / "marked/padded"});
    EXPECT_EQ(pathsOf(targets, "per-project-self"), std::set<fs::path>{root / "alone/self"});
    EXPECT_EQ(idSetOf(targets), (std::set<std::string>{"per-project-out", "per-project-padded", "per-project-self"}));
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
    testing::TempDir temp;
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
    ASSERT_EQ(testing::idsOf(targets), std::vector<std::string>{"per-project-node_modules"});
    EXPECT_EQ(pathsOf(targets), std::set<fs::path>{bottom / "node_modules"});
    EXPECT_EQ(targets[0].sizeBytes, testing::deepAllocatedBytesBelow(bottom / "node_modules"));
    EXPECT_EQ(targets[0].notes, "");
}

TEST(PerProjectCleaner, FoldersModifiedWithinKeepRecentDaysAreKept) {
    testing::TempDir temp;
    const fs::path root = temp / "root";
    const auto now = std::chrono::time_point_cast<std::chrono::seconds>(Clock::now());
    const std::vector<std::tuple<std::int64_t, Clock::duration, bool>> cases{
        {7, 3 * day, false}, {7, 8 * day, true}, {7, 7 * day, true}, {7, 7 * day - 1s, false},
        {0, 1s, true}, {0, 0s, true}, {0, -1h, false},  // dated in the future
    };
    for (const auto& [days, age, offered] : cases) {
        const fs::path folder = root / (std::to_string(days) + "-" + std::to_string(age.count())) / "node_modules";
        writeFile(folder / "x.js", 4096);
        testing::setModificationTime(folder, now - age);
        EXPECT_EQ(pathsOf(makeCleaner({root}, catalogCleaner().specs(), days, now).scan()).contains(folder), offered) << folder;
        fs::remove_all(root);
    }
    // An unreadable date cannot be produced on a folder the walk can see (both come from
    // one status read), so the rule itself is checked for it.
    EXPECT_FALSE(makeCleaner({}, {}, 7, now).isRecent(std::nullopt));
}

TEST(PerProjectCleaner, AStoppedScanFindsNothing) {
    testing::TempDir temp;
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

TEST(PerProjectCleaner, FoldersHoldingFilesTheirRepositoryTracksAreNeverOffered) {
    // The script runs in the case's folder; the project root is its "work".
    const std::string tag = "printf \"Signature: 8a477f597d28d172789f06886806bc55\" > app/fixture/CACHEDIR.TAG";
    const std::vector<std::tuple<std::string, std::string, std::string, bool>> cases{
        {"tracked", "cd work && git init -q && f app/build/ci/run.sh && f app/main.go && git add app", "app/build", false},
        {"ignored", "cd work && git init -q && f app/build/o && echo build/ > app/.gitignore && git add app", "app/build", true},
        {"untracked", "cd work && git init -q && f app/main.c && git add app && f app/build/o", "app/build", true},
        {"above-root", "git init -q && f work/app/build/gen/keep && git add work", "app/build", false},
        {"nested", "cd work && git init -q && f app/x && git add app/x && cd app && git init -q && f build/x && git add build",
         "app/build", false},
        {"git-file", "cd work && git init -q --separate-git-dir ../repo && f node_modules/p/x && git add -f node_modules",
         "node_modules", false},
        {"own-tree", "f work/app/build/index.html && cd work/app/build && git init -q && git add .", "app/build", false},
        {"tagged-fixture", "cd work && git init -q && f app/fixture/data && " + tag + " && git add app", "app/fixture", false},
        {"corrupt-index", "cd work && git init -q && f app/build/o && echo x > .git/index", "app/build", false},
    };
    testing::TempDir temp;
    std::vector<fs::path> roots;
    for (const auto& [name, script, candidate, offered] : cases) {
        roots.push_back(makeDirectory(temp / name / "work"));
        shellIn(temp / name, script);
    }
    const auto linux = catalogCleaner(CatalogProfile::gnuLinux);
    const auto [offered, notes] = offeredAndNotes(PerProjectCleaner(roots, linux.specs(), 0, Clock::now() + 1s, linux.cacheTagged()));
    for (const auto& [name, script, candidate, expected] : cases)
        EXPECT_EQ(offered.contains(temp / name / "work" / candidate), expected) << name;
    EXPECT_NE(notes.find((temp / "corrupt-index/work").string()), std::string::npos) << notes;
}

TEST(PerProjectCleaner, ProjectsChangedWithinKeepRecentDaysKeepTheirArtefacts) {
    // The fresh entry is made a day before now; everything else a month.
    const std::vector<std::tuple<std::string, std::string, bool>> cases{
        {"fresh-source", "main.ts", false}, {"fresh-manifest", "package.json", false},
        {"all-old", "", true}, {"fresh-inside-other-artefact", ".next/cache/x", true},
    };
    testing::TempDir temp;
    const auto now = Clock::now();
    for (const auto& [name, fresh, offered] : cases) {
        for (const char* file : {"node_modules/p/index.js", "main.ts", "package.json", ".next/cache/x"}) writeFile(temp / name / file, 4096);
        for (const auto& entry : fs::recursive_directory_iterator(temp / name)) testing::setModificationTime(entry.path(), now - 30 * day);
        if (!fresh.empty()) testing::setModificationTime(temp / name / fresh, now - day);
    }
    const auto modules = pathsOf(makeCleaner({temp.path()}, catalogCleaner().specs(), 7, now).scan(), "per-project-node_modules");
    for (const auto& [name, fresh, offered] : cases) EXPECT_EQ(modules.contains(temp / name / "node_modules"), offered) << name;
}

TEST(PerProjectCleaner, UnreadableProjectFoldersAndIndexesAreNamedAndWhatTheyHideIsNotOffered) {
    testing::TempDir temp;
    const fs::path root = temp / "work";
    writeFile(root / "open/node_modules/p/x", 4096);
    writeFile(root / "locked/app/node_modules/p/x", 4096);
    ::chmod((root / "locked").c_str(), 0);
    shellIn(root / "repo", "git init -q && f main.c && git add main.c && f build/o && chmod 000 .git/index");
    const auto run = testing::runAsUnprivileged([&] {
        auto [offered, text] = offeredAndNotes(makeCleaner({root}));
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
