// The tool end to end with the Linux catalog on a fake Linux home: XDG folders moved
// inside the home, a tool's own variable, one pointing outside, a Flatpak installation
// with one app installed and one removed, and projects with build folders.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>
#include <set>

#include "support/TempDir.h"
#include "support/ToolRunner.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::TempDir;
using testing::writeFile;
using testing::writeText;

constexpr const char* cacheTag = "Signature: 8a477f597d28d172789f06886806bc55\n";

class LinuxHome : public ::testing::Test {
protected:
    void SetUp() override {
        environment = testing::toolEnvironment(root.path());
        home = root / "home";
        for (const auto* file : {".cache/pip/http/a/b", ".cache/JetBrains/IntelliJIdea2024.1/index/ids",
                                 ".cache/huggingface/hub/model.bin", ".config/Code/Cache/stale", "cfg/Code/Cache/data_0",
                                 "cfg/Code/User/settings.json", "data/Trash/files/old.txt",
                                 "data/Trash/info/old.txt.trashinfo", "rust/cargo/registry/cache/serde.crate",
                                 ".cargo/registry/cache/stale.crate", ".var/app/org.example.Kept/data/notes.db",
                                 ".var/app/org.example.System/config/app.ini", ".var/app/org.example.Gone/data/save.dat",
                                 "workspace/crate/Cargo.toml", "workspace/crate/target/debug/app",
                                 "workspace/native/CMakeLists.txt", "workspace/native/cmake-build-debug/CMakeCache.txt",
                                 "workspace/py/pyproject.toml", "workspace/py/uv.lock", "workspace/py/.venv/pyvenv.cfg",
                                 "workspace/py/.venv/lib/site.py",
                                 "workspace/py/pkg/__pycache__/m.pyc", "workspace/tagged/out/blob",
                                 "workspace/fake/out/blob", "workspace/docs/target/page.html", "Documents/thesis.tex"})
            writeFile(home / file, 6000);
        writeText(home / "workspace/tagged/out/CACHEDIR.TAG", cacheTag);
        writeText(home / "workspace/fake/out/CACHEDIR.TAG", "Signature: not a cache\n");
        std::filesystem::create_directories(home / "data/flatpak/app/org.example.Kept/current");
        std::filesystem::create_directories(root / "system-flatpak/app/org.example.System");
        std::filesystem::create_directories(root / "flatpak-config");
        writeFile(root / "outside/gomod/cache/download/x.zip", 6000);
        testing::setTreeModificationTime(root.path(), std::chrono::system_clock::now() - 40 * 24h);
        environment.merge(std::map<std::string, std::string>{{"XDG_CONFIG_HOME", (home / "cfg").string()},
                                                             {"XDG_DATA_HOME", (home / "data").string()},
                                                             {"CARGO_HOME", (home / "rust/cargo").string()},
                                                             {"GOMODCACHE", (root / "outside/gomod").string()},
                                                             {"FLATPAK_SYSTEM_DIR", (root / "system-flatpak").string()},
                                                             {"FLATPAK_CONFIG_DIR", (root / "flatpak-config").string()}});
    }

    nlohmann::json run(const std::vector<std::string>& arguments) {
        auto withCatalog = arguments;
        withCatalog.insert(withCatalog.begin(), {"--catalog", "linux"});
        const auto result = testing::runTool(withCatalog, environment);
        EXPECT_EQ(result.exitStatus, 0) << result.standardOutput << result.standardError;
        return arguments.back() == "--json" ? nlohmann::json::parse(result.standardOutput) : nlohmann::json();
    }

    TempDir root;
    std::filesystem::path home;
    std::map<std::string, std::string> environment;
};

