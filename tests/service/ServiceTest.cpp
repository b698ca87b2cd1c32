#include <gtest/gtest.h>

#include "kelvo/CleanService.h"
#include "kelvo/Config.h"
#include "kelvo/PrepareService.h"
#include "support/ScopedEnvironment.h"
#include "support/Targets.h"
#include "support/TempDir.h"

namespace kelvo::testing {
namespace {

namespace fs = std::filesystem;
using Ids = std::vector<std::string>;

// A clean goes through the service's guard, probe and command runner, with the run's flags.
TEST(PrepareService, CleanUsesTheServicesGuardProbeAndCommandRunner) {
    TempDir root;
    const fs::path home = root / "home";
    std::vector<std::pair<std::string, ShellVariables>> commands;
    const PrepareService prepare{.env = {.home = home, .tmpDir = root / "tmp", .catalog = CatalogProfile::macos},
                                 .probe = std::make_shared<StubProcessProbe>(Ids{"Simulator"}),
                                 .runCommand = [&](const std::string& line, const ShellVariables& variables) {
                                     commands.emplace_back(line, variables);
                                     return 0;
                                 }};
    const auto leftover = writeFile(home / "Library/Caches/com.gone.Editor/db", 4096).parent_path();
    const auto kept = writeFile(home / "Library/Caches/com.kept.App/db", 4096);
    const auto inTmp = writeFile(root / "tmp/com.gone.Editor/db", 4096).parent_path();
    const auto inHome = targetOf("leftover:com.gone.Editor", CleanKind::paths({leftover}), 4096, Family::appLeftovers);
    const auto outside = targetOf("leftover:com.tmp.Thing", CleanKind::paths({inTmp}), 4096, Family::appLeftovers);
    const auto runtime = targetOf("sim-runtime:R1", CleanKind::command("xcrun simctl runtime delete R1"), 5000, Family::simulators);
    const auto dryRun = prepare.clean({inHome, outside}, true, false);
    EXPECT_EQ(std::pair(dryRun.deleted, dryRun.freedBytes), std::pair(Ids{inHome.id}, std::int64_t{4096}));
    EXPECT_TRUE(fs::exists(leftover / "db"));
    const auto report = prepare.clean({inHome, outside, runtime}, false, false);
    EXPECT_EQ(report.deleted, Ids{inHome.id});
    EXPECT_EQ(report.skipped, (std::vector<ReportEntry>{{outside.id, {Reason::Code::protectedPath, inTmp.string()}},
                                                        {runtime.id, {Reason::Code::processRunning, "Simulator"}}}));
    EXPECT_FALSE(fs::exists(leftover));
    EXPECT_TRUE(fs::exists(kept) && fs::exists(inTmp / "db"));
    EXPECT_EQ(prepare.clean({runtime}, false, true).freedUnknown, Ids{runtime.id});
    // The command ran once, forced, with the environment's own folders, not with those Kelvo was started with.
    EXPECT_EQ(commands, (std::vector<std::pair<std::string, ShellVariables>>{
                            {"xcrun simctl runtime delete R1", {{"HOME", home.string()}, {"TMPDIR", (root / "tmp").string()}}}}));
}

// A service given null dependencies uses the live ones, never calling through a null (the executor
// holds them the same way).
TEST(LiveDefaults, CleanServiceRunsCommandsThroughTheShell) {
    TempDir home;
    const ScopedEnvironment path(ScopedEnvironment::Values{{"PATH", "/usr/bin:/bin"}});
    const auto marker = home / "ran";
    const auto command = targetOf("touch", CleanKind::command("touch '" + marker.string() + "'"));
    const CleanService service{.env = Environment::fromConfig(home.path(), home / "tmp", Config::defaults()), .probe = nullptr,
                               .runCommand = nullptr};
    EXPECT_EQ(service.clean({command}, false, false).deleted, Ids{"touch"});
    EXPECT_TRUE(fs::exists(marker));
}

}  // namespace
}  // namespace kelvo::testing
