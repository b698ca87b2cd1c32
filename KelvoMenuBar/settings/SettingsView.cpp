#include "settings/SettingsView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "AppText.h"
#include "Icons.h"
#include "kelvo/CleanerRegistry.h"
#include "kelvo/Config.h"
#include "kelvo/Format.h"
#include "panel/SmallWidgets.h"
#include "settings/PathListEditor.h"

namespace kelvo::app {
namespace {

QLabel* sectionTitle(const char* key, QWidget* parent) {
    auto* label = new QLabel(AppText::t(key), parent);
    label->setStyleSheet("font-weight: bold;");
    return label;
}

QLabel* hint(const char* key, QWidget* parent) {
    auto* label = new QLabel(AppText::t(key), parent);
    label->setWordWrap(true);
    label->setStyleSheet("color: palette(placeholder-text); font-size: 11px;");
    return label;
}

QStringList toList(const std::vector<std::string>& paths) {
    QStringList list;
    for (const auto& path : paths) list.append(QString::fromStdString(path));
    return list;
}

// Why the file cannot be used, as the second half of the notice's sentence.
QString reasonText(const ConfigProblem& problem) {
    const std::string key = "settings.configProblem." + std::string(rawValue(problem.kind));
    if (problem.kind != ConfigProblem::Kind::wrongType) return AppText::t(key, problem.key);
    const auto expected = AppText::t("settings.configProblem.expected." + std::string(rawValue(problem.expected)));
    return AppText::t(key, problem.key, expected.toStdString());
}

std::vector<std::string> fromList(const QStringList& list) {
    std::vector<std::string> paths;
    for (const auto& path : list) paths.push_back(path.toStdString());
    return paths;
}

}  // namespace

SettingsView::SettingsView(AppModel& model, const ShellServices& shell, std::function<void()> onClose, QWidget* parent)
    : QWidget(parent), model_(model), shell_(shell), onClose_(std::move(onClose)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);

    auto* header = new QHBoxLayout;
    auto* title = new QLabel(AppText::t("settings.title"), this);
    title->setStyleSheet("font-weight: bold; font-size: 14px;");
    header->addWidget(title, 1);
    close_ = new QPushButton(Icons::symbol("xmark.circle.fill"), QString(), this);
    close_->setFlat(true);
    header->addWidget(close_);
    layout->addLayout(header);
    layout->addWidget(makeDivider(this));

    const QString home = QString::fromStdString(model_.cleanService().env.home.string());
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* column = new QWidget(scroll);
    auto* sections = new QVBoxLayout(column);
    sections->setSpacing(14);

    configProblem_ = new QLabel(column);
    configProblem_->setWordWrap(true);
    configProblem_->setTextFormat(Qt::PlainText);
    configProblem_->setStyleSheet("color: rgb(255, 149, 0); font-size: 11px;");
    configProblem_->hide();
    sections->addWidget(configProblem_);
    roots_ = new PathListEditor(AppText::t("settings.projectFolders"), "folder", AppText::t("settings.projectFolders.hint"),
                                AppText::t("settings.projectFolders.placeholder"), home, column);
    sections->addWidget(roots_);
    sections->addWidget(makeDivider(column));
    auto* keepRow = new QHBoxLayout;
    keepRecentLabel_ = new QLabel(column);
    keepRecentLabel_->setWordWrap(true);
    keepRecent_ = new QSpinBox(column);
    keepRecent_->setRange(Config::fewestKeepRecentDays, Config::mostKeepRecentDays);
    keepRecent_->setSingleStep(1);
    keepRow->addWidget(keepRecentLabel_, 1);
    keepRow->addWidget(keepRecent_);
    sections->addLayout(keepRow);
    sections->addWidget(makeDivider(column));
    exclusions_ = new PathListEditor(AppText::t("settings.exclusions"), "lock", AppText::t("settings.exclusions.hint"),
                                     AppText::t("settings.exclusions.placeholder"), home, column);
    sections->addWidget(exclusions_);

