#pragma once

#include <QIcon>
#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

class QAbstractItemView;

// Draws the queue's rows (no widget per row): the description and status
// texts, the progress bar through the style (determinate while the action
// runs, indeterminate once it is over) and the row's two buttons, cancel and
// info, which it also hit-tests: a click released over the button it was
// pressed on emits `cancelClicked` or `infoClicked`.
class TarnActionCellDelegate : public QStyledItemDelegate {
    Q_OBJECT
  public:
    enum class Button { None, Cancel, Info };

    // Watches the view's viewport for the pointer (the buttons' hover look).
    explicit TarnActionCellDelegate(QAbstractItemView* view);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    // The pointer over the viewport: presses, releases and hover on the buttons.
    bool eventFilter(QObject* watched, QEvent* event) override;

    // Where the buttons and the bar sit in a cell of their column.
    static QRect buttonRect(const QRect& cell, Button button);
    static QRect progressRect(const QRect& cell);
    static Button buttonAt(const QRect& cell, const QPoint& point);
    // The row height that shows three lines of description.
    static int rowHeight(const QFontMetrics& metrics);
    // The width the status, progress and buttons columns need (0: any).
    static int columnWidth(int column, const QFontMetrics& metrics);

  signals:
    void cancelClicked(const QModelIndex& index);
    // `anchor`: the info button in global coordinates (where the popover hangs).
    void infoClicked(const QModelIndex& index, const QRect& anchor);

  private:
    void paintProgress(QPainter* painter, const QStyleOptionViewItem& option,
                       const QModelIndex& index) const;
    // The cell's selection and background without text; returns the style.
    const QStyle* paintCellBackground(QPainter* painter, const QStyleOptionViewItem& option,
                                      const QModelIndex& index) const;
    void paintButtons(QPainter* painter, const QStyleOptionViewItem& option,
                      const QModelIndex& index) const;
    void setHover(const QModelIndex& index, Button button);
    bool mousePress(const QModelIndex& index, Button button);
    bool mouseRelease(const QModelIndex& index, Button button);
    // The cell of the buttons' column under a viewport point, and the button there.
    QModelIndex buttonCellAt(const QPoint& point, Button* button) const;

    QAbstractItemView* view_;
    // Looked up once: the theme's icons, else the style's own.
    QIcon cancelIcon_;
    QIcon infoIcon_;
    QPersistentModelIndex pressedIndex_;
    Button pressed_ = Button::None;
    QPersistentModelIndex hoverIndex_;
    Button hover_ = Button::None;
};
