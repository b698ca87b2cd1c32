#pragma once
// The one window of the application, 420 x 560: the update-required screen while an
// update is required, else the settings while they are open, else onboarding while no
// configuration exists and the user has not left it, else the main panel (header, disk
// bar, scan row, the last scan's notes when it has any, the grouped list or its empty
// state, footer). It keeps three view flags
// and nothing else; every figure comes from the model, and each change the model
// publishes redraws the part that shows it. Switching the domain clears the results.
#include <QWidget>

#include "desktop/ShellServices.h"
#include "kelvo/AppModel.h"
#include "panel/PanelRules.h"

class QLabel;
class QStackedLayout;

namespace kelvo::app {

class DiskBar;
class Footer;
class Header;
class ModelBridge;
class OnboardingView;
class ScanRow;
class SettingsView;
class TargetList;
class UpdateRequiredView;
class Updater;

class PanelView : public QWidget {
    Q_OBJECT
public:
    static constexpr QSize panelSize{420, 560};
    // The notes shown under the scan row; all of them are in its tooltip.
    static constexpr std::size_t maxNotesShown = 3;

    // The updater is optional (no check-for-updates button without one); both it and the
    // model must outlive the panel.
    PanelView(AppModel& model, Updater* updater, ShellServices shell = {}, QWidget* parent = nullptr);

    bool confirming() const { return confirming_; }
    bool showingSettings() const { return showingSettings_; }
    bool onboardingDismissed() const { return onboardingDismissed_; }
    Screen currentScreen() const;

    Header* header() const { return header_; }
    DiskBar* diskBar() const { return diskBar_; }
    ScanRow* scanRow() const { return scanRow_; }
    QLabel* scanNotes() const { return notes_; }
    TargetList* targetList() const { return targetList_; }
    Footer* footer() const { return footer_; }
    UpdateRequiredView* updateRequiredView() const { return updateRequired_; }
    OnboardingView* onboardingView() const { return onboarding_; }
    SettingsView* settingsView() const { return settings_; }  // null unless open
    QWidget* mainPanel() const { return main_; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void modelChanged(AppModel::Field field);
    void setConfirming(bool confirming);
    void setShowingSettings(bool showing);
    void showScreen();

    AppModel& model_;
    ShellServices shell_;
    ModelBridge* bridge_;
    bool confirming_ = false;
    bool showingSettings_ = false;
    bool onboardingDismissed_ = false;

    QStackedLayout* screens_;
    UpdateRequiredView* updateRequired_;
    OnboardingView* onboarding_;
    SettingsView* settings_ = nullptr;
    QWidget* main_;
    Header* header_;
    DiskBar* diskBar_;
    ScanRow* scanRow_;
    QLabel* notes_;
    TargetList* targetList_;
    Footer* footer_;
};

}  // namespace kelvo::app
