#include "PanelView.h"

#include <QLabel>
#include <QStackedLayout>
#include <QVBoxLayout>

#include "AppText.h"
#include "panel/SmallWidgets.h"
#include "ModelBridge.h"
#include "panel/DiskBar.h"
#include "panel/Footer.h"
#include "panel/Header.h"
#include "panel/ScanRow.h"
#include "panel/TargetList.h"
#include "panel/UpdateRequiredView.h"
#include "settings/OnboardingView.h"
#include "settings/SettingsView.h"

namespace kelvo::app {
PanelView::PanelView(AppModel& model, Updater* updater, ShellServices shell, QWidget* parent)
    : QWidget(parent), model_(model), shell_(std::move(shell)), bridge_(new ModelBridge(model, this)),
      screens_(new QStackedLayout(this)), main_(new QWidget(this)) {
    setFixedSize(panelSize);
    setWindowTitle(AppText::t("Kelvo Cleaner"));
    updateRequired_ = new UpdateRequiredView(shell_.openUrl, shell_.quit, this);
    onboarding_ = new OnboardingView(
        model_, [this] { setShowingSettings(true); },
        [this] {
            onboardingDismissed_ = true;
            showScreen();
        },
        this);

    auto* layout = new QVBoxLayout(main_);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(10);
    header_ = new Header(model_, main_);
    diskBar_ = new DiskBar(main_);
    scanRow_ = new ScanRow(model_, main_);
    notes_ = new QLabel(main_);
    notes_->setWordWrap(true);
    notes_->setStyleSheet("color: palette(placeholder-text); font-size: 11px;");
    targetList_ = new TargetList(model_, main_);
    footer_ = new Footer(model_, updater, shell_.quit, main_);
    layout->addWidget(header_);
    layout->addWidget(diskBar_);
    layout->addWidget(scanRow_);
    layout->addWidget(notes_);
    layout->addWidget(makeDivider(main_));
    layout->addWidget(targetList_, 1);
    layout->addWidget(makeDivider(main_));
    layout->addWidget(footer_);

    for (QWidget* screen : {static_cast<QWidget*>(updateRequired_), static_cast<QWidget*>(onboarding_), main_})
        screens_->addWidget(screen);
    connect(header_, &Header::settingsRequested, this, [this] { setShowingSettings(true); });
    connect(footer_, &Footer::confirmRequested, this, [this] { setConfirming(true); });
    connect(footer_, &Footer::confirmCancelled, this, [this] { setConfirming(false); });
    connect(footer_, &Footer::confirmAccepted, this, [this] {
        setConfirming(false);
        model_.run(false, false);
    });
    connect(bridge_, &ModelBridge::changed, this, &PanelView::modelChanged);
    modelChanged(AppModel::Field::disk);
    modelChanged(AppModel::Field::notes);
    showScreen();
}

Screen PanelView::currentScreen() const {
    return chooseScreen(model_.updateRequired(), showingSettings_, model_.needsOnboarding(), onboardingDismissed_);
}

void PanelView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    model_.checkMinimumVersion();
    showScreen();
}

void PanelView::modelChanged(AppModel::Field field) {
    using Field = AppModel::Field;
    switch (field) {
        case Field::domain: model_.clearResults(); break;
        case Field::targets: targetList_->targetsChanged(); break;
        case Field::selectedIDs: targetList_->selectionChanged(); break;
        case Field::phase: targetList_->phaseChanged(); break;
        case Field::disk:
            diskBar_->setVisible(model_.disk().has_value());
            if (model_.disk()) diskBar_->display(*model_.disk());
            break;
        case Field::notes:
            notes_->setVisible(!model_.notes().empty());
            notes_->setText(notesText(model_.notes(), maxNotesShown));
            notes_->setToolTip(notesText(model_.notes(), model_.notes().size()));
            break;
        case Field::lastReport:
        case Field::updateRequired: break;
    }
    header_->refresh();
    scanRow_->refresh();
    footer_->refresh(confirming_);
    showScreen();
}

void PanelView::setConfirming(bool confirming) {
    confirming_ = confirming;
    footer_->refresh(confirming_);
}

void PanelView::setShowingSettings(bool showing) {
    showingSettings_ = showing;
    if (showing && !settings_) {
        settings_ = new SettingsView(model_, shell_, [this] { setShowingSettings(false); }, this);
        screens_->addWidget(settings_);
    } else if (!showing && settings_) {
        screens_->removeWidget(settings_);
        settings_->hide();
        settings_->deleteLater();  // its own button may be the caller
        settings_ = nullptr;
    }
    showScreen();
}

void PanelView::showScreen() {
    switch (currentScreen()) {
        case Screen::updateRequired: screens_->setCurrentWidget(updateRequired_); break;
        case Screen::settings: screens_->setCurrentWidget(settings_); break;
        case Screen::onboarding: screens_->setCurrentWidget(onboarding_); break;
        case Screen::main: screens_->setCurrentWidget(main_); break;
    }
}

}  // namespace kelvo::app
