#pragma once
// The panel's header: the domain switch and the gear button on the first row; the
// selected bytes and the total recoverable bytes on the second.
#include <QWidget>

#include "kelvo/AppModel.h"

class QButtonGroup;
class QLabel;
class QPushButton;
class QToolButton;

namespace kelvo::app {

class Header : public QWidget {
    Q_OBJECT
public:
    explicit Header(AppModel& model, QWidget* parent = nullptr);
    void refresh();

    QPushButton* domainButton(AppModel::Domain domain) const;
    QToolButton* gearButton() const { return gear_; }
    QLabel* selectedLabel() const { return selected_; }
    QLabel* totalLabel() const { return total_; }

signals:
    void settingsRequested();

private:
    AppModel& model_;
    QButtonGroup* domains_;
    QToolButton* gear_;
    QLabel* selected_;
    QLabel* total_;
};

}  // namespace kelvo::app
