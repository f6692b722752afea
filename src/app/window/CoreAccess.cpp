#include "window/CoreAccess.h"

#include "database/TarnCore.h"
#include "status/TarnStatusViewController.h"

CoreAccess::CoreAccess(TarnCore* core, TarnStatusViewController* status,
                       SnapshotPublisher* publisher)
    : core_(core), status_(status), publisher_(publisher) {}

bool CoreAccess::isFree() const {
    return !status_->isRunning();
}

bool CoreAccess::change(const std::function<void(TarnCore&)>& work) {
    if (!isFree()) return false;
    work(*core_);
    publish();
    return true;
}

void CoreAccess::publish() {
    publisher_->publish(std::make_shared<const TarnViewSnapshot>(*core_));
}
