#pragma once
// The footer's link-style "check for updates" button, greyed out while a check runs.
#include <QPushButton>

namespace kelvo::app {

class Updater;
class UpdaterViewModel;

class UpdatesMenuButton : public QPushButton {
    Q_OBJECT
public:
    explicit UpdatesMenuButton(Updater& updater, QWidget* parent = nullptr);

private:
    UpdaterViewModel* vm_;
};

}  // namespace kelvo::app
