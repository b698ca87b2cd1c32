#pragma once
// The application: the one model, the updater (when the build names a feed), the tray
// icon and the panel window. With a tray, the panel is a frameless tool window with no
// taskbar entry that a click on the icon opens under it (or at the pointer) and a second
// click or the loss of focus hides; nothing shows at start but the icon. Without a tray
// host the panel is an ordinary window shown at start, and closing it quits.
#include <QElapsedTimer>
#include <QObject>
#include <QPoint>
#include <memory>

#include "desktop/ShellServices.h"
#include "kelvo/AppModel.h"

class QSystemTrayIcon;

namespace kelvo::app {

class PanelView;
class Updater;

class KelvoMenuBarApp : public QObject {
    Q_OBJECT
public:
    KelvoMenuBarApp(std::unique_ptr<AppModel> model, std::unique_ptr<Updater> updater, ShellServices shell = {},
                    QObject* parent = nullptr);
    ~KelvoMenuBarApp() override;
    // The live application: the model of the live environment, whose work comes back
    // through the Qt event loop, and the build's updater.
    static std::unique_ptr<KelvoMenuBarApp> live();

    AppModel& model() const { return *model_; }
    PanelView& panel() const { return *panel_; }
    QSystemTrayIcon* tray() const { return tray_; }
    bool usesTray() const { return tray_ != nullptr; }

    // With a tray: the icon appears. Without: the panel opens as a window.
    void start(bool trayAvailable);
    // Opens the panel at its place beside the icon, or hides it when it is open.
    void togglePanel(const QPoint& pointer);
    // Opens the panel (beside the icon, else at the pointer) and leaves it open when it is.
    void showPanel();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void openPanelAt(const QPoint& pointer);

    std::unique_ptr<AppModel> model_;
    std::unique_ptr<Updater> updater_;
    std::unique_ptr<PanelView> panel_;
    QSystemTrayIcon* tray_ = nullptr;
    // When a click on the icon first takes the focus from the open panel, the panel is
    // already hidden when the click arrives: that click must not open it again.
    QElapsedTimer hiddenByFocusLoss_;
};

}  // namespace kelvo::app
