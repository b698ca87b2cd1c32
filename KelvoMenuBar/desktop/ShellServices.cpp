#include "desktop/ShellServices.h"

#include <QCoreApplication>
#include <QDesktopServices>

namespace kelvo::app {

void ShellServices::openInBrowser(const QUrl& url) { QDesktopServices::openUrl(url); }

void ShellServices::quitApplication() { QCoreApplication::quit(); }

}  // namespace kelvo::app
