#pragma once

#include <QList>
#include <QObject>
#include <QRecursiveMutex>
#include <QThreadPool>
#include <QTimer>

#include <memory>
#include <optional>

#include "actions/TarnAction.h"
#include "actions/TarnActionOptions.h"

// The action queue: owns every action, newest first (row 0 is the most recent
// one), runs them strictly one at a time in the order they were added on one
// worker thread, drives the progress bars from a 0.1-second timer, and
// removes or clears actions on request. It has no window: a view listens to
// the row signals and asks for `actions()`. Live on the main thread.
class TarnActionManager : public QObject {
    Q_OBJECT
  public:
    explicit TarnActionManager(QObject* parent = nullptr);
    ~TarnActionManager() override;

    using ActionPtr = std::shared_ptr<TarnAction>;

    // Wraps the options in an action, puts it on top and queues its run.
    ActionPtr SetUpNewActionWithOptions(const TarnActionOptions& options);
    // Cancels the action; its row goes once the worker has really stopped
    // (at once for an action that has finished or never started).
    void queueRemoveAction(const ActionPtr& action);
    void continueRemoveAction(const ActionPtr& action);
    // Asks "Really clear queue?"; on "OK" cancels everything, waits for the
    // worker and empties the list. Returns whether the queue was cleared.
    bool clearQueue();

    QList<ActionPtr> actions() const;
    int numberOfRows() const;
    // A row view shows row `row` from now on: it gets its texts and the
    // progress timer starts.
    void SetCellForRow(int row);
    void setTimer();
    bool timerRunning() const { return updateTimer_ != nullptr; }
    // One tick of the timer: every shown action's bar.
    void updateProgress();
    // What the bar of an action shows: BytesDone + bWritten while it runs,
    // nothing (indeterminate) once its run is over, else empty.
    static std::optional<double> progressValue(const TarnAction& action);

  signals:
    void rowInserted(int row);
    void rowRemoved(int row);
    void queueCleared();
    // The queue should be shown (the desktop shows its sheet).
    void showRequested();

  private:
    void stopTimer();

    mutable QRecursiveMutex lock_;
    QList<ActionPtr> actions_;
    QThreadPool pool_;
    QTimer* updateTimer_ = nullptr;
};
