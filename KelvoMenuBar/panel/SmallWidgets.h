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

// Greyed out when disabled; captionSized for the small footer links.
inline void styleAsLink(QPushButton* button, bool captionSized) {
    button->setFlat(true);
    button->setCursor(Qt::PointingHandCursor);
    button->setStyleSheet(QString("QPushButton { color: palette(link); border: none; %1 }"
                                  "QPushButton:disabled { color: palette(placeholder-text); }")
                              .arg(captionSized ? "font-size: 11px;" : ""));
}

}  // namespace kelvo::app
