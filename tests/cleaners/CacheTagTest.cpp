// Folders below a project root that tag themselves as caches (Cache Directory Tagging).
#include <gtest/gtest.h>

#include "kelvo/PerProjectCleaner.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using Clock = PerProjectCleaner::Clock;
using testing::TempDir;
using testing::writeFile;
using testing::writeText;

constexpr const char* signature = "Signature: 8a477f597d28d172789f06886806bc55";
const PerProjectCleaner::ArtifactSpec tagged{"CACHEDIR.TAG", Level::safe, Reversibility::regenerable,
                                             RegenCost::rebuild, {}};
const PerProjectCleaner::ArtifactSpec pycache{"__pycache__", Level::safe, Reversibility::regenerable,
                                              RegenCost::rebuild, {}};

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

}  // namespace
}  // namespace kelvo
