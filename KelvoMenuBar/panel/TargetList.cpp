#include "panel/TargetList.h"

#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QStackedLayout>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include "AppText.h"
#include "Icons.h"
#include "kelvo/Format.h"
#include "panel/Palette.h"
#include "panel/PanelRules.h"
#include "panel/TargetListModel.h"

namespace kelvo::app {
namespace {

constexpr int sectionHeight = 26;
constexpr int rowHeight = 38;

// Paints section headers (family icon, name, bytes) and target rows (check mark, level
// dot, name elided in the middle over its risk text, size).
class TargetDelegate : public QStyledItemDelegate {
public:
    TargetDelegate(const TargetListModel& rows, QWidget* owner) : QStyledItemDelegate(owner), rows_(rows), owner_(*owner) {}

    // No width of its own: the view gives every row its viewport's width, so a scroll bar
    // that appears (the list shortened by the confirmation) never makes the rows wider.
    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const override {
        return {0, rows_.target(index) ? rowHeight : sectionHeight};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const QRect area = option.rect.adjusted(6, 0, -6, 0);
        const QColor secondary = Palette::secondary(owner_);
        const QColor text = owner_.palette().color(QPalette::Text);
        QFont font = option.font;
        if (const CleanTarget* target = rows_.target(index)) {
            const bool selected = index.data(TargetListModel::SelectedRole).toBool();
            const QRect check(area.left(), area.center().y() - 8, 16, 16);
            Icons::symbol(selected ? "checkmark.square.fill" : "square").paint(painter, check);
            painter->setPen(Qt::NoPen);
            painter->setBrush(Palette::of(target->level));
            painter->drawEllipse(QRect(check.right() + 8, area.center().y() - 4, 8, 8));
            const QString size = target->sizeUnknown() ? AppText::t("panel.size.unknown")
                                                       : QString::fromStdString(Format::bytes(target->sizeBytes));
            const int sizeWidth = option.fontMetrics.horizontalAdvance(size) + 4;
            const int left = check.right() + 24;
            const QRect name(left, area.top() + 3, area.right() - sizeWidth - left - 8, option.fontMetrics.height());
            painter->setPen(text);
            painter->drawText(name, Qt::AlignLeft | Qt::AlignVCenter,
                              option.fontMetrics.elidedText(QString::fromStdString(target->name), Qt::ElideMiddle, name.width()));
            font.setPointSizeF(font.pointSizeF() * 0.85);
            painter->setFont(font);
            painter->setPen(secondary);
            const QRect risk(left, name.bottom() + 1, name.width(), QFontMetrics(font).height());
            painter->drawText(risk, Qt::AlignLeft,
                              QFontMetrics(font).elidedText(riskText(*target), Qt::ElideRight, risk.width()));
            painter->setFont(option.font);
            painter->setPen(text);
            painter->drawText(area, Qt::AlignRight | Qt::AlignVCenter, size);
        } else {
            const auto& section = std::get<TargetListModel::Section>(rows_.row(index.row()));
            Icons::symbol(iconName(section.family)).paint(painter, QRect(area.left(), area.center().y() - 8, 16, 16));
            font.setBold(true);
            painter->setFont(font);
            painter->setPen(text);
            painter->drawText(area.adjusted(24, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                              QString::fromStdString(displayName(section.family)));
            painter->drawText(area, Qt::AlignRight | Qt::AlignVCenter, QString::fromStdString(Format::bytes(section.bytes)));
        }
        painter->restore();
    }

private:
    const TargetListModel& rows_;
    const QWidget& owner_;
};

}  // namespace

TargetList::TargetList(AppModel& model, QWidget* parent)
    : QWidget(parent), model_(model), rows_(new TargetListModel(model, this)), view_(new QListView(this)),
      emptyIcon_(new QLabel(this)), emptyText_(new QLabel(this)), stack_(new QStackedLayout(this)) {
    auto* empty = new QWidget(this);
    auto* emptyLayout = new QVBoxLayout(empty);
    emptyLayout->setSpacing(8);
    emptyLayout->addStretch(1);
    emptyLayout->addWidget(emptyIcon_, 0, Qt::AlignHCenter);
    // Full width, no alignment of its own in the layout: a wrapped label then gets the
    // height its lines need instead of the height of one.
    emptyLayout->addWidget(emptyText_);
    emptyLayout->addStretch(1);
    emptyText_->setWordWrap(true);
    emptyText_->setAlignment(Qt::AlignCenter);
    emptyText_->setStyleSheet("color: palette(placeholder-text);");
    view_->setModel(rows_);
    view_->setItemDelegate(new TargetDelegate(*rows_, view_));
    view_->setUniformItemSizes(false);
    view_->setSelectionMode(QAbstractItemView::NoSelection);
    view_->setFrameShape(QFrame::NoFrame);
    view_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view_->setMouseTracking(true);
    connect(view_, &QListView::clicked, this, [this](const QModelIndex& index) {
        if (const CleanTarget* target = rows_->target(index)) model_.toggle(target->id);
    });
    stack_->addWidget(empty);
    stack_->addWidget(view_);
    targetsChanged();
}

const char* TargetList::emptySymbol() const {
    if (model_.phase() == AppModel::Phase::scanning) return "hourglass";
    return model_.scanned() ? "checkmark.circle.fill" : "sparkles";
}

void TargetList::targetsChanged() {
    rows_->reload();
    phaseChanged();
}

void TargetList::selectionChanged() { rows_->selectionChanged(); }

void TargetList::phaseChanged() {
    const bool scanning = model_.phase() == AppModel::Phase::scanning;
    emptyIcon_->setPixmap(Icons::symbol(emptySymbol()).pixmap(30, 30));
    emptyText_->setText(AppText::t(scanning ? "panel.scanning" : model_.scanned() ? "panel.nothingFound" : "panel.emptyHint"));
    stack_->setCurrentIndex(model_.targets().empty() ? 0 : 1);
}

}  // namespace kelvo::app
