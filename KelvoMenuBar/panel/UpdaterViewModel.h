#pragma once
// Mirrors the updater's canCheckForUpdates for the button that offers a check: false
// until the updater's current value is read at construction, then every value it reports.
#include <QObject>

namespace kelvo::app {

class Updater;

class UpdaterViewModel : public QObject {
    Q_OBJECT
public:
    explicit UpdaterViewModel(Updater& updater, QObject* parent = nullptr);
    bool canCheckForUpdates() const { return canCheckForUpdates_; }

signals:
    void canCheckForUpdatesChanged(bool canCheck);

private:
    void assign(bool canCheck);
    bool canCheckForUpdates_ = false;
};

}  // namespace kelvo::app
