#pragma once
// Greets a user who has no configuration yet and settles the enabled families: every
// family, those found on this machine, or a manual choice in the settings (which starts
// from a file with every family enabled). It also shows the folders found to hold the
// user's projects, checked, lets the user uncheck them or add others through a folder
// picker, and stores the checked ones as the project folders, which the detection walks.
#include <QStringList>
#include <QWidget>
#include <functional>

#include "kelvo/AppModel.h"

class QLabel;
class QListWidget;
class QPushButton;

namespace kelvo::app {

class OnboardingView : public QWidget {
    Q_OBJECT
public:
    OnboardingView(AppModel& model, std::function<void()> onOpenSettings, std::function<void()> onDone,
                   QWidget* parent = nullptr);
    bool working() const { return working_; }

    QPushButton* detectButton() const { return detect_; }
    QWidget* detectingRow() const { return detecting_; }
    QPushButton* enableAllButton() const { return enableAll_; }
    QPushButton* chooseManuallyButton() const { return chooseManually_; }
    QLabel* saveError() const { return saveError_; }
    QListWidget* projectFolders() const { return folders_; }
    QPushButton* addFolderButton() const { return addFolder_; }
    // The checked folders as stored: "~/code" for a folder under the home.
    QStringList checkedFolders() const;
    // What the add button asks for a folder; empty text adds nothing. Live: the folder dialog.
    void setFolderPicker(std::function<QString()> pick) { pickFolder_ = std::move(pick); }

private:
    void autodetect();
    void setWorking(bool working);
    void addFolder(const QString& folder, bool checked);
    // Stores the choice with the checked folders; true when it was saved, else the screen
    // stays and says why.
    bool complete(const std::optional<std::set<Family>>& enabledFamilies);

    AppModel& model_;
    std::function<void()> onOpenSettings_;
    std::function<void()> onDone_;
    bool working_ = false;
    QPushButton* detect_;
    QWidget* detecting_;
    QPushButton* enableAll_;
    QPushButton* chooseManually_;
    QLabel* saveError_;
    QListWidget* folders_;
    QPushButton* addFolder_;
    std::function<QString()> pickFolder_;
};

}  // namespace kelvo::app
