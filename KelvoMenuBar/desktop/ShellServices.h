#pragma once
// The desktop services the screens call, in one value so tests replace them: start at
// login, the command-line link, the scheduled scan, opening an address in the default
// browser, quitting.
// Each member left out is the live one.
#include <functional>

#include "desktop/Autostart.h"
#include "desktop/CliLink.h"
#include "desktop/Updater.h"
#include "kelvo/ScanSchedule.h"

namespace kelvo::app {

struct ShellServices {
    Autostart autostart;
    CliLink cliLink;
    // The scheduled scan of the model's user, as `kelvo schedule` sets it.
    std::function<ScanSchedule(const Environment&)> schedule = &ScanSchedule::forEnvironment;
    UrlOpener openUrl = &openInBrowser;
    std::function<void()> quit = &quitApplication;

    static void openInBrowser(const QUrl& url);  // the desktop's default (xdg-open)
    static void quitApplication();
};

}  // namespace kelvo::app
