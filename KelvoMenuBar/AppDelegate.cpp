#include "AppDelegate.h"

#include <QApplication>

#include "KelvoMenuBarApp.h"

namespace kelvo::app {

void AppDelegate::applicationDidFinishLaunching(KelvoMenuBarApp& app, bool trayAvailable) {
    QApplication::setQuitOnLastWindowClosed(!trayAvailable);
    app.start(trayAvailable);
}

}  // namespace kelvo::app
