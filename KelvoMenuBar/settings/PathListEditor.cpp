#include "settings/PathListEditor.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "AppText.h"
#include "Icons.h"

namespace kelvo::app {
namespace {

QString trimmedOfSpacesAndTabs(const QString& text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    const auto blank = [](QChar c) { return c == u' ' || c == u'\t'; };
    while (begin < end && blank(text[begin])) ++begin;
    while (end > begin && blank(text[end - 1])) --end;
    return text.mid(begin, end - begin);
}

}  // namespace

PathListEditor::PathListEditor(const QString& title, const char* icon, const QString& hint, const QString& placeholder,
                               const QString& home, QWidget* parent, FolderChooser chooser)
    : QWidget(parent), rows_(new QVBoxLayout), field_(new QLineEdit(this)), add_(new QPushButton(AppText::t("settings.add"), this)),
      choose_(new QPushButton(Icons::symbol("folder"), AppText::t("settings.choose"), this)), home_(home),
      chooser_(std::move(chooser)) {
    if (!chooser_)
        chooser_ = [home](QWidget* parent) {
            // The dialog of Qt itself: a modal window of the panel, so the panel stays open under it.
            return QFileDialog::getExistingDirectory(parent, AppText::t("settings.choose.title"), home,
                                                     QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
        };
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* heading = new QHBoxLayout;
    auto* iconLabel = new QLabel(this);
    iconLabel->setPixmap(Icons::symbol(icon).pixmap(16, 16));
    heading->addWidget(iconLabel);
    auto* titleLabel = new QLabel(title, this);
    titleLabel->setStyleSheet("font-weight: bold;");
    heading->addWidget(titleLabel, 1);
    layout->addLayout(heading);
    auto* hintLabel = new QLabel(hint, this);
    hintLabel->setWordWrap(true);
    hintLabel->setStyleSheet("color: palette(placeholder-text); font-size: 11px;");
    layout->addWidget(hintLabel);
    layout->addLayout(rows_);
    auto* entry = new QHBoxLayout;
    field_->setPlaceholderText(placeholder);
    entry->addWidget(field_, 1);
    entry->addWidget(add_);
    entry->addWidget(choose_);
    layout->addLayout(entry);
    connect(add_, &QPushButton::clicked, this, &PathListEditor::add);
    connect(choose_, &QPushButton::clicked, this, [this] {
        QString folder = chooser_(this);
        if (folder.isEmpty()) return;
        const QString homePrefix = home_.endsWith('/') ? home_ : home_ + '/';
        if (folder == home_) folder = "~";
        else if (folder.startsWith(homePrefix)) folder = "~/" + folder.mid(homePrefix.size());
        field_->setText(folder);
        add();
    });
    connect(field_, &QLineEdit::returnPressed, this, &PathListEditor::add);
    rebuildRows();
}

void PathListEditor::setPaths(QStringList paths) {
    paths_ = std::move(paths);
    rebuildRows();
}

void PathListEditor::add() {
    const QString path = trimmedOfSpacesAndTabs(field_->text());
    field_->clear();
    if (path.isEmpty() || paths_.contains(path)) return;
    paths_.append(path);
    rebuildRows();
}

void PathListEditor::remove(const QString& path) {
    paths_.removeAll(path);
    rebuildRows();
}

QPushButton* PathListEditor::removeButton(int row) const {
    const auto* item = rows_->itemAt(row);
    return item && item->widget() ? item->widget()->findChild<QPushButton*>() : nullptr;
}

void PathListEditor::rebuildRows() {
    // A row may be the sender of the click that got here: it goes once the click is over.
    while (auto* item = rows_->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    if (paths_.isEmpty()) {
        auto* none = new QLabel(AppText::t("settings.none"), this);
        none->setStyleSheet("color: palette(placeholder-text);");
        rows_->addWidget(none);
        return;
    }
    for (const QString& path : paths_) {
        auto* row = new QWidget(this);
        auto* layout = new QHBoxLayout(row);
        layout->setContentsMargins(0, 0, 0, 0);
        auto* remove = new QPushButton(Icons::symbol("minus.circle.fill"), QString(), row);
        remove->setFlat(true);
        connect(remove, &QPushButton::clicked, this, [this, path] { this->remove(path); });
        layout->addWidget(remove);
        layout->addWidget(new QLabel(path, row), 1);
        rows_->addWidget(row);
    }
}

}  // namespace kelvo::app
