#pragma once
// The panel's footer: the last run's result line, then the cleaning indicator, the
// confirmation box or the action button, then the updates button (with an updater) and Quit.
#include <QWidget>
#include <functional>

#include "kelvo/AppModel.h"

class QLabel;
class QPushButton;

namespace kelvo::app {

class ConfirmBox;
class Updater;

class Footer : public QWidget {
    Q_OBJECT
public:
    Footer(AppModel& model, Updater* updater, std::function<void()> quit, QWidget* parent = nullptr);
    void refresh(bool confirming);

    QWidget* resultRow() const { return resultRow_; }
    QLabel* resultText() const { return resultText_; }
    QWidget* cleaningRow() const { return cleaningRow_; }
    ConfirmBox* confirmBox() const { return confirmBox_; }
    QPushButton* actionButton() const { return action_; }
    QPushButton* updatesButton() const { return updates_; }
    QPushButton* quitButton() const { return quit_; }

signals:
    void confirmRequested();
    void confirmCancelled();
    void confirmAccepted();

private:
    AppModel& model_;
    QWidget* resultRow_;
    QLabel* resultText_;
    QWidget* cleaningRow_;
    ConfirmBox* confirmBox_;
    QPushButton* action_;
    QPushButton* updates_ = nullptr;
    QPushButton* quit_;
};

}  // namespace kelvo::app
