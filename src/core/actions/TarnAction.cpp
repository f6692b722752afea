#include "actions/TarnAction.h"

#include <QMutexLocker>

#include "actions/TarnActionOperation.h"
#include "items/TarnFileSize.h"

TarnAction::TarnAction(const TarnActionOptions& options)
    : operation_(std::make_shared<TarnActionOperation>(options)) {
    operation_->setDelegate(this);
    // Direct: the status turns to "Cancelled" at once, whatever thread cancels.
    connect(
        operation_.get(), &TarnActionOperation::isCancelledChanged, this,
        [this](bool cancelled) {
            if (cancelled) setStatus(cancelledWord());
        },
        Qt::DirectConnection);
}

TarnAction::~TarnAction() {
    // Stop observing before anything else: the worker may outlive the action.
    disconnect(operation_.get(), nullptr, this, nullptr);
    operation_->setDelegate(nullptr);
}

void TarnAction::Action_cancel() {
    operation_->cancel();
}

QString TarnAction::descriptionText() const {
    QMutexLocker lock(&mutex_);
    return description_;
}

QString TarnAction::statusText() const {
    QMutexLocker lock(&mutex_);
    return status_;
}

double TarnAction::progressMaximum() const {
    QMutexLocker lock(&mutex_);
    return maximum_;
}

void TarnAction::setStatus(const QString& word) {
    {
        QMutexLocker lock(&mutex_);
        status_ = word;
    }
    emit statusChanged(word);
}

void TarnAction::setDescription(const QString& text) {
    {
        QMutexLocker lock(&mutex_);
        description_ = text;
    }
    emit descriptionChanged(text);
}

QString TarnAction::destinationText() const {
    if (operation_->Action_Properties().isDelete())
        return QStringLiteral("Super Secret Annihilator (SSA)");
    return operation_->validPath();
}

QString TarnAction::queuedDescription() const {
    const quint64 total = operation_->itemsTotal();
    if (total == 0) return QStringLiteral("InvalidAction");
    return QStringLiteral("%1 %2 %3 %4 \ndestination:\n%5")
        .arg(operation_->Action_Properties().Action)
        .arg(total)
        .arg(total < 2 ? QStringLiteral("item") : QStringLiteral("items"),
             TarnFileSize::toHumanBytes(double(operation_->BytesTotal())), destinationText());
}

QString TarnAction::progressDescription() const {
    const quint64 total = operation_->itemsTotal();
    if (total == 0) return QStringLiteral("InvalidAction");
    return QStringLiteral("%1 %2 of %3 %4 %5 \ndestination:\n%6")
        .arg(operation_->Action_Properties().Action)
        .arg(operation_->itemsDone())
        .arg(total)
        .arg(total < 2 ? QStringLiteral("item") : QStringLiteral("items"),
             TarnFileSize::toHumanBytes(double(operation_->BytesTotal())), destinationText());
}

void TarnAction::SetStatusText() {
    setDescription(queuedDescription());
    if (operation_->itemsTotal() != 0) {
        double maximum = double(operation_->BytesTotal());
        {
            QMutexLocker lock(&mutex_);
            maximum_ = maximum;
        }
        emit progressMaximumChanged(maximum);
    }
    // Each test overrides the one before: a cancelled, finished run reads "Cancelled".
    QString word;
    if (operation_->isReady()) word = waitingWord();
    if (operation_->isExecuting()) word = runningWord();
    if (operation_->isFinished()) word = doneWord();
    if (operation_->isCancelled()) word = cancelledWord();
    setStatus(word);
}

void TarnAction::TarnActionOperationWillStart(TarnActionOperation*) {
    setStatus(runningWord());
}

void TarnAction::TarnActionOperationStatusUpdate(TarnActionOperation*) {
    setDescription(progressDescription());
}

void TarnAction::TarnActionOperationDidFinished(TarnActionOperation*) {
    setStatus(doneWord());
    emit progressChanged(double(operation_->BytesDone()), true);
}
