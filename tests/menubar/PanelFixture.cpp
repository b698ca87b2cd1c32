#include "PanelFixture.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QScrollBar>
#include <QTextDocument>

namespace kelvo::app::testing {

void screenshot(QWidget& widget, const std::string& name) {
    QCoreApplication::processEvents();  // layouts settle before anything is measured
    // Every text shown has the room it needs: a label its lines, a button its hint.
    for (const QLabel* label : widget.findChildren<QLabel*>()) {
        if (!label->isVisibleTo(&widget) || label->text().isEmpty() || Qt::mightBeRichText(label->text())) continue;
        const QRect room = label->contentsRect();
        // Laid out from the top: a centred line in a tall rectangle would round to one pixel more.
        const int flags = static_cast<int>(label->alignment() & Qt::AlignHorizontal_Mask) |
                          (label->wordWrap() ? Qt::TextWordWrap : 0);
        const QRect needed = label->fontMetrics().boundingRect(QRect(0, 0, room.width(), 100000), flags, label->text());
        EXPECT_TRUE(needed.width() <= room.width() && needed.height() <= room.height())
            << name << ": \"" << label->text().toStdString() << "\" needs " << needed.width() << "x" << needed.height()
            << ", has " << room.width() << "x" << room.height();
    }
    for (const QAbstractButton* button : widget.findChildren<QAbstractButton*>())
        EXPECT_TRUE(!button->isVisibleTo(&widget) || button->text().isEmpty() || button->width() >= button->sizeHint().width())
            << name << ": " << button->text().toStdString();
    // Nothing is wider than its scroll area, the bar shown or not.
    for (const QAbstractScrollArea* area : widget.findChildren<QAbstractScrollArea*>())
        EXPECT_TRUE(!area->isVisibleTo(&widget) || area->horizontalScrollBar()->maximum() == 0) << name;

    const QImage image = widget.grab().toImage();
    ASSERT_FALSE(image.isNull()) << name;
    QDir().mkpath(KELVO_SCREENSHOT_DIR);
    image.save(QString(KELVO_SCREENSHOT_DIR "/%1.png").arg(QString::fromStdString(name)));
    std::set<QRgb> colours;
    for (int y = 0; y < image.height() && colours.size() < 3; y += 3)
        for (int x = 0; x < image.width() && colours.size() < 3; x += 3) colours.insert(image.pixel(x, y));
    EXPECT_GE(colours.size(), 3u) << name << " renders blank";
}

}  // namespace kelvo::app::testing
