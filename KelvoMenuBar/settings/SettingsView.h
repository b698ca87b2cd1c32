#pragma once
// Edits the stored configuration: project folders, the keep-recent age, exclusions and
// enabled families and whether cleans go to the trash (nothing reaches the file before
// Save; Cancel and the close button drop the edits; a save that fails keeps them on screen
// and says why), plus three choices that act at once: start at login, the link to the
// command-line tool and the scheduled scan (off, daily, weekly). A new screen is built each time the settings open. When the
// configuration file is there but cannot be used, a notice above the settings says which
// file and why, and that the defaults are shown instead.
#include <QWidget>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "desktop/ShellServices.h"
#include "kelvo/AppModel.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;

namespace kelvo::app {

class PathListEditor;

class SettingsView : public QWidget {
    Q_OBJECT
public:
    SettingsView(AppModel& model, const ShellServices& shell, std::function<void()> onClose, QWidget* parent = nullptr);

    // Reads the configuration into the screen once; later calls do nothing.
    void loadIfNeeded();
    void save();

    QLabel* configProblem() const { return configProblem_; }
    PathListEditor* roots() const { return roots_; }
    PathListEditor* exclusions() const { return exclusions_; }
    QSpinBox* keepRecent() const { return keepRecent_; }
    // Only the families of the running catalog have one; null for the others.
    QCheckBox* familyToggle(Family family) const {
        const auto found = families_.find(family);
        return found == families_.end() ? nullptr : found->second;
    }
    QPushButton* scanCategoriesButton() const { return scanCategories_; }
    QCheckBox* checkVersion() const { return checkVersion_; }
    QCheckBox* moveToTrash() const { return moveToTrash_; }
    // Items in the order off, daily, weekly, each with its raw value as data.
    QComboBox* schedule() const { return schedule_; }
    QLabel* scheduleMessage() const { return scheduleMessage_; }
    QLabel* saveError() const { return saveError_; }
    QCheckBox* launchAtLogin() const { return launchAtLogin_; }
    QLabel* loginError() const { return loginError_; }
    QPushButton* installCliButton() const { return installCli_; }
    QLabel* cliInstalledMark() const { return cliInstalled_; }
    QLabel* cliMessage() const { return cliMessage_; }
    QPushButton* saveButton() const { return save_; }
    QPushButton* cancelButton() const { return cancel_; }
    QPushButton* closeButton() const { return close_; }

    // What a failed switch of start at login says before the system's own text.
    static constexpr const char* loginFailurePrefix = "No se pudo cambiar (ejecuta el .app empaquetado): ";

private:
    void scanCategories();
    void setLaunchAtLogin(bool on);
    void installCLI();
    void showKeepRecent(int days);
    void setSchedule(int index);

    AppModel& model_;
    const ShellServices& shell_;
    std::function<void()> onClose_;
    bool loaded_ = false;
    std::string defaultLevel_ = "moderate";

    QLabel* configProblem_;
    PathListEditor* roots_;
    QSpinBox* keepRecent_;
    QLabel* keepRecentLabel_;
    PathListEditor* exclusions_;
    std::map<Family, QCheckBox*> families_;
    QPushButton* scanCategories_;
    QWidget* scanningRow_;
    QPushButton* installCli_;
    QLabel* cliInstalled_;
    QLabel* cliMessage_;
    QCheckBox* checkVersion_;
    QCheckBox* moveToTrash_;
    // The file's choice as loaded: absent stays absent while the box is left unticked.
    std::optional<bool> loadedMoveToTrash_;
    QComboBox* schedule_;
    QLabel* scheduleMessage_;
    QLabel* saveError_;
    QCheckBox* launchAtLogin_;
    QLabel* loginError_;
    QPushButton* cancel_;
    QPushButton* save_;
    QPushButton* close_;
};

}  // namespace kelvo::app
