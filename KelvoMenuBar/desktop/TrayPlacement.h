#pragma once
// Where the panel opens: centred under the tray icon when the tray reports the icon's
// place (above it when the icon sits in the lower half of the screen, as with a bottom
// panel), otherwise at the pointer; always kept inside the screen's available area.
#include <QPoint>
#include <QRect>
#include <QSize>

namespace kelvo::app {

QPoint panelPosition(const QRect& iconGeometry, const QPoint& pointer, const QRect& available, const QSize& panel);

}  // namespace kelvo::app
