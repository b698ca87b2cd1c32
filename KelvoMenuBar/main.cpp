// kelvo-menubar: the tray application. Builds the application and hands it to the event loop.
#include <QApplication>
#include <QCommandLineParser>

#include "AppDelegate.h"
#include "Icons.h"
#include "KelvoMenuBarApp.h"

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("kelvo-menubar");
    QApplication::setDesktopFileName(KELVO_APP_ID);
    QCommandLineParser options;
    options.addHelpOption();
    const QCommandLineOption show("show", "Open the panel at start.");
    options.addOption(show);
    options.process(application);
    kelvo::app::Icons::useThemes();
    const auto app = kelvo::app::KelvoMenuBarApp::live();
    kelvo::app::AppDelegate::applicationDidFinishLaunching(*app);
    if (options.isSet(show)) app->showPanel();
    return QApplication::exec();
}
