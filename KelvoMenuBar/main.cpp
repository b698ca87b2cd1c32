// kelvo-menubar: the tray application. Builds the application and hands it to the event loop.
#include <QApplication>

#include "AppDelegate.h"
#include "Icons.h"
#include "KelvoMenuBarApp.h"

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("kelvo-menubar");
    QApplication::setDesktopFileName(KELVO_APP_ID);
    kelvo::app::Icons::useThemes();
    const auto app = kelvo::app::KelvoMenuBarApp::live();
    kelvo::app::AppDelegate::applicationDidFinishLaunching(*app);
    return QApplication::exec();
}
