#include "panel/ScanRow.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>

#include "AppText.h"
#include "Icons.h"
#include "panel/SmallWidgets.h"
#include "panel/PanelRules.h"

namespace kelvo::app {

ScanRow::ScanRow(AppModel& model, QWidget* parent)
    : QWidget(parent), model_(model), scan_(new QPushButton(Icons::symbol("magnifyingglass"), QString(), this)),
      progress_(makeBusyIndicator(this)), cancel_(new QPushButton(AppText::t("panel.cancel"), this)),
      all_(new QPushButton(AppText::t("panel.selectAll"), this)), none_(new QPushButton(AppText::t("panel.selectNone"), this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    for (QWidget* widget : {static_cast<QWidget*>(scan_), static_cast<QWidget*>(progress_), static_cast<QWidget*>(cancel_)})
        layout->addWidget(widget);
    layout->addStretch(1);
    layout->addWidget(all_);
    layout->addWidget(none_);
    connect(scan_, &QPushButton::clicked, this, [this] { model_.startScan(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { model_.cancelScan(); });
    connect(all_, &QPushButton::clicked, this, [this] {
        std::set<std::string> ids;
        for (const auto& target : model_.targets()) ids.insert(target.id);
        model_.setSelectedIDs(std::move(ids));
    });
    connect(none_, &QPushButton::clicked, this, [this] { model_.setSelectedIDs({}); });
    refresh();
}

void ScanRow::refresh() {
    const bool busy = isBusy(model_.phase());
    const bool scanning = model_.phase() == AppModel::Phase::scanning;
    const bool hasTargets = !model_.targets().empty();
    scan_->setText(AppText::t(hasTargets ? "panel.rescan" : "panel.scan"));
    scan_->setEnabled(!busy);
    progress_->setVisible(scanning);
    cancel_->setVisible(scanning);
    for (QPushButton* button : {all_, none_}) {
        button->setVisible(hasTargets);
        button->setEnabled(!busy);
    }
}

}  // namespace kelvo::app
