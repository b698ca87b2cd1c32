// The scan's notification against a stub notification server on a private session bus
// (the test program runs under dbus-run-session).
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fstream>
#include <thread>

#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "kelvo/LocalFiles.h"
#include "kelvo/ScanNotice.h"
#include "support/Targets.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

TEST(ScanNotice, OneNotificationAtTheThresholdOfThePreselectionNoneBelowOrWithoutAServer) {
    if (!std::getenv("DBUS_SESSION_BUS_ADDRESS")) GTEST_SKIP() << "no private session bus: dbus-run-session is missing";
    testing::TempDir dir;
    std::vector<CleanTarget> targets{testing::targetOf("cache", CleanKind::paths({"/c"}), 6LL << 30),
                                     testing::targetOf("big", CleanKind::paths({"/b"}), 9LL << 30)};
    targets[1].level = Level::aggressive;  // never preselected: it does not count
    ScanNotice notice;
    notice.panelProgram = dir / "kelvo-menubar";
    notice.wait = std::chrono::seconds(20);  // the stub closes each notification at once
    notice.thresholdBytes = 6LL << 30;
    EXPECT_EQ(notice.after(targets), ScanNotice::Outcome::noService);

    const std::string stub = std::string(KELVO_TESTS_SOURCE) + "/notify/notification_stub.py";
    const std::string record = dir / "record", ready = dir / "ready";
    // In the background; it ends with the bus, which ends with this program.
    ASSERT_EQ(std::system(("/usr/bin/python3 '" + stub + "' '" + record + "' '" + ready + "' &").c_str()), 0);
    for (int tries = 0; tries < 300 && !LocalFiles::exists(ready); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ASSERT_TRUE(LocalFiles::exists(ready)) << "the stub notification server did not start";

    notice.thresholdBytes = (6LL << 30) + 1;
    EXPECT_EQ(notice.after(targets), ScanNotice::Outcome::belowThreshold);
    notice.thresholdBytes = 6LL << 30;
    EXPECT_EQ(notice.after(targets), ScanNotice::Outcome::shown);

    std::vector<nlohmann::json> calls;
    std::ifstream lines(record);
    for (std::string line; std::getline(lines, line);) calls.push_back(nlohmann::json::parse(line));
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0]["summary"], L10n::t("notice.summary", Format::bytes(6LL << 30)));
    EXPECT_NE(calls[0]["body"].get<std::string>().find("6.00 GB"), std::string::npos) << calls[0]["body"];
    EXPECT_EQ(calls[0]["actions"], nlohmann::json({ScanNotice::openAction, L10n::t("notice.open")}));
}

}  // namespace
}  // namespace kelvo
