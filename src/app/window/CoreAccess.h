#pragma once

#include <functional>

#include "models/SnapshotPublisher.h"

class TarnCore;
class TarnStatusViewController;

// The window's only way to the database. While a scan runs the database
// belongs to the scan's threads: the window shows the last published
// snapshot and changes nothing (a change asked for then is refused). Between
// scans a change runs on the GUI thread and publishes the new view at once.
//
// Whether a scan runs is the status controller's busy flag: the scan clears
// it only after its last touch of the database, so reading it clear orders
// the GUI thread's work after the scan's.
class CoreAccess {
  public:
    CoreAccess(TarnCore* core, TarnStatusViewController* status, SnapshotPublisher* publisher);

    TarnCore* core() const { return core_; }
    SnapshotPublisher* publisher() const { return publisher_; }
    const TarnViewSnapshot& view() const { return *publisher_->current(); }

    // No scan runs.
    bool isFree() const;
    // Runs the change and publishes the view; false (nothing done) while a scan runs.
    bool change(const std::function<void(TarnCore&)>& work);
    // Publishes the database's view as it is now; only from the thread that
    // owns the database at the moment.
    void publish();

  private:
    TarnCore* core_;
    TarnStatusViewController* status_;
    SnapshotPublisher* publisher_;
};
