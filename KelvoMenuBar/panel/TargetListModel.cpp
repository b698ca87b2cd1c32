#include "panel/TargetListModel.h"

#include "kelvo/Format.h"
#include "panel/PanelRules.h"

namespace kelvo::app {

TargetListModel::TargetListModel(const AppModel& model, QObject* parent) : QAbstractListModel(parent), model_(model) {
    reload();
}

void TargetListModel::reload() {
    beginResetModel();
    rows_.clear();
    const auto& targets = model_.targets();
    for (Family family : groups(targets)) {
        const std::size_t header = rows_.size();
        rows_.emplace_back(Section{family});
        for (const auto& target : targets)
            if (target.family == family) {
                std::get<Section>(rows_[header]).bytes += target.sizeBytes;
                rows_.emplace_back(&target);
            }
    }
    endResetModel();
}

void TargetListModel::selectionChanged() {
    if (!rows_.empty()) emit dataChanged(index(0), index(rowCount() - 1), {SelectedRole});
}

int TargetListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

const CleanTarget* TargetListModel::target(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= rowCount()) return nullptr;
    const auto* target = std::get_if<const CleanTarget*>(&row(index.row()));
    return target ? *target : nullptr;
}

QVariant TargetListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) return {};
    const auto* section = std::get_if<Section>(&row(index.row()));
    const CleanTarget* item = target(index);
    switch (role) {
        case Qt::DisplayRole:
            return section ? QString::fromStdString(displayName(section->family)) : QString::fromStdString(item->name);
        case Qt::ToolTipRole:
            return section ? QVariant() : rowTooltip(*item);
        case SelectedRole: return item && model_.selectedIDs().contains(item->id);
        default: return {};
    }
}

}  // namespace kelvo::app
