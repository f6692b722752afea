#pragma once

#include <QPointer>
#include <QStringList>
#include <QWidget>

class BinCommands;
class QDropEvent;
class QMimeData;

// The drop target for Avid bins over the table area. At rest it is invisible
// and lets every click through to the table; while a drag hovers the area it
// veils it, frames it with a dashed rounded rectangle, asks for bins and
// names the operation that the drop will run.
//
// The operation comes from the drag's operation mask (1 copy, 2 link,
// 4 generic): copy intersects, else generic adds, else link subtracts. The
// mask is what the drag source offers, narrowed by the modifier keys held:
//
//                 Linux, Windows     macOS
//   Intersect     none, or Ctrl      none, or Option
//   Add           Shift              Command
//   Subtract      Ctrl+Shift         Command+Option
//
// Only files ending in ".avb" (any case) are taken; a folder or another file
// makes the drop beep and do nothing. A drag without file URLs at all is
// taken and runs the operation on no bins. A drop never moves a bin: it is
// always answered as a copy (or a link where the source offers no copy).
class TarnDragDropView : public QWidget {
    Q_OBJECT
  public:
    enum MaskBit : quint32 { kCopy = 1, kLink = 2, kGeneric = 4 };
    enum class Operation { None, Intersect, Subtract, Add };

    // Covers `area` and follows its size; drags over `area` come here.
    explicit TarnDragDropView(QWidget* area);

    // The operations go to `delegate`'s DoAVBIntersect, DoAVBSubtract and
    // DoAVBAdd (not owned; none: a drop does nothing).
    void setAvbOpDelegate(BinCommands* delegate);

    bool isHighlighted() const { return highlighted_; }
    quint32 currentDragMask() const { return mask_; }

    static quint32 dragMask(Qt::DropActions offered, Qt::KeyboardModifiers modifiers);
    static Operation operationForMask(quint32 mask);
    // "Intersect", "Add", "Subtract"; null for none.
    static QString label(Operation operation);
    // Whether a drag carrying `data` may be dropped.
    static bool checkDraginfo(const QMimeData* data);

  signals:
    void intersectRequested(const QStringList& binPaths);
    void subtractRequested(const QStringList& binPaths);
    void addRequested(const QStringList& binPaths);
    // The three above are emitted just after the drop event has been answered.
    // A drop of folders or other files than bins (after the beep).
    void dropRefused();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    bool draggingUpdated(QDropEvent* event);
    void draggingExited();
    void performDragOperation(QDropEvent* event);
    void requestOperation(Operation operation, const QStringList& bins);
    void setHighlighted(bool highlighted);
    void setCurrentDragMask(quint32 mask);

    QPointer<QWidget> area_;
    QPointer<BinCommands> delegate_;
    bool highlighted_ = false;
    quint32 mask_ = 0;
};
