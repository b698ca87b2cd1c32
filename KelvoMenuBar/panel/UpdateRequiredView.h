#pragma once
// Replaces the whole panel while the running version is below the published minimum:
// a button that opens the download page, and Quit.
#include <QWidget>
#include <functional>

#include "desktop/Updater.h"

class QPushButton;

namespace kelvo::app {

class UpdateRequiredView : public QWidget {
    Q_OBJECT
public:
    UpdateRequiredView(UrlOpener openUrl, std::function<void()> quit, QWidget* parent = nullptr);
    QPushButton* downloadButton() const { return download_; }
    QPushButton* quitButton() const { return quit_; }
    // The build's download page.
    static QUrl downloadPage();

private:
    QPushButton* download_;
    QPushButton* quit_;
};

}  // namespace kelvo::app
