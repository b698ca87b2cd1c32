#pragma once
// Small pieces several screens share: a busy indicator beside a running operation's text,
// a horizontal divider, and a text-only button in the link colour.
#include <QFrame>
#include <QProgressBar>
#include <QPushButton>

namespace kelvo::app {

inline QProgressBar* makeBusyIndicator(QWidget* parent) {
    auto* progress = new QProgressBar(parent);
    progress->setRange(0, 0);
    progress->setTextVisible(false);
    progress->setFixedSize(40, 8);
    return progress;
}

inline QFrame* makeDivider(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

// The red button of a removal: solid red with white text while it can be pressed, the
// desktop's plain greyed look when it cannot, so a disabled one never reads as a pale red.
inline void styleAsDestructive(QPushButton* button) {
    button->setStyleSheet("QPushButton { background: rgb(215, 38, 30); color: white; font-weight: bold;"
                          " border: 1px solid rgb(170, 25, 20); border-radius: 6px; padding: 6px; }"
                          "QPushButton:hover { background: rgb(230, 50, 40); }"
                          "QPushButton:pressed { background: rgb(175, 28, 22); }"
                          "QPushButton:disabled { background: palette(button); color: palette(placeholder-text);"
                          " border: 1px solid palette(mid); font-weight: normal; }");
}

// Text shown as written on a button or check box: "&" is not a keyboard mnemonic.
inline QString literalMnemonicText(QString text) { return text.replace('&', "&&"); }

// Greyed out when disabled; captionSized for the small footer links.
inline void styleAsLink(QPushButton* button, bool captionSized) {
    button->setFlat(true);
    button->setCursor(Qt::PointingHandCursor);
    button->setStyleSheet(QString("QPushButton { color: palette(link); border: none; %1 }"
                                  "QPushButton:disabled { color: palette(placeholder-text); }")
                              .arg(captionSized ? "font-size: 11px;" : ""));
}

}  // namespace kelvo::app
