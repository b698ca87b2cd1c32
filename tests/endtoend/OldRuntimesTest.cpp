// Old runtimes end to end on a fake Linux home whose version managers hold versions that a
// default, a full, partial or alias pin, a virtual environment, a running program or recent
// use keeps, beside versions nothing keeps; one tool's pin cannot be understood.
#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

#include "support/NamedProcess.h"
#include "support/TempDir.h"
#include "support/ToolRunner.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::writeFile;
using testing::writeText;

// Access and modification times of everything below root (root included), links not followed.
void age(const std::filesystem::path& root, std::chrono::system_clock::time_point time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ::utimensat(AT_FDCWD, root.c_str(), times, AT_SYMLINK_NOFOLLOW);
    if (std::filesystem::is_directory(std::filesystem::symlink_status(root)))
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
            ::utimensat(AT_FDCWD, entry.path().c_str(), times, AT_SYMLINK_NOFOLLOW);
}

struct Version {
    const char* id;      // target id
    const char* folder;  // home-relative
    const char* program; // main program, folder-relative
    bool offered;
};

TEST(OldRuntimesEndToEnd, OffersOnlyVersionsNothingKeepsAndRemovesThemByPathOrByTheToolsCommand) {
    testing::TempDir root;
    auto environment = testing::toolEnvironment(root.path());
    const auto home = root / "home";
    const std::vector<Version> versions{
        {"runtime:pyenv/3.11.7", ".pyenv/versions/3.11.7", "bin/python", false},   // the global one
        {"runtime:pyenv/3.10.13", ".pyenv/versions/3.10.13", "bin/python", false}, // pinned "3.10"
        {"runtime:pyenv/3.9.18", ".pyenv/versions/3.9.18", "bin/python", false},   // a venv's home
        {"runtime:pyenv/3.7.16", ".pyenv/versions/3.7.16", "bin/python", false},   // used last week
        {"runtime:pyenv/3.8.18", ".pyenv/versions/3.8.18", "bin/python", true},    // a file inside rewritten today
        {"runtime:rustup/stable-x86_64-unknown-linux-gnu", ".rustup/toolchains/stable-x86_64-unknown-linux-gnu",
         "bin/rustc", false},
        {"runtime:rustup/1.70.0-x86_64-unknown-linux-gnu", ".rustup/toolchains/1.70.0-x86_64-unknown-linux-gnu",
         "bin/rustc", false},
        {"runtime:rustup/nightly-x86_64-unknown-linux-gnu", ".rustup/toolchains/nightly-x86_64-unknown-linux-gnu",
         "bin/rustc", true},
        {"runtime:nvm/v20.11.0", ".nvm/versions/node/v20.11.0", "bin/node", false},  // default lts/*
        {"runtime:nvm/v19.9.0", ".nvm/versions/node/v19.9.0", "bin/node", false},    // .nvmrc v19
        {"runtime:nvm/v23.0.0", ".nvm/versions/node/v23.0.0", "bin/node", false},    // running
        {"runtime:nvm/v21.7.0", ".nvm/versions/node/v21.7.0", "bin/node", true},
        {"runtime:fnm/v16.0.0", "data/fnm/node-versions/v16.0.0", "installation/bin/node", true},
        {"runtime:fnm/v22.0.0", "data/fnm/node-versions/v22.0.0", "installation/bin/node", false},  // default alias
        {"runtime:rbenv/2.7.8", ".rbenv/versions/2.7.8", "bin/ruby", false},  // a pin rbenv cannot read
    };
    for (const auto& version : versions) writeFile(home / version.folder / version.program, 40000);
    writeText(home / ".pyenv/version", "3.11.7\n");
    writeText(home / ".rustup/settings.toml", "version = \"12\"\ndefault_toolchain = \"stable-x86_64-unknown-linux-gnu\"\n"
                                              "\n[overrides]\n");
    writeText(home / ".nvm/alias/default", "lts/*\n");
    std::filesystem::create_symlink(home / "data/fnm/node-versions/v22.0.0/installation",
                                    (std::filesystem::create_directories(home / "data/fnm/aliases"),
                                     home / "data/fnm/aliases/default"));
    writeText(home / "code/api/.python-version", "3.10\n");
    writeText(home / "code/api/svc/.venv/pyvenv.cfg", "home = " + (home / ".pyenv/versions/3.9.18/bin").string() + "\n");
    writeText(home / "code/crate/rust-toolchain.toml", "[toolchain]\nchannel = \"1.70\"\n");
    writeText(home / "code/web/.nvmrc", "v19\n");
    writeText(home / "code/gem/.ruby-version", ">= 2.7\n");
    writeText(home / ".config/kelvo/config.json",
              R"({"projectRoots": ["~/code"], "extraExclusions": [], "defaultLevel": "safe", "keepRecentDays": 3})");
    // The fnm on the search path only writes down how it was called.
    writeText(root / "bin/fnm", "#!/bin/sh\necho \"$@\" >> " + (root / "fnm-calls").string() + "\n");
    std::filesystem::permissions(root / "bin/fnm", std::filesystem::perms::owner_all);
    environment["XDG_DATA_HOME"] = (home / "data").string();

    age(home, std::chrono::system_clock::now() - 400 * 24h);
    age(home / ".pyenv/versions/3.7.16", std::chrono::system_clock::now() - 7 * 24h);
    writeFile(home / ".pyenv/versions/3.8.18/lib/cacert.pem", 100);
    testing::NamedProcess node(home / ".nvm/versions/node/v23.0.0/bin/node-server");
    ASSERT_GT(node.pid(), 0);

    const auto scan = testing::runTool({"--catalog", "linux", "prepare", "--json"}, environment);
    ASSERT_EQ(scan.exitStatus, 0) << scan.standardError;
    const auto plan = nlohmann::json::parse(scan.standardOutput);
    std::map<std::string, nlohmann::json> offered;
    for (const auto& target : plan["targets"]) offered[target["id"]] = target;
    std::vector<std::string> chosen{"--catalog", "linux", "prepare", "clean", "--yes"};
    for (const auto& version : versions) {
        ASSERT_EQ(offered.contains(version.id), version.offered) << version.id;
        if (!version.offered) continue;
        EXPECT_FALSE(offered[version.id]["preselected"]) << version.id;
        EXPECT_GE(offered[version.id]["sizeBytes"], 40000) << version.id;
        chosen.insert(chosen.end(), {"--id", version.id});
    }
    EXPECT_EQ(offered["runtime:pyenv/3.8.18"]["notes"], "not the default (3.11.7); pinned by no project; not run for 13 months");
    EXPECT_EQ(offered["runtime:fnm/v16.0.0"]["command"],
              "test -d '" + (home / "data/fnm/node-versions/v16.0.0").string() + "'; fnm uninstall v16.0.0");
    ASSERT_TRUE(plan.contains("notes"));
    EXPECT_NE(plan["notes"].dump().find("gem/.ruby-version"), std::string::npos) << plan["notes"];

    const auto clean = testing::runTool(chosen, environment);
    ASSERT_EQ(clean.exitStatus, 0) << clean.standardOutput << clean.standardError;
    for (const auto& version : versions) {
        const bool goneByPath = version.offered && !std::string(version.id).starts_with("runtime:fnm/");
        EXPECT_EQ(std::filesystem::exists(home / version.folder), !goneByPath) << version.id;
    }
    std::ifstream calls(root / "fnm-calls");
    std::string called;
    std::getline(calls, called);
    EXPECT_EQ(called, "uninstall v16.0.0");
}

}  // namespace
}  // namespace kelvo
