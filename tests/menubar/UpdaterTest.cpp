// The updater against a feed served on 127.0.0.1: the button is greyed out while the
// answer is awaited, the dialog says what the feed said, and its button opens the page.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <future>
#include <thread>

#include "PanelFixture.h"
#include "desktop/Updater.h"
#include "panel/UpdatesMenuButton.h"
#include "support/ScopedEnvironment.h"

namespace kelvo::app::testing {
namespace {

// Serves one response to one connection once the test releases it.
class HeldFeed {
public:
    HeldFeed() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        ::bind(listener_, reinterpret_cast<sockaddr*>(&address), length);
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
        ::listen(listener_, 1);
        url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/feed.json";
        thread_ = std::thread([this, body = body_.get_future()]() mutable {
            const int client = ::accept(listener_, nullptr, nullptr);
            if (client < 0) return;
            const std::string text = body.get();
            const std::string response = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(text.size()) +
                                         "\r\nConnection: close\r\n\r\n" + text;
            (void)!::write(client, response.data(), response.size());
            ::close(client);
        });
    }
    ~HeldFeed() {
        ::shutdown(listener_, SHUT_RDWR);
        thread_.join();
        ::close(listener_);
    }
    void release(const std::string& body) { body_.set_value(body); }

    std::string url;

private:
    int listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::promise<std::string> body_;
    std::thread thread_;
};

TEST(Updater, ButtonIsGreyedOutWhileACheckRunsAndTheDialogOffersTheNewerRelease) {
    const kelvo::testing::ScopedEnvironment noProxy({{"http_proxy", std::nullopt}, {"all_proxy", std::nullopt}});
    HeldFeed feed;
    std::vector<QUrl> opened;
    Updater updater("1.0.0", VersionGate::download(feed.url), [&](const QUrl& url) { opened.push_back(url); });
    UpdatesMenuButton button(updater);
    button.show();
    ASSERT_TRUE(button.isEnabled());
    QSignalSpy answered(&updater, &Updater::checked);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_FALSE(button.isEnabled());
    QTest::mouseClick(&button, Qt::LeftButton);  // ignored: one check at a time

    feed.release(R"({"version": "1.2.0", "url": "https://example.org/kelvo-1.2.0"})");
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
    const struct {
        const char* feed;
        Updater::Answer expected;
    } rows[] = {
        {R"({"version": "1.10", "url": "u"})", Updater::Answer::newer},
        {R"({"version": "1.2", "url": "u"})", Updater::Answer::upToDate},
        {R"({"version": "1.2.0", "url": "u"})", Updater::Answer::upToDate},
        {R"({"version": 2, "url": "u"})", Updater::Answer::failed},
        {"<html>503</html>", Updater::Answer::failed},
    };
    for (const auto& row : rows) EXPECT_EQ(Updater::answer("1.2", Updater::Release::decode(row.feed)), row.expected) << row.feed;
}

}  // namespace
}  // namespace kelvo::app::testing
