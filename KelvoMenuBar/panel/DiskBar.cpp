#include "panel/DiskBar.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>

#include "AppText.h"
#include "kelvo/Format.h"
#include "panel/Palette.h"

namespace kelvo::app {
namespace {
constexpr int trackHeight = 6;
}

DiskBar::DiskBar(QWidget* parent) : QWidget(parent), caption_(new QLabel(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, trackHeight + 4, 0, 0);
    caption_->setStyleSheet("color: palette(placeholder-text); font-size: 10px;");
    layout->addWidget(caption_);
}

void DiskBar::display(const DiskSpace& disk) {
    disk_ = disk;
    caption_->setText(AppText::t("panel.diskFree", Format::bytes(disk.freeBytes), Format::bytes(disk.totalBytes)));
    update();
}

QColor DiskBar::fillColour() const { return Palette::of(diskTone(disk_), *this); }

void DiskBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QColor track = Palette::secondary(*this);
    track.setAlphaF(0.2f);
    const qreal radius = trackHeight / 2.0;
    painter.setBrush(track);
    painter.drawRoundedRect(QRectF(0, 0, width(), trackHeight), radius, radius);
    const qreal fill = std::max(2.0, disk_.usedFraction() * width());
    painter.setBrush(fillColour());
    painter.drawRoundedRect(QRectF(0, 0, fill, trackHeight), radius, radius);
}

}  // namespace kelvo::app
