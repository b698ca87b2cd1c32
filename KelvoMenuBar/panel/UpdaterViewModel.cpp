#include "panel/UpdaterViewModel.h"

#include "desktop/Updater.h"

namespace kelvo::app {

UpdaterViewModel::UpdaterViewModel(Updater& updater, QObject* parent) : QObject(parent) {
    connect(&updater, &Updater::canCheckForUpdatesChanged, this, &UpdaterViewModel::assign);
    assign(updater.canCheckForUpdates());
}

void UpdaterViewModel::assign(bool canCheck) {
    canCheckForUpdates_ = canCheck;
    emit canCheckForUpdatesChanged(canCheck);
}

}  // namespace kelvo::app
