#include "desktop/TrayPlacement.h"

#include <algorithm>

namespace kelvo::app {

QPoint panelPosition(const QRect& iconGeometry, const QPoint& pointer, const QRect& available, const QSize& panel) {
    const QRect anchor = iconGeometry.isValid() && !iconGeometry.isEmpty() ? iconGeometry : QRect(pointer, QSize(1, 1));
    const bool below = anchor.center().y() < available.center().y();
    int x = anchor.center().x() - panel.width() / 2;
    int y = below ? anchor.bottom() + 1 : anchor.top() - panel.height();
    x = std::clamp(x, available.left(), std::max(available.left(), available.right() + 1 - panel.width()));
    y = std::clamp(y, available.top(), std::max(available.top(), available.bottom() + 1 - panel.height()));
    return {x, y};
}

}  // namespace kelvo::app
