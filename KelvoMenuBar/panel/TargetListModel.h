#pragma once
// The scan results as one flat list for a view: for each family with targets (in the
// order of every family) a section row, then that family's targets in the model's order
// (largest first). Reset when the targets change; only the check marks change when the
// selection does, so thousands of rows stay smooth.
#include <QAbstractListModel>
#include <variant>
#include <vector>

#include "kelvo/AppModel.h"

namespace kelvo::app {

class TargetListModel : public QAbstractListModel {
    Q_OBJECT
public:
    struct Section {
        Family family;
        std::int64_t bytes = 0;
    };
    using Row = std::variant<Section, const CleanTarget*>;
    enum Role { RowRole = Qt::UserRole + 1, SelectedRole };

    explicit TargetListModel(const AppModel& model, QObject* parent = nullptr);
    void reload();            // after the targets changed
    void selectionChanged();  // after the selection changed

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    // The target of a row; nothing for a section row.
    const CleanTarget* target(const QModelIndex& index) const;
    const Row& row(int index) const { return rows_[static_cast<std::size_t>(index)]; }

private:
    const AppModel& model_;
    std::vector<Row> rows_;
};

}  // namespace kelvo::app

