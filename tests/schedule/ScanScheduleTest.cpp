// The scheduled scan's unit files, written and removed through a stub of systemctl.
#include <gtest/gtest.h>

#include <cstdlib>

#include "kelvo/LocalFiles.h"
#include "kelvo/ScanSchedule.h"
#include "kelvo/platform/UserServiceManager.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using Frequency = ScanSchedule::Frequency;
using Manager = ScanSchedule::Outcome::Manager;
using Words = std::vector<std::string>;

struct StubManager final : platform::UserServiceManager {
    bool up = true;
    Words failing;                   // the command that answers `status`
    std::optional<int> status = 1;   // nothing: systemctl missing
    mutable std::vector<Words> calls;
    bool running() const override { return up; }
    std::optional<int> systemctl(const Words& arguments) const override {
        calls.push_back(arguments);
        return arguments == failing ? status : 0;
    }
};

struct ScheduleTest : ::testing::Test {
    testing::TempDir dir;
    std::shared_ptr<StubManager> manager = std::make_shared<StubManager>();
    ScanSchedule schedule{dir / "units", dir / "my $bin%/kelvo", 1LL << 30, manager};
    std::string unit(std::string_view name) { return LocalFiles::read(dir / "units" / name).value_or(""); }
};

TEST_F(ScheduleTest, OnWritesTheUnitsAndEnablesTheTimerOffDisablesAndRemovesThem) {
    EXPECT_TRUE(schedule.set(Frequency::weekly).succeeded());
    EXPECT_EQ(manager->calls, (std::vector<Words>{{"daemon-reload"}, {"enable", "--now", "kelvo-scan.timer"}}));
    EXPECT_NE(unit("kelvo-scan.service").find("\nType=oneshot\nExecStart=\"" + dir.path().string() +
                                              "/my $bin%%/kelvo\" scan --quiet --notify-above 1073741824\n"),
              std::string::npos);
    EXPECT_EQ(schedule.status().frequency, Frequency::weekly);
    EXPECT_EQ(schedule.status().notifyAboveBytes, 1LL << 30);

    std::filesystem::create_directories(dir / "units/timers.target.wants");
    std::filesystem::create_symlink("../kelvo-scan.timer", dir / "units/timers.target.wants/kelvo-scan.timer");
    manager->calls.clear();
    const auto off = schedule.set(Frequency::off);
    EXPECT_TRUE(off.succeeded());
    EXPECT_EQ(off.files.size(), 2U);
    EXPECT_EQ(manager->calls, (std::vector<Words>{{"disable", "--now", "kelvo-scan.timer"}, {"daemon-reload"}}));
    EXPECT_TRUE(std::filesystem::is_empty(dir / "units/timers.target.wants"));
    EXPECT_EQ(unit("kelvo-scan.service") + unit("kelvo-scan.timer"), "");
    EXPECT_EQ(schedule.status().frequency, Frequency::off);
}

TEST_F(ScheduleTest, AManagerThatIsAbsentOrFailsLeavesTheCommandToRunLater) {
    const std::string both = "systemctl --user daemon-reload && systemctl --user enable --now kelvo-scan.timer";
    const struct {
        bool up;
        Words failing;
        std::optional<int> status;
        Frequency frequency;
        Manager manager;
        std::string later;
        bool timerStays;
    } rows[] = {
        {false, {}, 1, Frequency::daily, Manager::notRunning, both, true},
        {true, {"daemon-reload"}, std::nullopt, Frequency::daily, Manager::notRunning, both, true},
        {true, {"enable", "--now", "kelvo-scan.timer"}, 1, Frequency::daily, Manager::commandFailed,
         "systemctl --user enable --now kelvo-scan.timer", true},
        {true, {"disable", "--now", "kelvo-scan.timer"}, 5, Frequency::off, Manager::commandFailed,
         "systemctl --user disable --now kelvo-scan.timer", true},
        {false, {}, 1, Frequency::off, Manager::done, "", false},
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(schedule.set(Frequency::daily).succeeded());
        manager->up = row.up;
        manager->failing = row.failing;
        manager->status = row.status;
        const auto outcome = schedule.set(row.frequency);
        EXPECT_EQ(outcome.manager, row.manager) << row.later;
        EXPECT_EQ(outcome.laterCommand, row.later);
        EXPECT_EQ(outcome.commandStatus, row.manager == Manager::commandFailed ? row.status : std::nullopt) << row.later;
        EXPECT_EQ(schedule.status().frequency, row.timerStays ? Frequency::daily : Frequency::off) << row.later;
        manager->up = true;
        manager->failing.clear();
    }
}

TEST_F(ScheduleTest, TheWrittenUnitsPassSystemdAnalyzeVerify) {
    if (!LocalFiles::exists("/usr/bin/systemd-analyze")) GTEST_SKIP() << "systemd-analyze is not installed";
    testing::writeText(schedule.program, "#!/bin/sh\n");
    std::filesystem::permissions(schedule.program, std::filesystem::perms::owner_all);
    ASSERT_TRUE(schedule.set(Frequency::daily).succeeded());
    const auto units = dir / "units", output = dir / "verify.txt";
    EXPECT_EQ(std::system(("/usr/bin/systemd-analyze verify --man=no '" + (units / "kelvo-scan.service").string() + "' '" +
                           (units / "kelvo-scan.timer").string() + "' >'" + output.string() + "' 2>&1").c_str()), 0);
    EXPECT_EQ(LocalFiles::read(output), "");
}

}  // namespace
}  // namespace kelvo
