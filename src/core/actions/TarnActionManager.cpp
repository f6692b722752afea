#include "actions/TarnActionManager.h"

#include <QCoreApplication>
#include <QMutexLocker>
#include <QPointer>

#include "actions/TarnActionOperation.h"
#include "actions/TarnAlert.h"

#if defined(__SANITIZE_THREAD__)
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

namespace {

// The pool hands a task to its thread under Qt's own lock, which
// ThreadSanitizer does not see when Qt is not built with it: name the edge
// (on one fixed address, so that taking it over reads nothing of the task).
[[maybe_unused]] char handOffTag;

void handOver() {
#if defined(__SANITIZE_THREAD__)
    __tsan_release(&handOffTag);
#endif
}

void takeOver() {
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(&handOffTag);
#endif
}

}  // namespace

TarnActionManager::TarnActionManager(QObject* parent) : QObject(parent) {
    pool_.setMaxThreadCount(1);
}

TarnActionManager::~TarnActionManager() {
    stopTimer();
    QMutexLocker lock(&lock_);
    for (const ActionPtr& action : actions_) {
        action->operationPtr()->setCompletionBlock(nullptr);
        action->Action_cancel();
    }
    pool_.waitForDone();
    actions_.clear();
}

TarnActionManager::ActionPtr TarnActionManager::SetUpNewActionWithOptions(
    const TarnActionOptions& options) {
    ActionPtr action = std::make_shared<TarnAction>(options);
    if (!action || !action->Action_Operation()) {
        TarnAlert::ShowDialog_with_errorName(QStringLiteral("Error creating action"),
                                             QStringLiteral("Something went wrong."));
        return nullptr;
    }
    {
        QMutexLocker lock(&lock_);
        actions_.insert(0, action);
        emit rowInserted(0);
        // The pool holds the worker, not the action: a removed action's run
        // can still end safely.
        std::shared_ptr<TarnActionOperation> operation = action->operationPtr();
        QRunnable* task = QRunnable::create([operation] {
            takeOver();
            operation->start();
        });
        handOver();
        pool_.start(task);
    }
    emit showRequested();
    return action;
}

void TarnActionManager::queueRemoveAction(const ActionPtr& action) {
    if (!action) return;
    QPointer<TarnActionManager> self(this);
    auto later = [self, action] {
        if (self)
            QMetaObject::invokeMethod(
                self,
                [self, action] {
                    if (self) self->continueRemoveAction(action);
                },
                Qt::QueuedConnection);
    };
    TarnActionOperation* operation = action->Action_Operation();
    if (operation->isFinished()) {
        later();
        return;
    }
    operation->setCompletionBlock(later);
    // Finished between the test and the routine being set: nobody will call it.
    if (operation->isFinished()) {
        operation->setCompletionBlock(nullptr);
        later();
    }
    action->Action_cancel();
}

void TarnActionManager::continueRemoveAction(const ActionPtr& action) {
    QMutexLocker lock(&lock_);
    qsizetype row = actions_.indexOf(action);
    if (row < 0) return;
    actions_.removeAt(row);
    action->setCell(false);
    emit rowRemoved(int(row));
    if (actions_.isEmpty()) stopTimer();
}

bool TarnActionManager::clearQueue() {
    {
        QMutexLocker lock(&lock_);
        if (actions_.isEmpty()) return false;
    }
    if (TarnAlert::ShowDialog_with_YesNo(QStringLiteral("Really clear queue?"),
                                         QStringLiteral("Are you sure?")) !=
        TarnAlert::kFirstButton)
        return false;
    stopTimer();
    QMutexLocker lock(&lock_);
    for (const ActionPtr& action : actions_) {
        action->operationPtr()->setCompletionBlock(nullptr);
        action->Action_cancel();
    }
    // A worker waiting on a question sees its action abandoned and goes on
    // to its end; keep the events flowing meanwhile so a presenter on this
    // thread can answer it.
    while (!pool_.waitForDone(20)) {
        if (QCoreApplication::instance()) QCoreApplication::processEvents();
    }
    for (const ActionPtr& action : actions_) action->setCell(false);
    actions_.clear();
    emit queueCleared();
    return true;
}

QList<TarnActionManager::ActionPtr> TarnActionManager::actions() const {
    QMutexLocker lock(&lock_);
    return actions_;
}

int TarnActionManager::numberOfRows() const {
    QMutexLocker lock(&lock_);
    return int(actions_.size());
}

void TarnActionManager::SetCellForRow(int row) {
    ActionPtr action;
    {
        QMutexLocker lock(&lock_);
        if (row < 0 || row >= actions_.size()) return;
        action = actions_.at(row);
    }
    action->setCell(true);
    action->SetStatusText();
    if (!updateTimer_) setTimer();
}

void TarnActionManager::setTimer() {
    if (updateTimer_) return;
    updateTimer_ = new QTimer(this);
    updateTimer_->setInterval(100);
    connect(updateTimer_, &QTimer::timeout, this, &TarnActionManager::updateProgress);
    updateTimer_->start();
}

void TarnActionManager::stopTimer() {
    if (!updateTimer_) return;
    updateTimer_->stop();
    updateTimer_->deleteLater();
    updateTimer_ = nullptr;
}

std::optional<double> TarnActionManager::progressValue(const TarnAction& action) {
    const TarnActionOperation* operation = action.Action_Operation();
    if (operation->isExecuting())
        return double(operation->BytesDone()) + double(operation->bWritten());
    return std::nullopt;
}

void TarnActionManager::updateProgress() {
    for (const ActionPtr& action : actions()) {
        if (!action->hasCell()) continue;
        const TarnActionOperation* operation = action->Action_Operation();
        if (operation->isExecuting())
            emit action->progressChanged(*progressValue(*action), false);
        else if (operation->isFinished())
            emit action->progressChanged(double(operation->BytesDone()), true);
    }
}
