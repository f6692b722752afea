#include "console/xLogFeed.h"

#include <deque>
#include <mutex>

#include "log/xConsole.h"

// Shared with the log's delivery thread, which may still hold the sink for a
// moment after the feed is gone: `feed` is cleared (under the lock) first.
struct xLogFeed::Inbox {
    std::mutex mutex;
    std::deque<xLog::Piece> pieces;
    xLogFeed* feed = nullptr;
};

xLogFeed::xLogFeed(xLog* view, QObject* parent)
    : QObject(parent), view_(view), inbox_(std::make_shared<Inbox>()) {
    inbox_->feed = this;
    timer_.setSingleShot(true);
    timer_.setInterval(kBatchMilliseconds);
    connect(&timer_, &QTimer::timeout, this, &xLogFeed::deliverBatch);
    std::weak_ptr<Inbox> weak = inbox_;
    sinkId_ =
        xConsole::sharedInstance()->subscribe([weak](const QString& text, const QString& color) {
            auto inbox = weak.lock();
            if (!inbox) return;
            std::lock_guard lock(inbox->mutex);
            if (!inbox->feed) return;
            const bool first = inbox->pieces.empty();
            inbox->pieces.push_back({text, color.isEmpty() ? QColor() : QColor(color), QColor()});
            // One wake-up per batch, not per piece.
            if (first)
                QMetaObject::invokeMethod(inbox->feed, &xLogFeed::schedule, Qt::QueuedConnection);
        });
}

xLogFeed::~xLogFeed() {
    {
        std::lock_guard lock(inbox_->mutex);
        inbox_->feed = nullptr;
    }
    xConsole::sharedInstance()->unsubscribe(sinkId_);
}

void xLogFeed::schedule() {
    if (!timer_.isActive()) timer_.start();
}

void xLogFeed::deliverBatch() {
    QList<xLog::Piece> batch;
    bool more = false;
    {
        std::lock_guard lock(inbox_->mutex);
        qsizetype chars = 0;
        while (!inbox_->pieces.empty() && chars < kMaxBatchChars) {
            chars += inbox_->pieces.front().text.size();
            batch.append(std::move(inbox_->pieces.front()));
            inbox_->pieces.pop_front();
        }
        more = !inbox_->pieces.empty();
    }
    if (view_) view_->addPieces(batch);
    // The rest goes in on the next turn, after the events waiting now.
    if (more) QTimer::singleShot(0, this, &xLogFeed::deliverBatch);
}

void xLogFeed::flush() {
    xConsole::sharedInstance()->flush();
    for (;;) {
        {
            std::lock_guard lock(inbox_->mutex);
            if (inbox_->pieces.empty()) return;
        }
        deliverBatch();
    }
}

void xLogFeed::discardPending() {
    std::lock_guard lock(inbox_->mutex);
    inbox_->pieces.clear();
}
