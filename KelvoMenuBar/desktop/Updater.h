#pragma once
// A small updater of our own: it downloads a JSON feed naming the newest release,
// {"version": "1.2.0", "url": "https://..."}, compares that version with the running one
// by the version gate's rule, and shows a small dialog: up to date, or a newer version
// with a button that opens its download page. The download runs on a thread the updater
// owns and joins when it goes; the answer comes back through the event loop. One check at
// a time: canCheckForUpdates is false while one runs.
#include <QObject>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "kelvo/VersionGate.h"

class QMessageBox;

namespace kelvo::app {

using UrlOpener = std::function<void(const QUrl&)>;

class Updater : public QObject {
    Q_OBJECT
public:
    struct Release {
        std::string version;
        std::string url;
        // Nothing unless both members are strings.
        static std::optional<Release> decode(const std::string& text);
    };
    enum class Answer { upToDate, newer, failed };

    Updater(std::string currentVersion, VersionFetch fetch, UrlOpener openUrl, QObject* parent = nullptr);
    ~Updater() override;
    // The build's feed, or nothing when the build names no feed (then there is no updater).
    static std::unique_ptr<Updater> live(UrlOpener openUrl);

    bool canCheckForUpdates() const { return canCheck_; }
    void checkForUpdates();
    QMessageBox* dialog() const { return dialog_; }
    static Answer answer(const std::string& currentVersion, const std::optional<Release>& release);

signals:
    void canCheckForUpdatesChanged(bool canCheck);
    void checked(kelvo::app::Updater::Answer answer);

private:
    void finish(const std::optional<std::string>& body);
    void setCanCheck(bool canCheck);

    std::string currentVersion_;
    VersionFetch fetch_;
    UrlOpener openUrl_;
    bool canCheck_ = true;
    QMessageBox* dialog_ = nullptr;
    std::jthread download_;  // last: joined before the rest goes
};

}  // namespace kelvo::app
