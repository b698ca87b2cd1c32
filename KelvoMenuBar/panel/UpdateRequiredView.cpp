#include "panel/UpdateRequiredView.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "AppText.h"
#include "panel/SmallWidgets.h"
#include "Icons.h"

namespace kelvo::app {

UpdateRequiredView::UpdateRequiredView(UrlOpener openUrl, std::function<void()> quit, QWidget* parent)
    : QWidget(parent), download_(new QPushButton(AppText::t("update.required.button"), this)),
      quit_(new QPushButton(AppText::t("panel.quit"), this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 24);
    layout->setSpacing(14);
    layout->addStretch(1);
    auto* icon = new QLabel(this);
    icon->setPixmap(Icons::symbol("arrow.down.circle.fill").pixmap(44, 44));
    layout->addWidget(icon, 0, Qt::AlignHCenter);
    auto* title = new QLabel(AppText::t("update.required.title"), this);
    title->setStyleSheet("font-size: 18px; font-weight: 600;");
    layout->addWidget(title, 0, Qt::AlignHCenter);
    auto* sub = new QLabel(AppText::t("update.required.sub"), this);
    sub->setWordWrap(true);
    sub->setAlignment(Qt::AlignCenter);
    sub->setStyleSheet("color: palette(placeholder-text);");
    layout->addWidget(sub);
    download_->setMinimumHeight(34);
    download_->setDefault(true);
    layout->addWidget(download_);
    styleAsLink(quit_, false);
    layout->addWidget(quit_, 0, Qt::AlignHCenter);
    layout->addStretch(1);
    connect(download_, &QPushButton::clicked, this, [openUrl = std::move(openUrl)] { openUrl(downloadPage()); });
    connect(quit_, &QPushButton::clicked, this, [quit = std::move(quit)] { quit(); });
}

QUrl UpdateRequiredView::downloadPage() { return QUrl(QStringLiteral(KELVO_DOWNLOAD_URL)); }

}  // namespace kelvo::app
