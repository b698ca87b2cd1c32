#include "panel/Footer.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "AppText.h"
#include "Icons.h"
#include "panel/SmallWidgets.h"
#include "panel/ConfirmBox.h"
#include "panel/PanelRules.h"
#include "panel/UpdatesMenuButton.h"

namespace kelvo::app {

Footer::Footer(AppModel& model, Updater* updater, std::function<void()> quit, QWidget* parent)
    : QWidget(parent), model_(model), resultRow_(new QWidget(this)), resultText_(new QLabel(resultRow_)),
      cleaningRow_(new QWidget(this)), confirmBox_(new ConfirmBox(this)), action_(new QPushButton(this)),
      quit_(new QPushButton(AppText::t("panel.quit"), this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    auto* result = new QHBoxLayout(resultRow_);
    result->setContentsMargins(0, 0, 0, 0);
    auto* check = new QLabel(resultRow_);
    check->setPixmap(Icons::symbol("checkmark.circle.fill").pixmap(16, 16));
    result->addWidget(check);
    resultText_->setStyleSheet("color: palette(placeholder-text);");
    result->addWidget(resultText_, 1);
    layout->addWidget(resultRow_);

    auto* cleaning = new QHBoxLayout(cleaningRow_);
    cleaning->setContentsMargins(0, 0, 0, 0);
    cleaning->setSpacing(8);
    cleaning->addWidget(makeBusyIndicator(cleaningRow_));
    cleaning->addWidget(new QLabel(AppText::t("panel.cleaning"), cleaningRow_));
    cleaning->addStretch(1);
    layout->addWidget(cleaningRow_);
    layout->addWidget(confirmBox_);
    action_->setMinimumHeight(34);
    styleAsDestructive(action_);
    layout->addWidget(action_);

    auto* bottom = new QHBoxLayout;
    if (updater) {
        updates_ = new UpdatesMenuButton(*updater, this);
        bottom->addWidget(updates_);
    }
    bottom->addStretch(1);
    styleAsLink(quit_, true);
    bottom->addWidget(quit_);
    layout->addLayout(bottom);

    connect(action_, &QPushButton::clicked, this, &Footer::confirmRequested);
    connect(confirmBox_, &ConfirmBox::cancelled, this, &Footer::confirmCancelled);
    connect(confirmBox_, &ConfirmBox::confirmed, this, &Footer::confirmAccepted);
    connect(quit_, &QPushButton::clicked, this, [quit = std::move(quit)] { quit(); });
    refresh(false);
}

void Footer::refresh(bool confirming) {
    const auto& report = model_.lastReport();
    resultRow_->setVisible(report && !confirming);
    if (report) resultText_->setText(resultLine(*report));

    const bool cleaning = model_.phase() == AppModel::Phase::cleaning;
    const std::int64_t bytes = selectedBytes(model_);
    cleaningRow_->setVisible(cleaning);
    confirmBox_->setVisible(!cleaning && confirming);
    if (confirming) confirmBox_->describe(static_cast<std::int64_t>(model_.selectedIDs().size()), bytes);
    action_->setVisible(!cleaning && !confirming);
    action_->setText(actionTitle(model_.domain(), model_.selectedIDs().empty(), bytes));
    action_->setEnabled(!model_.selectedIDs().empty() && !isBusy(model_.phase()));
}

}  // namespace kelvo::app
