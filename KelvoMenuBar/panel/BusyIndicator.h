#pragma once
// A small indeterminate progress indicator, shown beside a running operation's text.
#include <QProgressBar>

namespace kelvo::app {

inline QProgressBar* makeBusyIndicator(QWidget* parent) {
    auto* progress = new QProgressBar(parent);
    progress->setRange(0, 0);
    progress->setTextVisible(false);
    progress->setFixedSize(40, 8);
    return progress;
}

}  // namespace kelvo::app
