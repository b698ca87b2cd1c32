#include "settings/OnboardingView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include "AppText.h"
#include "Icons.h"
#include "kelvo/Config.h"
#include "panel/SmallWidgets.h"

namespace kelvo::app {

OnboardingView::OnboardingView(AppModel& model, std::function<void()> onOpenSettings, std::function<void()> onDone,
                               QWidget* parent)
    : QWidget(parent), model_(model), onOpenSettings_(std::move(onOpenSettings)), onDone_(std::move(onDone)),
      detect_(new QPushButton(Icons::symbol("wand.and.stars"), AppText::t("onboarding.detect"), this)),
      detecting_(new QWidget(this)), enableAll_(new QPushButton(AppText::t("onboarding.enableAll"), this)),
      chooseManually_(new QPushButton(AppText::t("onboarding.chooseManually"), this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 20);
    layout->addStretch(1);
    auto* icon = new QLabel(this);
    icon->setPixmap(Icons::symbol("sparkles").pixmap(42, 42));
    layout->addWidget(icon, 0, Qt::AlignHCenter);
    auto* welcome = new QLabel(AppText::t("onboarding.welcome"), this);
    welcome->setStyleSheet("font-size: 22px; font-weight: bold;");
    layout->addWidget(welcome, 0, Qt::AlignHCenter);
    auto* description = new QLabel(AppText::t("onboarding.description"), this);
    description->setWordWrap(true);
    description->setAlignment(Qt::AlignCenter);
    description->setStyleSheet("color: palette(placeholder-text);");
    layout->addWidget(description);
    layout->addSpacing(12);

    layout->addWidget(detect_);
    auto* detecting = new QHBoxLayout(detecting_);
    detecting->addStretch(1);
    detecting->addWidget(makeBusyIndicator(detecting_));
    detecting->addWidget(new QLabel(AppText::t("onboarding.detecting"), detecting_));
    detecting->addStretch(1);
    layout->addWidget(detecting_);
    enableAll_->setDefault(true);
    enableAll_->setMinimumHeight(34);
    layout->addWidget(enableAll_);
    styleAsLink(chooseManually_, false);
    layout->addWidget(chooseManually_, 0, Qt::AlignHCenter);
    saveError_ = new QLabel(this);
    saveError_->setWordWrap(true);
    saveError_->setTextFormat(Qt::PlainText);
    saveError_->setStyleSheet("color: rgb(215, 38, 30); font-size: 11px;");
    saveError_->hide();
    layout->addWidget(saveError_);
    layout->addStretch(1);

    connect(detect_, &QPushButton::clicked, this, &OnboardingView::autodetect);
    connect(enableAll_, &QPushButton::clicked, this, [this] {
        if (complete(std::nullopt)) onDone_();
    });
    connect(chooseManually_, &QPushButton::clicked, this, [this] {
        if (!complete(std::nullopt)) return;
        onDone_();
        onOpenSettings_();
    });
    setWorking(false);
}

void OnboardingView::setWorking(bool working) {
    working_ = working;
    detect_->setVisible(!working);
    detecting_->setVisible(working);
    enableAll_->setEnabled(!working);
    chooseManually_->setEnabled(!working);
}

void OnboardingView::autodetect() {
    setWorking(true);
    model_.detectCategories([self = QPointer<OnboardingView>(this)](std::set<Family> detected) {
        if (!self) return;
        std::set<Family> enabled;
        for (Family family : cleanDomainFamilies())
            if (detected.contains(family)) enabled.insert(family);
        self->setWorking(false);
        if (self->complete(enabled)) self->onDone_();
    });
}

bool OnboardingView::complete(const std::optional<std::set<Family>>& enabledFamilies) {
    const auto error = model_.completeOnboarding(enabledFamilies);
    if (error)
        saveError_->setText(QString::fromStdString(Config::saveFailureText(model_.cleanService().env.home, error)));
    saveError_->setVisible(static_cast<bool>(error));
    return !error;
}

}  // namespace kelvo::app