    auto* categories = new QVBoxLayout;
    categories->addWidget(sectionTitle("settings.categories", column));
    categories->addWidget(hint("settings.categories.hint", column));
    // The families of this system's catalog only (no Xcode on Linux), named as it names them
    // and in the order of those names, so no system's own tools come first.
    const auto& env = model_.cleanService().env;
    auto offered = CleanerRegistry::familiesWithDetectors(env);
    std::ranges::sort(offered, [&env](Family a, Family b) {
        return QString::localeAwareCompare(QString::fromStdString(displayName(a, env.catalog)),
                                           QString::fromStdString(displayName(b, env.catalog))) < 0;
    });
    for (Family family : offered) {
        auto* toggle = new QCheckBox(literalMnemonicText(QString::fromStdString(displayName(family, env.catalog))), column);
        toggle->setIcon(Icons::symbol(iconName(family)));
        families_.emplace(family, toggle);
        categories->addWidget(toggle);
    }
    auto* scanRow = new QHBoxLayout;
    scanCategories_ = new QPushButton(Icons::symbol("magnifyingglass"), AppText::t("settings.scanCategories"), column);
    scanRow->addWidget(scanCategories_);
    scanningRow_ = new QWidget(column);
    auto* scanning = new QHBoxLayout(scanningRow_);
    scanning->setContentsMargins(0, 0, 0, 0);
    scanning->addWidget(makeBusyIndicator(scanningRow_));
    scanning->addWidget(new QLabel(AppText::t("settings.scanning"), scanningRow_));
    scanningRow_->hide();
    scanRow->addWidget(scanningRow_);
    scanRow->addStretch(1);
    categories->addLayout(scanRow);
    sections->addLayout(categories);

    auto* cli = new QVBoxLayout;
    cli->addWidget(sectionTitle("settings.cli", column));
    cli->addWidget(hint("settings.cli.hint", column));
    auto* cliRow = new QHBoxLayout;
    installCli_ = new QPushButton(Icons::symbol("terminal"), AppText::t("settings.cli.install"), column);
    cliInstalled_ = new QLabel(column);
    cliInstalled_->setPixmap(Icons::symbol("checkmark.circle.fill").pixmap(16, 16));
    cliInstalled_->hide();
    cliRow->addWidget(installCli_);
    cliRow->addWidget(cliInstalled_);
    cliRow->addStretch(1);
    cli->addLayout(cliRow);
    cliMessage_ = new QLabel(column);
    cliMessage_->setWordWrap(true);
    cliMessage_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    cliMessage_->setStyleSheet("font-family: monospace; font-size: 11px;");
    cliMessage_->hide();
    cli->addWidget(cliMessage_);
    sections->addLayout(cli);
    sections->addStretch(1);
    scroll->setWidget(column);
    layout->addWidget(scroll, 1);

    moveToTrash_ = new QCheckBox(AppText::t("settings.trash"), column);
    sections->insertWidget(sections->count() - 1, moveToTrash_);
    sections->insertWidget(sections->count() - 1, hint("settings.trash.hint", column));

    auto* scheduleRow = new QHBoxLayout;
    scheduleRow->addWidget(sectionTitle("settings.schedule", column), 1);
    schedule_ = new QComboBox(column);
    for (const auto& name : ScanSchedule::frequencyNames())
        schedule_->addItem(AppText::t("settings.schedule." + name), QString::fromStdString(name));
    scheduleRow->addWidget(schedule_);
    sections->insertLayout(sections->count() - 1, scheduleRow);
    auto* scheduleHint = new QLabel(AppText::t("settings.schedule.hint", Format::bytes(ScanNotice::defaultThresholdBytes)), column);
    scheduleHint->setWordWrap(true);
    scheduleHint->setStyleSheet("color: palette(placeholder-text); font-size: 11px;");
    sections->insertWidget(sections->count() - 1, scheduleHint);
    scheduleMessage_ = new QLabel(column);
    scheduleMessage_->setWordWrap(true);
    scheduleMessage_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    scheduleMessage_->setStyleSheet("font-size: 11px;");
    scheduleMessage_->hide();
    sections->insertWidget(sections->count() - 1, scheduleMessage_);

