#include "settings/OnboardingView.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QListWidget>
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
      chooseManually_(new QPushButton(AppText::t("onboarding.chooseManually"), this)),
      folders_(new QListWidget(this)),
      addFolder_(new QPushButton(Icons::symbol("folder"), AppText::t("onboarding.addFolder"), this)) {
    pickFolder_ = [this] {
        return QFileDialog::getExistingDirectory(this, AppText::t("onboarding.addFolder"),
                                                 QString::fromStdString(model_.cleanService().env.home.string()));
    };
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

    auto* projects = new QLabel(AppText::t("onboarding.projects"), this);
    projects->setStyleSheet("font-weight: bold;");
    layout->addWidget(projects);
    auto* projectsHint = new QLabel(AppText::t("onboarding.projects.hint"), this);
    projectsHint->setWordWrap(true);
    projectsHint->setStyleSheet("color: palette(placeholder-text);");
    layout->addWidget(projectsHint);
    folders_->setMaximumHeight(110);
    layout->addWidget(folders_);
    layout->addWidget(addFolder_, 0, Qt::AlignLeft);
    layout->addSpacing(8);

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
    saveError_ = makeErrorLine(this);
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
    connect(addFolder_, &QPushButton::clicked, this, [this] {
        if (const QString folder = pickFolder_(); !folder.isEmpty()) addFolder(folder, true);
    });
    setWorking(false);
    if (!model_.needsOnboarding()) return;
    model_.findProjectFolders([self = QPointer<OnboardingView>(this)](std::vector<std::filesystem::path> found) {
        if (!self) return;
        for (const auto& folder : found) self->addFolder(QString::fromStdString(folder.string()), true);
    });
}

void OnboardingView::addFolder(const QString& folder, bool checked) {
    // Shown and stored home-relative, as the user would type it.
    const QString home = QString::fromStdString(model_.cleanService().env.home.string());
    QString typed = folder;
    if (folder.startsWith(home + "/")) typed = "~" + folder.mid(home.size());
    for (int row = 0; row < folders_->count(); ++row)
        if (folders_->item(row)->text() == typed) {
            folders_->item(row)->setCheckState(Qt::Checked);
            return;
        }
    auto* item = new QListWidgetItem(Icons::symbol("folder"), typed, folders_);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

QStringList OnboardingView::checkedFolders() const {
    QStringList checked;
    for (int row = 0; row < folders_->count(); ++row)
        if (folders_->item(row)->checkState() == Qt::Checked) checked << folders_->item(row)->text();
    return checked;
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
    std::vector<std::string> roots;
    for (const QString& folder : checkedFolders()) roots.push_back(folder.toStdString());
    model_.detectCategories([self = QPointer<OnboardingView>(this)](std::set<Family> detected) {
        if (!self) return;
        std::set<Family> enabled;
        for (Family family : cleanDomainFamilies())
            if (detected.contains(family)) enabled.insert(family);
        self->setWorking(false);
        if (self->complete(enabled)) self->onDone_();
    }, roots.empty() ? std::nullopt : std::optional(roots));
}

bool OnboardingView::complete(const std::optional<std::set<Family>>& enabledFamilies) {
    std::vector<std::string> roots;
    for (const QString& folder : checkedFolders()) roots.push_back(folder.toStdString());
    const auto error = model_.completeOnboarding(enabledFamilies, roots);
    if (error)
        saveError_->setText(QString::fromStdString(Config::saveFailureText(model_.cleanService().env.home, error)));
    saveError_->setVisible(static_cast<bool>(error));
    return !error;
}

}  // namespace kelvo::app
