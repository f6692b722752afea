#pragma once

#include <QObject>

#include <memory>
#include <mutex>

#include "database/TarnViewSnapshot.h"

// Hands the database's view from the thread that made it to the GUI thread.
//
// The GUI never reads the database itself: it shows the latest snapshot. A
// scan publishes one from its own thread when it has finished with the
// database; the main thread publishes one after each change it makes
// between scans. The hand-over is one lock, so the items the scan built are
// seen whole by the GUI thread.
class SnapshotPublisher : public QObject {
    Q_OBJECT
  public:
    using Snapshot = std::shared_ptr<const TarnViewSnapshot>;

    explicit SnapshotPublisher(QObject* parent = nullptr);

    // Any thread. On the GUI thread the snapshot is taken at once; from
    // another thread it is taken on the GUI thread's next turn (several
    // publications before that turn show only the last).
    void publish(Snapshot snapshot);
    // GUI thread: what the views show. Never null.
    const Snapshot& current() const { return current_; }

  signals:
    // GUI thread, after current() changed.
    void snapshotChanged();

  private:
    void take();

    std::mutex lock_;
    Snapshot latest_;
    bool pending_ = false;
    Snapshot current_;
};
