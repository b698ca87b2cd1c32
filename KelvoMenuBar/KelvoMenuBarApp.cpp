#include "KelvoMenuBarApp.h"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QScreen>
#include <QShortcut>
#include <QSystemTrayIcon>

#include "AppText.h"
#include "Icons.h"
#include "PanelView.h"
#include "desktop/TrayPlacement.h"
#include "desktop/Updater.h"

namespace kelvo::app {

KelvoMenuBarApp::KelvoMenuBarApp(std::unique_ptr<AppModel> model, std::unique_ptr<Updater> updater, ShellServices shell,
                                 QObject* parent)
    : QObject(parent), model_(std::move(model)), updater_(std::move(updater)),
      panel_(std::make_unique<PanelView>(*model_, updater_.get(), std::move(shell))) {}

KelvoMenuBarApp::~KelvoMenuBarApp() = default;

std::unique_ptr<KelvoMenuBarApp> KelvoMenuBarApp::live() {
    Dispatcher toEventLoop = [](Closure closure) {
        QMetaObject::invokeMethod(qApp, std::move(closure), Qt::QueuedConnection);
    };
    auto model = std::make_unique<AppModel>(std::move(toEventLoop), Environment::live());
    return std::make_unique<KelvoMenuBarApp>(std::move(model), Updater::live(&ShellServices::openInBrowser));
}

void KelvoMenuBarApp::start(bool trayAvailable) {
    if (!trayAvailable) {
        panel_->setAttribute(Qt::WA_QuitOnClose, true);
        panel_->show();
        return;
    }
    panel_->setWindowFlags(Qt::Tool | Qt::FramelessWindowHint);
    panel_->installEventFilter(this);
    // Escape closes the panel as it closes a menu; the icon opens it again. (Without a tray
    // the panel is the only window, and Escape leaves it alone.)
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), panel_.get());
    connect(escape, &QShortcut::activated, panel_.get(), &QWidget::hide);
    tray_ = new QSystemTrayIcon(Icons::symbol("trash"), this);
    tray_->setToolTip(AppText::t("Kelvo Cleaner"));
    connect(tray_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick) togglePanel(QCursor::pos());
    });
    tray_->show();
}

void KelvoMenuBarApp::togglePanel(const QPoint& pointer) {
    constexpr qint64 sameClickMs = 300;
    if (panel_->isVisible() || (hiddenByFocusLoss_.isValid() && hiddenByFocusLoss_.elapsed() < sameClickMs)) {
        panel_->hide();
        hiddenByFocusLoss_.invalidate();
        return;
    }
    openPanelAt(pointer);
}

void KelvoMenuBarApp::showPanel() {
    if (!tray_) {
        panel_->show();
        panel_->raise();
        return;
    }
    openPanelAt(QCursor::pos());
}

void KelvoMenuBarApp::openPanelAt(const QPoint& pointer) {
    const QScreen* screen = QGuiApplication::screenAt(pointer);
    if (!screen) screen = QGuiApplication::primaryScreen();
    const QRect icon = tray_ ? tray_->geometry() : QRect();
    panel_->move(panelPosition(icon, pointer, screen->availableGeometry(), PanelView::panelSize));
    panel_->show();
    panel_->raise();
    panel_->activateWindow();
}

bool KelvoMenuBarApp::eventFilter(QObject* watched, QEvent* event) {
    // Losing focus hides the panel, as a menu would close; a dialog of the panel's own
    // (the updater's) takes focus without closing it.
    if (watched == panel_.get() && event->type() == QEvent::WindowDeactivate && !QApplication::activeModalWidget() &&
        !(QApplication::activeWindow() && QApplication::activeWindow()->isAncestorOf(panel_.get()))) {
        panel_->hide();
        hiddenByFocusLoss_.start();
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace kelvo::app
