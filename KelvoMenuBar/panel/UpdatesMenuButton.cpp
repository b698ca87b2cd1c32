#include "panel/UpdatesMenuButton.h"

#include "AppText.h"
#include "desktop/Updater.h"
#include "panel/UpdaterViewModel.h"

namespace kelvo::app {

UpdatesMenuButton::UpdatesMenuButton(Updater& updater, QWidget* parent)
    : QPushButton(AppText::t("panel.checkUpdates"), parent), vm_(new UpdaterViewModel(updater, this)) {
    setFlat(true);
    setStyleSheet("QPushButton { color: palette(link); font-size: 11px; border: none; }"
                  "QPushButton:disabled { color: palette(placeholder-text); }");
    setCursor(Qt::PointingHandCursor);
    setEnabled(vm_->canCheckForUpdates());
    connect(vm_, &UpdaterViewModel::canCheckForUpdatesChanged, this, &QPushButton::setEnabled);
    connect(this, &QPushButton::clicked, &updater, &Updater::checkForUpdates);
}

}  // namespace kelvo::app
