#pragma once
// Greets a user who has no configuration yet and settles the enabled families: every
// family, those found on this machine, or a manual choice in the settings (which starts
// from a file with every family enabled).
#include <QWidget>
#include <functional>

#include "kelvo/AppModel.h"

class QLabel;
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

private:
    void autodetect();
    void setWorking(bool working);
    // Stores the choice; true when it was saved, else the screen stays and says why.
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
};

}  // namespace kelvo::app
