#include "panel/Header.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "AppText.h"
#include "Icons.h"
#include "kelvo/Format.h"
#include "panel/Palette.h"
#include "panel/PanelRules.h"

namespace kelvo::app {
namespace {

QLabel* caption(const char* key, QWidget* parent) {
    auto* label = new QLabel(AppText::t(key), parent);
    label->setStyleSheet("color: palette(placeholder-text); font-size: 11px;");
    return label;
}

}  // namespace

Header::Header(AppModel& model, QWidget* parent)
    : QWidget(parent), model_(model), domains_(new QButtonGroup(this)), gear_(new QToolButton(this)),
      selected_(new QLabel(this)), total_(new QLabel(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    auto* first = new QHBoxLayout;
    first->setSpacing(0);
    for (AppModel::Domain domain : AppModel::allDomains) {
        auto* button = new QPushButton(domainVerb(domain), this);
        button->setCheckable(true);
        domains_->addButton(button, static_cast<int>(domain));
        first->addWidget(button, 1);
    }
    connect(domains_, &QButtonGroup::idClicked, this,
            [this](int id) { model_.setDomain(static_cast<AppModel::Domain>(id)); });
    gear_->setIcon(Icons::symbol("gearshape"));
    gear_->setAutoRaise(true);
    gear_->setToolTip(AppText::t("panel.settings"));
    connect(gear_, &QToolButton::clicked, this, &Header::settingsRequested);
    first->addSpacing(8);
    first->addWidget(gear_);
    layout->addLayout(first);

    auto* second = new QHBoxLayout;
    auto* left = new QVBoxLayout;
    left->setSpacing(2);
    left->addWidget(caption("panel.selected", this));
    left->addWidget(selected_);
    auto* right = new QVBoxLayout;
    right->addWidget(caption("panel.totalRecoverable", this), 0, Qt::AlignRight);
    right->addWidget(total_, 0, Qt::AlignRight);
    total_->setStyleSheet("font-size: 16px;");
    second->addLayout(left);
    second->addStretch(1);
    second->addLayout(right);
    layout->addLayout(second);
    refresh();
}

QPushButton* Header::domainButton(AppModel::Domain domain) const {
    return qobject_cast<QPushButton*>(domains_->button(static_cast<int>(domain)));
}

void Header::refresh() {
    const bool busy = isBusy(model_.phase());
    for (AppModel::Domain domain : AppModel::allDomains) {
        domainButton(domain)->setChecked(model_.domain() == domain);
        domainButton(domain)->setEnabled(!busy);
    }
    const std::int64_t bytes = selectedBytes(model_);
    selected_->setText(QString::fromStdString(Format::bytes(bytes)));
    const QColor colour = bytes > 0 ? Palette::accent(*this) : Palette::secondary(*this);
    selected_->setStyleSheet(QString("font-size: 26px; font-weight: bold; color: %1;").arg(colour.name()));
    total_->setText(QString::fromStdString(Format::bytes(model_.summary().totalBytes)));
}

}  // namespace kelvo::app