    checkVersion_ = new QCheckBox(AppText::t("settings.checkVersion"), column);
    sections->insertWidget(sections->count() - 1, checkVersion_);
    sections->insertWidget(sections->count() - 1, hint("settings.checkVersion.hint", column));

    launchAtLogin_ = new QCheckBox(AppText::t("settings.launchAtLogin"), this);
    layout->addWidget(launchAtLogin_);
    loginError_ = new QLabel(this);
    loginError_->setWordWrap(true);
    loginError_->setStyleSheet("color: rgb(255, 59, 48); font-size: 11px;");
    loginError_->hide();
    layout->addWidget(loginError_);
    layout->addWidget(makeDivider(this));
    saveError_ = makeErrorLine(this);
    layout->addWidget(saveError_);
    auto* footer = new QHBoxLayout;
    cancel_ = new QPushButton(AppText::t("settings.cancel"), this);
    save_ = new QPushButton(AppText::t("settings.save"), this);
    save_->setDefault(true);
    footer->addStretch(1);
    footer->addWidget(cancel_);
    footer->addWidget(save_);
    layout->addLayout(footer);

    connect(close_, &QPushButton::clicked, this, [this] { onClose_(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { onClose_(); });
    connect(save_, &QPushButton::clicked, this, &SettingsView::save);
    connect(keepRecent_, &QSpinBox::valueChanged, this, &SettingsView::showKeepRecent);
    connect(scanCategories_, &QPushButton::clicked, this, &SettingsView::scanCategories);
    connect(installCli_, &QPushButton::clicked, this, &SettingsView::installCLI);
    connect(launchAtLogin_, &QCheckBox::toggled, this, &SettingsView::setLaunchAtLogin);
    connect(schedule_, &QComboBox::activated, this, &SettingsView::setSchedule);
    loadIfNeeded();
}

void SettingsView::loadIfNeeded() {
    if (loaded_) return;
    const Config::Loaded config = Config::load(model_.cleanService().env.home);
    if (config.problem)
        configProblem_->setText(
            AppText::t("settings.configProblem", config.problem->file.string(), reasonText(*config.problem).toStdString()));
    configProblem_->setVisible(config.problem.has_value());
    roots_->setPaths(toList(config.projectRoots));
    exclusions_->setPaths(toList(config.extraExclusions));
    keepRecent_->setValue(static_cast<int>(
        std::clamp<std::int64_t>(config.keepRecentDays, Config::fewestKeepRecentDays, Config::mostKeepRecentDays)));
    showKeepRecent(keepRecent_->value());
    defaultLevel_ = config.defaultLevel;
    checkVersion_->setChecked(config.checkMinimumVersion);
    loadedMoveToTrash_ = config.moveToTrash;
    moveToTrash_->setChecked(config.moveToTrash.value_or(false));
    const auto scheduled = shell_.schedule(model_.cleanService().env).status().frequency;
    // A timer edited by hand shows as on; choosing here replaces it.
    const auto shown = scheduled.value_or(ScanSchedule::Frequency::weekly);
    schedule_->setCurrentIndex(schedule_->findData(QString::fromStdString(std::string(ScanSchedule::rawValue(shown)))));
    for (auto [family, toggle] : families_) {
        const bool enabled = !config.enabledFamilies ||
                             std::ranges::count(*config.enabledFamilies, std::string(rawValue(family))) > 0;
        toggle->setChecked(enabled);
    }
    const QSignalBlocker quiet(launchAtLogin_);
    launchAtLogin_->setChecked(shell_.autostart.enabled());
    loaded_ = true;
}

void SettingsView::save() {
    Config config;
    config.projectRoots = fromList(roots_->paths());
    config.extraExclusions = fromList(exclusions_->paths());
    config.defaultLevel = defaultLevel_;
    config.keepRecentDays = keepRecent_->value();
    config.checkMinimumVersion = checkVersion_->isChecked();
    if (loadedMoveToTrash_ || moveToTrash_->isChecked()) config.moveToTrash = moveToTrash_->isChecked();
    std::vector<std::string> enabled;
    for (auto [family, toggle] : families_)
        if (toggle->isChecked()) enabled.emplace_back(rawValue(family));
    if (enabled.size() != families_.size()) {
        std::ranges::sort(enabled);
        config.enabledFamilies = std::move(enabled);
    }
    // A failed save keeps the screen open with the edits and says why; nothing is lost.
    const auto& home = model_.cleanService().env.home;
    if (const auto error = config.save(home)) {
        saveError_->setText(QString::fromStdString(Config::saveFailureText(home, error)));
        saveError_->show();
        return;
    }
    model_.reloadConfig();
    onClose_();
}

void SettingsView::showKeepRecent(int days) {
    keepRecentLabel_->setText(AppText::t("settings.keepRecent", std::int64_t{days}));
}

void SettingsView::scanCategories() {
    scanCategories_->setEnabled(false);
    scanningRow_->show();
    model_.detectCategories([self = QPointer<SettingsView>(this)](std::set<Family> detected) {
        if (!self) return;
        for (auto [family, toggle] : self->families_) toggle->setChecked(detected.contains(family));
        self->scanningRow_->hide();
        self->scanCategories_->setEnabled(true);
    });
}

void SettingsView::setLaunchAtLogin(bool on) {
    if (on == shell_.autostart.enabled()) return;
    if (const auto failure = shell_.autostart.setEnabled(on)) {
        loginError_->setText(QString(loginFailurePrefix) + QString::fromStdString(*failure));
        loginError_->show();
    } else {
        loginError_->hide();
    }
    const QSignalBlocker quiet(launchAtLogin_);
    launchAtLogin_->setChecked(shell_.autostart.enabled());
}

void SettingsView::setSchedule(int index) {
    const auto frequency = ScanSchedule::frequencyFromRawValue(schedule_->itemData(index).toString().toStdString());
    if (!frequency) return;
    auto schedule = shell_.schedule(model_.cleanService().env);
    // A threshold chosen with `kelvo schedule --notify-above` is kept.
    schedule.notifyAboveBytes = schedule.status().notifyAboveBytes.value_or(schedule.notifyAboveBytes);
    schedule_->setEnabled(false);
    const auto shown = [self = QPointer<SettingsView>(this), schedule](const ScanSchedule::Outcome& outcome) {
        if (!self) return;
        using Manager = ScanSchedule::Outcome::Manager;
        QString message;
        if (outcome.failedFile)
            message = AppText::t("settings.schedule.fileFailed", outcome.failedFile->string(), outcome.fileError.message());
        else if (outcome.manager == Manager::commandFailed)
            message = AppText::t("settings.schedule.commandFailed", std::int64_t{outcome.commandStatus.value_or(-1)},
                                 outcome.laterCommand);
        else if (outcome.manager == Manager::notRunning)
            message = AppText::t("settings.schedule.noManager", outcome.laterCommand);
        self->scheduleMessage_->setText(message);
        self->scheduleMessage_->setVisible(!message.isEmpty());
        // What the folder holds now, whatever was asked.
        const auto now = schedule.status().frequency.value_or(ScanSchedule::Frequency::weekly);
        const QSignalBlocker quiet(self->schedule_);
        self->schedule_->setCurrentIndex(
            self->schedule_->findData(QString::fromStdString(std::string(ScanSchedule::rawValue(now)))));
        self->schedule_->setEnabled(true);
    };
    model_.applySchedule(schedule, *frequency, shown);
}

void SettingsView::installCLI() {
    switch (shell_.cliLink.install()) {
        case CliLink::Outcome::notBundled: cliMessage_->setText(AppText::t("settings.cli.notbundled")); break;
        case CliLink::Outcome::installed:
            cliInstalled_->show();
            cliMessage_->setText(AppText::t("settings.cli.ok"));
            break;
        case CliLink::Outcome::refused:
            cliMessage_->setText(QString::fromStdString(shell_.cliLink.fallbackCommand()));
            break;
    }
    cliMessage_->show();
}

}  // namespace kelvo::app

