#include "panel/UpdatesMenuButton.h"

#include "AppText.h"
#include "panel/SmallWidgets.h"
#include "desktop/Updater.h"
#include "panel/UpdaterViewModel.h"

namespace kelvo::app {

UpdatesMenuButton::UpdatesMenuButton(Updater& updater, QWidget* parent)
    : QPushButton(AppText::t("panel.checkUpdates"), parent), vm_(new UpdaterViewModel(updater, this)) {
    styleAsLink(this, true);
    setEnabled(vm_->canCheckForUpdates());
    connect(vm_, &UpdaterViewModel::canCheckForUpdatesChanged, this, &QPushButton::setEnabled);
    connect(this, &QPushButton::clicked, &updater, &Updater::checkForUpdates);
}

}  // namespace kelvo::app
