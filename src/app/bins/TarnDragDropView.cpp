#include "bins/TarnDragDropView.h"

#include <QApplication>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

#include "bins/BinCommands.h"
#include "log/xConsole.h"

namespace {

const QColor kGrey = QColor::fromRgbF(0.7f, 0.7f, 0.7f, 1.0f);
const char* kPrompt = "\nDrop here one or more Avid's bins\nto scan for referenced media";

// The operations a modifier combination leaves of a drag's offer. Qt names
// the Mac's Command key Control and its Option key Alt.
quint32 modifierMask(Qt::KeyboardModifiers modifiers) {
    using V = TarnDragDropView;
#ifdef Q_OS_MACOS
    const bool narrowToGeneric = modifiers & Qt::ControlModifier;
    const bool narrowToCopy = modifiers & Qt::AltModifier;
#else
    const bool narrowToGeneric = modifiers & Qt::ShiftModifier;
    const bool narrowToCopy = modifiers & Qt::ControlModifier;
#endif
    if (narrowToGeneric && narrowToCopy) return V::kLink;
    if (narrowToGeneric) return V::kGeneric;
    if (narrowToCopy) return V::kCopy;
    return V::kCopy | V::kLink | V::kGeneric;
}

// The answer to the source: never a move, which would let it delete the bin.
Qt::DropAction harmlessAction(Qt::DropActions offered) {
    if (offered & Qt::CopyAction) return Qt::CopyAction;
    if (offered & Qt::LinkAction) return Qt::LinkAction;
    return Qt::IgnoreAction;
}

}  // namespace

TarnDragDropView::TarnDragDropView(QWidget* area) : QWidget(area), area_(area) {
    setObjectName(QStringLiteral("TarnDragDropView"));
    setAccessibleName(QStringLiteral("TarnDragDropView"));
    // Clicks, wheel and keys go to the table below; drags are caught on the
    // area itself (a widget transparent to the mouse gets no drag events).
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    if (area) {
        area->setAcceptDrops(true);
        area->installEventFilter(this);
        setGeometry(area->rect());
    }
    raise();
}

void TarnDragDropView::setAvbOpDelegate(BinCommands* delegate) {
    if (delegate_) disconnect(this, nullptr, delegate_, nullptr);
    delegate_ = delegate;
    if (!delegate) return;
    connect(this, &TarnDragDropView::intersectRequested, delegate, &BinCommands::DoAVBIntersect);
    connect(this, &TarnDragDropView::subtractRequested, delegate, &BinCommands::DoAVBSubtract);
    connect(this, &TarnDragDropView::addRequested, delegate, &BinCommands::DoAVBAdd);
}

quint32 TarnDragDropView::dragMask(Qt::DropActions offered, Qt::KeyboardModifiers modifiers) {
    quint32 mask = 0;
    if (offered & Qt::CopyAction) mask |= kCopy;
    if (offered & Qt::LinkAction) mask |= kLink;
    if (offered & Qt::MoveAction) mask |= kGeneric;
    return mask & modifierMask(modifiers);
}

TarnDragDropView::Operation TarnDragDropView::operationForMask(quint32 mask) {
    if (mask & kCopy) return Operation::Intersect;
    if (mask & kGeneric) return Operation::Add;
    if (mask & kLink) return Operation::Subtract;
    return Operation::None;
}

QString TarnDragDropView::label(Operation operation) {
    switch (operation) {
        case Operation::Intersect:
            return QStringLiteral("Intersect");
        case Operation::Add:
            return QStringLiteral("Add");
        case Operation::Subtract:
            return QStringLiteral("Subtract");
        case Operation::None:
            break;
    }
    return QString();
}

bool TarnDragDropView::checkDraginfo(const QMimeData* data) {
    // Without file URLs there is nothing to refuse: the drop runs the
    // operation on no bins.
    if (!data || !data->hasUrls()) return true;
    for (const QUrl& url : data->urls()) {
        const QString path = url.isLocalFile() ? url.toLocalFile() : url.path();
        const QFileInfo info(path);
        if (url.isLocalFile() && info.isDir()) return false;
        if (info.suffix().compare(QLatin1String("avb"), Qt::CaseInsensitive) != 0) return false;
    }
    return true;
}

