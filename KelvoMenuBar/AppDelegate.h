#pragma once
// Receives the end of the application's launch and sets its policy: with a tray the
// application lives in the tray alone (no window, no taskbar entry, and closing a window
// does not end it); without one, the panel is its main window.
#include <QSystemTrayIcon>

namespace kelvo::app {

class KelvoMenuBarApp;

class AppDelegate {
public:
    static void applicationDidFinishLaunching(KelvoMenuBarApp& app,
                                              bool trayAvailable = QSystemTrayIcon::isSystemTrayAvailable());
};

}  // namespace kelvo::app
