#pragma once
// Asks before a removal: how many targets and how many bytes, with Cancel and Delete.
#include <QFrame>
#include <cstdint>

class QLabel;
class QPushButton;

namespace kelvo::app {

class ConfirmBox : public QFrame {
    Q_OBJECT
public:
    explicit ConfirmBox(QWidget* parent = nullptr);
    void describe(std::int64_t count, std::int64_t bytes);

    QLabel* message() const { return message_; }
    QPushButton* cancelButton() const { return cancel_; }
    QPushButton* deleteButton() const { return delete_; }

signals:
    void cancelled();
    void confirmed();

private:
    QLabel* message_;
    QPushButton* cancel_;
    QPushButton* delete_;
};

}  // namespace kelvo::app
