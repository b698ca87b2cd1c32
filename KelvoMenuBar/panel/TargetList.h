#pragma once
// The panel's content: the empty state (an hourglass while scanning, sparkles otherwise,
// with its hint) or the grouped list, where a click anywhere on a row ticks or unticks
// that target.
#include <QWidget>

#include "kelvo/AppModel.h"

class QLabel;
class QListView;
class QStackedLayout;

namespace kelvo::app {

class TargetListModel;

class TargetList : public QWidget {
    Q_OBJECT
public:
    explicit TargetList(AppModel& model, QWidget* parent = nullptr);
    void targetsChanged();
    void selectionChanged();
    void phaseChanged();

    QListView* view() const { return view_; }
    TargetListModel* rows() const { return rows_; }
    QLabel* emptyText() const { return emptyText_; }
    // The symbol the empty state shows.
    const char* emptySymbol() const;

private:
    AppModel& model_;
    TargetListModel* rows_;
    QListView* view_;
    QLabel* emptyIcon_;
    QLabel* emptyText_;
    QStackedLayout* stack_;
};

}  // namespace kelvo::app
