#include "models/SnapshotPublisher.h"

#include <QThread>

SnapshotPublisher::SnapshotPublisher(QObject* parent)
    : QObject(parent), current_(std::make_shared<const TarnViewSnapshot>()) {}

void SnapshotPublisher::publish(Snapshot snapshot) {
    if (!snapshot) snapshot = std::make_shared<const TarnViewSnapshot>();
    bool post = false;
    {
        std::lock_guard<std::mutex> guard(lock_);
        latest_ = std::move(snapshot);
        post = !pending_;
        pending_ = true;
    }
    if (QThread::currentThread() == thread()) {
        take();
    } else if (post) {
        QMetaObject::invokeMethod(this, &SnapshotPublisher::take, Qt::QueuedConnection);
    }
}

void SnapshotPublisher::take() {
    Snapshot taken;
    {
        std::lock_guard<std::mutex> guard(lock_);
        if (!pending_) return;
        pending_ = false;
        taken = std::move(latest_);
    }
    current_ = std::move(taken);
    emit snapshotChanged();
}
