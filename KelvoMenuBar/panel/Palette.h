#pragma once
// The few named colours of the screens; everything else comes from the desktop's palette.
#include <QColor>
#include <QWidget>

#include "kelvo/RiskAxes.h"
#include "panel/PanelRules.h"

namespace kelvo::app::Palette {

inline const QColor green{52, 199, 89};
inline const QColor orange{255, 149, 0};
inline const QColor red{255, 59, 48};

inline QColor accent(const QWidget& widget) { return widget.palette().color(QPalette::Highlight); }
inline QColor secondary(const QWidget& widget) { return widget.palette().color(QPalette::PlaceholderText); }
inline QColor of(Tone tone, const QWidget& widget) {
    return tone == Tone::red ? red : tone == Tone::orange ? orange : accent(widget);
}
inline QColor of(Level level) { return level == Level::safe ? green : level == Level::moderate ? orange : red; }

}  // namespace kelvo::app::Palette
