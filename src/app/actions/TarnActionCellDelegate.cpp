#include "actions/TarnActionCellDelegate.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QIcon>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

#include "actions/TarnQueueModel.h"

namespace {

constexpr int kMargin = 6;
constexpr int kButtonSize = 24;
constexpr int kButtonGap = 4;
constexpr int kBarHeight = 18;
constexpr int kBarWidth = 180;
constexpr int kBarSteps = 1000;  // the style's bar counts in int: byte counts overflow it

const QStyle* styleOf(const QStyleOptionViewItem& option) {
    return option.widget ? option.widget->style() : QApplication::style();
}

}  // namespace

TarnActionCellDelegate::TarnActionCellDelegate(QAbstractItemView* view)
    : QStyledItemDelegate(view),
      view_(view),
      cancelIcon_(QIcon::fromTheme(QStringLiteral("process-stop"),
                                   view->style()->standardIcon(QStyle::SP_DialogCancelButton))),
      infoIcon_(QIcon::fromTheme(QStringLiteral("dialog-information"),
                                 view->style()->standardIcon(QStyle::SP_MessageBoxInformation))) {
    view_->viewport()->setMouseTracking(true);
    view_->viewport()->installEventFilter(this);
}

QRect TarnActionCellDelegate::buttonRect(const QRect& cell, Button button) {
    if (button == Button::None) return QRect();
    const int left =
        cell.left() + kMargin + (button == Button::Info ? kButtonSize + kButtonGap : 0);
    return QRect(left, cell.top() + (cell.height() - kButtonSize) / 2, kButtonSize, kButtonSize);
}

QRect TarnActionCellDelegate::progressRect(const QRect& cell) {
    return QRect(cell.left() + kMargin, cell.top() + (cell.height() - kBarHeight) / 2,
                 std::max(cell.width() - 2 * kMargin, 0), kBarHeight);
}

TarnActionCellDelegate::Button TarnActionCellDelegate::buttonAt(const QRect& cell,
                                                                const QPoint& point) {
    for (Button button : {Button::Cancel, Button::Info})
        if (buttonRect(cell, button).contains(point)) return button;
    return Button::None;
}

int TarnActionCellDelegate::rowHeight(const QFontMetrics& metrics) {
    return std::max(metrics.lineSpacing() * 3 + 2 * kMargin, kButtonSize + 2 * kMargin);
}

int TarnActionCellDelegate::columnWidth(int column, const QFontMetrics& metrics) {
    switch (column) {
        case TarnQueueModel::StatusColumn:
            return metrics.horizontalAdvance(TarnAction::cancelledWord()) + 3 * kMargin;
        case TarnQueueModel::ProgressColumn:
            return kBarWidth + 2 * kMargin;
        case TarnQueueModel::ButtonsColumn:
            return 2 * kButtonSize + kButtonGap + 2 * kMargin;
        default:
            return 0;
    }
}

QSize TarnActionCellDelegate::sizeHint(const QStyleOptionViewItem& option,
                                       const QModelIndex& index) const {
    int width = columnWidth(index.column(), option.fontMetrics);
    if (width == 0) width = QStyledItemDelegate::sizeHint(option, index).width() + 2 * kMargin;
    return QSize(width, rowHeight(option.fontMetrics));
}

void TarnActionCellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    // A row is one thing: the selection shows it, not a focus frame around one cell.
    QStyleOptionViewItem cell(option);
    cell.state &= ~QStyle::State_HasFocus;
    switch (index.column()) {
        case TarnQueueModel::ProgressColumn:
            paintProgress(painter, cell, index);
            break;
        case TarnQueueModel::ButtonsColumn:
            paintButtons(painter, cell, index);
            break;
        default:
            cell.rect.adjust(kMargin, 0, -kMargin, 0);
            QStyledItemDelegate::paint(painter, cell, index);
    }
}

const QStyle* TarnActionCellDelegate::paintCellBackground(QPainter* painter,
                                                          const QStyleOptionViewItem& option,
                                                          const QModelIndex& index) const {
    const QStyle* style = styleOf(option);
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    cell.text.clear();
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, option.widget);
    return style;
}