TEST_F(LinuxHome, ScanOffersWhatTheToolsLeftWhereTheyKeepItAndCleanRemovesOnlyThePreselection) {
    const auto plan = run({"scan", "--json"});
    std::map<std::string, bool> preselected;
    for (const auto& target : plan["targets"]) preselected[target["id"]] = target["preselected"];
    EXPECT_EQ(preselected, (std::map<std::string, bool>{{"pip-cache", true},
                                                        {"jetbrains-caches/IntelliJIdea2024.1", true},
                                                        {"huggingface-cache", false},
                                                        {"vscode-caches", true},
                                                        {"trash", false},
                                                        {"metro-cache", false},
                                                        {"cargo-registry", true},
                                                        {"per-project-target", true},
                                                        {"per-project-cmake-build-debug", true},
                                                        {"per-project-.venv", true},
                                                        {"per-project-__pycache__", true},
                                                        {"per-project-CACHEDIR.TAG", true}}));
    ASSERT_EQ(plan["notes"].size(), 1u);
    EXPECT_NE(plan["notes"][0].get<std::string>().find("GOMODCACHE"), std::string::npos);

    const std::string before = testing::listing(root.path());
    run({"clean", "--yes"});
    EXPECT_EQ(testing::listing(root.path()),
              testing::listingWithout(before, {"home/.cache/pip/", "home/.cache/JetBrains/IntelliJIdea2024.1/", "home/cfg/Code/Cache/",
                               "home/rust/cargo/registry/",
                               "home/workspace/crate/target/", "home/workspace/native/cmake-build-debug/",
                               "home/workspace/py/.venv/", "home/workspace/py/pkg/__pycache__/",
                               "home/workspace/tagged/out/"}));
    // What the moved variables left behind, what is not a cache, and what is only offered remain.
    for (const auto* kept : {".config/Code/Cache/stale", ".cargo/registry/cache/stale.crate", "workspace/fake/out/blob",
                             "workspace/docs/target/page.html", ".cache/huggingface/hub/model.bin",
                             "cfg/Code/User/settings.json", "data/Trash/files/old.txt", "Documents/thesis.tex"})
        EXPECT_TRUE(std::filesystem::exists(home / kept)) << kept;
    EXPECT_TRUE(std::filesystem::exists(root / "outside/gomod/cache/download/x.zip"));
}

TEST_F(LinuxHome, DataOfARemovedFlatpakIsOfferedButGoesOnlyWhenNamed) {
    const auto plan = run({"prepare", "--json"});
    ASSERT_EQ(plan["targets"].size(), 1u);
    EXPECT_EQ(plan["targets"][0]["id"], "leftover:org.example.Gone");
    EXPECT_EQ(plan["targets"][0]["reversibility"], "userData");
    EXPECT_EQ(plan["targets"][0]["preselected"], false);

    const std::string before = testing::listing(root.path());
    run({"prepare", "clean", "--yes"});
    EXPECT_EQ(testing::listing(root.path()), before);
    run({"prepare", "clean", "--yes", "--id", "leftover:org.example.Gone"});
    EXPECT_EQ(testing::listing(root.path()), testing::listingWithout(before, {"home/.var/app/org.example.Gone/"}));
}

TEST_F(LinuxHome, TheCatalogOptionIsGlobalAndChecked) {
    // After the subcommand too; the text plan names the family by its Linux name and shows the note.
    const auto text = testing::runTool({"scan", "--catalog", "linux"}, environment);
    ASSERT_EQ(text.exitStatus, 0) << text.standardError;
    EXPECT_NE(text.standardOutput.find("\nGeneral"), std::string::npos) << text.standardOutput;
    EXPECT_NE(text.standardOutput.find("GOMODCACHE"), std::string::npos);
    // The macOS catalog looks where macOS keeps things and follows no variable.
    const auto macos = testing::runTool({"--catalog", "macos", "scan", "--json"}, environment);
    ASSERT_EQ(macos.exitStatus, 0) << macos.standardError;
    const auto plan = nlohmann::json::parse(macos.standardOutput);
    std::set<std::string> ids;
    for (const auto& target : plan["targets"]) ids.insert(target["id"]);
    for (const auto* linuxOnly : {"pip-cache", "vscode-caches", "trash", "per-project-target", "per-project-CACHEDIR.TAG"})
        EXPECT_FALSE(ids.contains(linuxOnly)) << linuxOnly;
    EXPECT_TRUE(ids.contains("cargo-registry"));  // ~/.cargo, not CARGO_HOME
    EXPECT_FALSE(plan.contains("notes"));
    EXPECT_EQ(testing::runTool({"--catalog", "windows", "scan"}, environment).exitStatus, 2);
}

}  // namespace
}  // namespace kelvo
