#pragma once
// The scan row: scan (or rescan), and while scanning a busy indicator and a cancel
// button; with results, select all and select none.
#include <QWidget>

#include "kelvo/AppModel.h"

class QProgressBar;
class QPushButton;

namespace kelvo::app {

class ScanRow : public QWidget {
    Q_OBJECT
public:
    explicit ScanRow(AppModel& model, QWidget* parent = nullptr);
    void refresh();

    QPushButton* scanButton() const { return scan_; }
    QPushButton* cancelButton() const { return cancel_; }
    QPushButton* selectAllButton() const { return all_; }
    QPushButton* selectNoneButton() const { return none_; }

private:
    AppModel& model_;
    QPushButton* scan_;
    QProgressBar* progress_;
    QPushButton* cancel_;
    QPushButton* all_;
    QPushButton* none_;
};

}  // namespace kelvo::app
