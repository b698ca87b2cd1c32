#pragma once
// The disk bar: a thin track filled by the used fraction of the home volume, coloured by
// how full it is, with the free and total bytes under it.
#include <QWidget>

#include "kelvo/DiskSpace.h"

class QLabel;

namespace kelvo::app {

class DiskBar : public QWidget {
    Q_OBJECT
public:
    explicit DiskBar(QWidget* parent = nullptr);
    void display(const DiskSpace& disk);
    QColor fillColour() const;
    QLabel* caption() const { return caption_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    DiskSpace disk_;
    QLabel* caption_;
};

}  // namespace kelvo::app