bool TarnDragDropView::eventFilter(QObject* watched, QEvent* event) {
    if (watched != area_) return false;
    switch (event->type()) {
        case QEvent::Resize:
        case QEvent::Show:
            setGeometry(area_->rect());
            return false;
        case QEvent::ChildAdded:
            raise();
            return false;
        case QEvent::DragEnter:
        case QEvent::DragMove:
            return draggingUpdated(static_cast<QDropEvent*>(event));
        case QEvent::DragLeave:
            draggingExited();
            return true;
        case QEvent::Drop:
            performDragOperation(static_cast<QDropEvent*>(event));
            return true;
        default:
            return false;
    }
}

bool TarnDragDropView::draggingUpdated(QDropEvent* event) {
    // The table's own rows dragged back onto it are not bins: let them be.
    auto* source = qobject_cast<QWidget*>(event->source());
    if (source && area_ && (source == area_ || area_->isAncestorOf(source))) {
        event->ignore();
        return true;
    }
    const Qt::DropAction answer = harmlessAction(event->possibleActions());
    if (answer == Qt::IgnoreAction) {
        event->ignore();
        return true;
    }
    // Every drag is taken, so that a refused one can beep when dropped.
    setHighlighted(checkDraginfo(event->mimeData()));
    setCurrentDragMask(dragMask(event->possibleActions(), event->modifiers()));
    event->setDropAction(answer);
    event->accept();
    return true;
}

void TarnDragDropView::draggingExited() {
    setHighlighted(false);
    setCurrentDragMask(0);
}

void TarnDragDropView::performDragOperation(QDropEvent* event) {
    if (!checkDraginfo(event->mimeData())) {
        event->ignore();
        QApplication::beep();
        draggingExited();
        emit dropRefused();
        return;
    }
    event->setDropAction(harmlessAction(event->possibleActions()));
    event->accept();
    QStringList bins;
    if (event->mimeData()->hasUrls()) {
        for (const QUrl& url : event->mimeData()->urls()) bins.append(url.toLocalFile());
    }
    TARN_LOG(QStringLiteral("Tarn:: Accepted %1 bins").arg(bins.size()));
    const Operation operation =
        operationForMask(dragMask(event->possibleActions(), event->modifiers()));
    draggingExited();
    // The operation runs once the drop has been answered, so the source (the
    // file manager) is not kept waiting while the bins are read.
    QMetaObject::invokeMethod(
        this, [this, operation, bins] { requestOperation(operation, bins); }, Qt::QueuedConnection);
}

void TarnDragDropView::requestOperation(Operation operation, const QStringList& bins) {
    switch (operation) {
        case Operation::Intersect:
            emit intersectRequested(bins);
            break;
        case Operation::Subtract:
            emit subtractRequested(bins);
            break;
        case Operation::Add:
            emit addRequested(bins);
            break;
        case Operation::None:
            break;
    }
}

void TarnDragDropView::setHighlighted(bool highlighted) {
    if (highlighted_ == highlighted) return;
    highlighted_ = highlighted;
    update();
}

void TarnDragDropView::setCurrentDragMask(quint32 mask) {
    if (mask_ == mask) return;
    mask_ = mask;
    update();
}

void TarnDragDropView::paintEvent(QPaintEvent*) {
    if (!highlighted_) return;  // invisible at rest
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), QColor::fromRgbF(0, 0, 0, 0.75f));

    const QRectF frame = QRectF(rect()).adjusted(10, 10, -10, -10);
    QPen pen(kGrey, 6);
    pen.setCapStyle(Qt::FlatCap);
    // Qt measures dashes in line widths: 10-point dashes and gaps, phase 15.
    pen.setDashPattern({10.0 / 6, 10.0 / 6, 10.0 / 6, 10.0 / 6});
    pen.setDashOffset(15.0 / 6);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame, 20, 20);

    QFont prompt = QApplication::font();
    prompt.setBold(true);
    prompt.setPixelSize(26);
    painter.setFont(prompt);
    painter.setPen(kGrey);
    painter.drawText(frame, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap,
                     QString::fromLatin1(kPrompt));

    const QString operation = label(operationForMask(mask_));
    if (operation.isEmpty()) return;
    QFont small = QApplication::font();
    small.setPixelSize(15);
    painter.setFont(small);
    // 30 points in from the bottom left corner.
    painter.drawText(QPointF(30, height() - 30 - painter.fontMetrics().descent()), operation);
}
