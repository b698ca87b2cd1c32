// The updater against a feed served on 127.0.0.1: the button is greyed out while the
// answer is awaited, the dialog says what the feed said, and its button opens the page.
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>

#include "PanelFixture.h"
#include "desktop/Updater.h"
#include "panel/UpdatesMenuButton.h"
#include "support/LoopbackServer.h"

namespace kelvo::app::testing {
namespace {

TEST(Updater, ButtonIsGreyedOutWhileACheckRunsAndTheDialogOffersTheNewerRelease) {
    kelvo::testing::LoopbackServer feed;  // holds its answer until the test gives it
    std::vector<QUrl> opened;
    Updater updater("1.0.0", VersionGate::download(feed.url("/feed.json")), [&](const QUrl& url) { opened.push_back(url); });
    UpdatesMenuButton button(updater);
    button.show();
    ASSERT_TRUE(button.isEnabled());
    QSignalSpy answered(&updater, &Updater::checked);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_FALSE(button.isEnabled());
    QTest::mouseClick(&button, Qt::LeftButton);  // ignored: one check at a time

    feed.answer(kelvo::testing::LoopbackServer::response(
        "200 OK", R"({"version": "1.2.0", "url": "https://example.org/kelvo-1.2.0"})"));
    ASSERT_TRUE(answered.wait(30000));
    EXPECT_EQ(answered.count(), 1);
    EXPECT_EQ(answered.at(0).at(0).value<Updater::Answer>(), Updater::Answer::newer);
    EXPECT_TRUE(button.isEnabled());
    ASSERT_NE(updater.dialog(), nullptr);
    EXPECT_EQ(updater.dialog()->text(), "Kelvo 1.2.0 is available (you have 1.0.0).");
    for (auto* choice : updater.dialog()->findChildren<QPushButton*>())
        if (choice->text() == "Open the download page") choice->click();
    EXPECT_EQ(opened, std::vector<QUrl>{QUrl("https://example.org/kelvo-1.2.0")});
}

TEST(Updater, AnswerComparesVersionsByTheGateRule) {
    const struct { const char* feed; Updater::Answer expected; } rows[] = {
        {R"({"version": "1.10", "url": "u"})", Updater::Answer::newer},
        {R"({"version": "1.2.0", "url": "u"})", Updater::Answer::upToDate},
        {R"({"version": 2, "url": "u"})", Updater::Answer::failed},
    };
    for (const auto& row : rows) EXPECT_EQ(Updater::answer("1.2", Updater::Release::decode(row.feed)), row.expected) << row.feed;
}

}  // namespace
}  // namespace kelvo::app::testing
