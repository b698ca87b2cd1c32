#include "panel/ConfirmBox.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "AppText.h"
#include "kelvo/Format.h"
#include "panel/SmallWidgets.h"

namespace kelvo::app {

ConfirmBox::ConfirmBox(QWidget* parent)
    : QFrame(parent), message_(new QLabel(this)), cancel_(new QPushButton(AppText::t("panel.cancel"), this)),
      delete_(new QPushButton(this)) {
    setObjectName("confirmBox");
    setStyleSheet("#confirmBox { background: rgba(255, 59, 48, 20); border-radius: 8px; }");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    message_->setAlignment(Qt::AlignCenter);
    message_->setWordWrap(true);
    message_->setStyleSheet("color: palette(placeholder-text);");
    layout->addWidget(message_);
    auto* buttons = new QHBoxLayout;
    styleAsDestructive(delete_);
    cancel_->setStyleSheet("padding: 6px;");
    buttons->addWidget(cancel_, 1);
    buttons->addWidget(delete_, 1);
    layout->addLayout(buttons);
    connect(cancel_, &QPushButton::clicked, this, &ConfirmBox::cancelled);
    connect(delete_, &QPushButton::clicked, this, &ConfirmBox::confirmed);
}

void ConfirmBox::describe(std::int64_t count, std::int64_t bytes) {
    message_->setText(AppText::plural("panel.confirm.message", count, {count, Format::bytes(bytes)}));
    delete_->setText(AppText::t("panel.confirm.delete", Format::bytes(bytes)));
}

}  // namespace kelvo::app
