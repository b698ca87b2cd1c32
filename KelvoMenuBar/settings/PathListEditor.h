#pragma once
// Edits a list of paths as typed (a tilde path stays one; expansion happens when the
// environment is built): one row per entry with a remove button that removes every equal
// entry, and a field whose text, trimmed of spaces and tabs, is appended unless empty or
// already present. The field is cleared in every case. Beside the field a button picks a
// folder instead, added by the same rule, written from "~/" when it lies in the home.
#include <QStringList>
#include <QWidget>
#include <functional>

class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace kelvo::app {

class PathListEditor : public QWidget {
    Q_OBJECT
public:
    // Asks the user for a folder; empty when none was chosen.
    using FolderChooser = std::function<QString(QWidget* parent)>;

    // The chooser left out is the desktop's folder dialog, opened in the home folder.
    PathListEditor(const QString& title, const char* icon, const QString& hint, const QString& placeholder,
                   const QString& home, QWidget* parent = nullptr, FolderChooser chooser = {});
    const QStringList& paths() const { return paths_; }
    void setPaths(QStringList paths);
    void add();
    void remove(const QString& path);

    QLineEdit* field() const { return field_; }
    QPushButton* addButton() const { return add_; }
    QPushButton* chooseButton() const { return choose_; }
    // The remove button of a row, in list order.
    QPushButton* removeButton(int row) const;

private:
    void rebuildRows();

    QStringList paths_;
    QVBoxLayout* rows_;
    QLineEdit* field_;
    QPushButton* add_;
    QPushButton* choose_;
    QString home_;
    FolderChooser chooser_;
};

}  // namespace kelvo::app
