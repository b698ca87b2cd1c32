#include "desktop/Updater.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <nlohmann/json.hpp>

#include "AppText.h"

namespace kelvo::app {

std::optional<Updater::Release> Updater::Release::decode(const std::string& text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object() || !json.contains("version") || !json.contains("url")) return std::nullopt;
    if (!json["version"].is_string() || !json["url"].is_string()) return std::nullopt;
    return Release{json["version"].get<std::string>(), json["url"].get<std::string>()};
}

Updater::Updater(std::string currentVersion, VersionFetch fetch, UrlOpener openUrl, QObject* parent)
    : QObject(parent), currentVersion_(std::move(currentVersion)), fetch_(std::move(fetch)), openUrl_(std::move(openUrl)) {}

Updater::~Updater() { delete dialog_; }

std::unique_ptr<Updater> Updater::live(UrlOpener openUrl) {
    const std::string feed = KELVO_UPDATE_FEED_URL;
    if (feed.empty()) return nullptr;
    return std::make_unique<Updater>(KELVO_VERSION, VersionGate::download(feed), std::move(openUrl));
}

Updater::Answer Updater::answer(const std::string& currentVersion, const std::optional<Release>& release) {
    if (!release) return Answer::failed;
    return VersionGate::isOlder(currentVersion, release->version) ? Answer::newer : Answer::upToDate;
}

void Updater::checkForUpdates() {
    if (!canCheck_) return;
    setCanCheck(false);
    // The previous download has ended (its answer made the check possible again): replacing
    // it joins at once. An answer that arrives after the updater is gone is dropped.
    download_ = std::jthread([fetch = fetch_, self = QPointer<Updater>(this)] {
        auto body = fetch();
        QMetaObject::invokeMethod(qApp, [self, body = std::move(body)] {
            if (self) self->finish(body);
        }, Qt::QueuedConnection);
    });
}

void Updater::finish(const std::optional<std::string>& body) {
    const auto release = body ? Release::decode(*body) : std::nullopt;
    const Answer result = answer(currentVersion_, release);
    delete dialog_;
    dialog_ = new QMessageBox(QMessageBox::Information, AppText::t("update.title"), QString());
    switch (result) {
        case Answer::failed: dialog_->setText(AppText::t("update.failed")); break;
        case Answer::upToDate: dialog_->setText(AppText::t("update.upToDate", currentVersion_)); break;
        case Answer::newer: {
            dialog_->setText(AppText::t("update.available", release->version, currentVersion_));
            auto* download = dialog_->addButton(AppText::t("update.download"), QMessageBox::AcceptRole);
            connect(download, &QPushButton::clicked, this,
                    [this, url = QUrl(QString::fromStdString(release->url))] { openUrl_(url); });
            break;
        }
    }
    dialog_->addButton(QMessageBox::Close);
    dialog_->open();  // never a nested event loop
    setCanCheck(true);
    emit checked(result);
}

void Updater::setCanCheck(bool canCheck) {
    if (canCheck_ == canCheck) return;
    canCheck_ = canCheck;
    emit canCheckForUpdatesChanged(canCheck);
}

}  // namespace kelvo::app