void TarnActionCellDelegate::paintProgress(QPainter* painter, const QStyleOptionViewItem& option,
                                           const QModelIndex& index) const {
    const QStyle* style = paintCellBackground(painter, option, index);

    const bool busy = index.data(TarnQueueModel::ProgressBusyRole).toBool();
    const double maximum = index.data(TarnQueueModel::ProgressMaximumRole).toDouble();
    const double value = index.data(TarnQueueModel::ProgressValueRole).toDouble();
    QStyleOptionProgressBar bar;
    bar.rect = progressRect(option.rect);
    bar.state = (option.state & QStyle::State_Enabled) | QStyle::State_Horizontal;
    bar.direction = option.direction;
    bar.palette = option.palette;
    bar.fontMetrics = option.fontMetrics;
    bar.minimum = 0;
    bar.maximum = busy ? 0 : kBarSteps;  // 0..0 is the style's indeterminate bar
    bar.progress =
        busy || maximum <= 0 ? 0 : int(std::clamp(value / maximum, 0.0, 1.0) * kBarSteps);
    bar.textVisible = false;
    style->drawControl(QStyle::CE_ProgressBar, &bar, painter, option.widget);
}

void TarnActionCellDelegate::paintButtons(QPainter* painter, const QStyleOptionViewItem& option,
                                          const QModelIndex& index) const {
    const QStyle* style = paintCellBackground(painter, option, index);

    for (Button button : {Button::Cancel, Button::Info}) {
        QStyleOptionToolButton tool;
        tool.rect = buttonRect(option.rect, button);
        tool.direction = option.direction;
        tool.palette = option.palette;
        tool.fontMetrics = option.fontMetrics;
        tool.icon = button == Button::Cancel ? cancelIcon_ : infoIcon_;
        tool.iconSize = QSize(16, 16);
        tool.toolButtonStyle = Qt::ToolButtonIconOnly;
        tool.subControls = QStyle::SC_ToolButton;
        tool.state = QStyle::State_Enabled | QStyle::State_AutoRaise;
        if (index == hoverIndex_ && button == hover_)
            tool.state |= QStyle::State_MouseOver | QStyle::State_Raised;
        if (index == pressedIndex_ && button == pressed_) {
            tool.state |= QStyle::State_Sunken;
            tool.activeSubControls = QStyle::SC_ToolButton;
        }
        style->drawComplexControl(QStyle::CC_ToolButton, &tool, painter, option.widget);
    }
}

QModelIndex TarnActionCellDelegate::buttonCellAt(const QPoint& point, Button* button) const {
    *button = Button::None;
    QModelIndex index = view_->indexAt(point);
    if (!index.isValid() || index.column() != TarnQueueModel::ButtonsColumn) return QModelIndex();
    *button = buttonAt(view_->visualRect(index), point);
    return index;
}

void TarnActionCellDelegate::setHover(const QModelIndex& index, Button button) {
    if (index == hoverIndex_ && button == hover_) return;
    if (hoverIndex_.isValid()) view_->viewport()->update(view_->visualRect(hoverIndex_));
    hoverIndex_ = index;
    hover_ = button;
    if (index.isValid()) view_->viewport()->update(view_->visualRect(index));
}

bool TarnActionCellDelegate::mousePress(const QModelIndex& index, Button button) {
    if (button == Button::None) return false;
    pressedIndex_ = index;
    pressed_ = button;
    view_->viewport()->update(view_->visualRect(index));
    return true;
}

bool TarnActionCellDelegate::mouseRelease(const QModelIndex& index, Button button) {
    if (pressed_ == Button::None) return false;
    const QPersistentModelIndex pressedIndex = pressedIndex_;
    const Button pressed = pressed_;
    pressed_ = Button::None;
    pressedIndex_ = QPersistentModelIndex();
    if (pressedIndex.isValid()) view_->viewport()->update(view_->visualRect(pressedIndex));
    if (!pressedIndex.isValid() || pressedIndex != index || pressed != button) return true;
    if (pressed == Button::Cancel) {
        emit cancelClicked(index);
    } else {
        const QRect cell = buttonRect(view_->visualRect(index), Button::Info);
        emit infoClicked(index, QRect(view_->viewport()->mapToGlobal(cell.topLeft()), cell.size()));
    }
    return true;
}

bool TarnActionCellDelegate::eventFilter(QObject* watched, QEvent* event) {
    // While the view is being destroyed it is no view any more (the cast
    // fails), and its viewport still sends events.
    if (!qobject_cast<QAbstractItemView*>(watched->parent()) || watched != view_->viewport())
        return false;
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove: {
            auto* mouse = static_cast<QMouseEvent*>(event);
            Button button = Button::None;
            const QModelIndex index = buttonCellAt(mouse->position().toPoint(), &button);
            setHover(index, button);
            if (mouse->button() != Qt::LeftButton) return false;
            if (event->type() == QEvent::MouseButtonPress) return mousePress(index, button);
            if (event->type() == QEvent::MouseButtonRelease) return mouseRelease(index, button);
            // A double-click on a button is two clicks on it, not a reveal.
            return event->type() == QEvent::MouseButtonDblClick && button != Button::None;
        }
        case QEvent::Leave:
            setHover(QModelIndex(), Button::None);
            return false;
        default:
            return false;
    }
}
