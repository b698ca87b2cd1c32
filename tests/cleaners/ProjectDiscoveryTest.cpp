// Where projects are found in a home whose configuration names no project folder: the
// folders holding them, at several depths, never inside hidden folders, the catalog's own
// places, build artefacts or links, and nothing at all once a folder is configured.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "kelvo/Config.h"
#include "kelvo/ProjectDiscovery.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;

TEST(ProjectDiscovery, FindsTheFoldersHoldingProjectsInATableOfHomes) {
    struct Home {
        std::vector<std::string> files;  // home-relative; "/" at the end: a folder; "@" at the start: a link out
        std::vector<std::string> found;  // expected, home-relative
        std::vector<std::string> roots{};  // configured project folders; none: the defaults
    };
    const std::vector<Home> homes{
        {{"code/app/package.json", "code/group/lib/Cargo.toml", "src/github.com/x/tool/go.mod", "solo/pyproject.toml",
          "a/b/c/d/e/f/CMakeLists.txt", "work/api/Api.csproj", "work/api/sub/package.json"},
         {"code", "solo", "src/github.com/x", "work"}},
        {{"repos/dotfiles/.git/", "notes/.hg/", "notes/x/"}, {"notes", "repos"}},
        {{".local/share/p/package.json", ".config/x/Cargo.toml", "stuff/.hidden/p/package.json", "dev/.git"}, {"dev"}},
        {{".cargo/registry/src/idx/serde/Cargo.toml", "go/pkg/mod/github.com/x/y@v1/go.mod", "go/src/me/p/go.mod",
          "node_modules/left-pad/package.json", "build/p/CMakeLists.txt", "@linked"},
         {"go/src/me"}},
        {{"Documents/report.txt", "Music/a/b/", "Pictures/"}, {}},
        {{"code/app/package.json"}, {}, {"~/elsewhere"}},
    };
    for (const auto& row : homes) {
        testing::TempDir root;
        const fs::path home = root / "home";
        testing::writeText(root / "outside/app/package.json", "");
        for (const auto& file : row.files)
            if (file.starts_with('@')) fs::create_directory_symlink(root / "outside", home / file.substr(1));
            else file.ends_with('/') ? (void)fs::create_directories(home / file) : (void)testing::writeText(home / file, "");
        Environment env;
        env.home = home;
        env.catalog = CatalogProfile::gnuLinux;
        env.projectRoots = row.roots.empty() ? Config::defaults().projectRoots : row.roots;
        const Environment completed = ProjectDiscovery::completed(env);
        // The default folder first, then the found ones; a configured folder alone.
        std::vector<fs::path> found, walked{row.roots.empty() ? home / "workspace" : home / "elsewhere"};
        for (const auto& folder : row.found) found.push_back(home / folder);
        walked.insert(walked.end(), found.begin(), found.end());
        EXPECT_EQ(completed.foundProjectRoots, row.roots.empty() ? std::optional(found) : std::nullopt) << row.files[0];
        EXPECT_EQ(completed.resolvedProjectRoots(), walked) << row.files[0];
        env.catalog = CatalogProfile::macos;
        EXPECT_FALSE(ProjectDiscovery::completed(env).foundProjectRoots) << row.files[0];
    }
}

}  // namespace
}  // namespace kelvo
