#include "console/xLogFeed.h"

#include <QElapsedTimer>

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

QList<xLog::Piece> xLogFeed::takeChunk(bool* more) {
    QList<xLog::Piece> chunk;
    std::lock_guard lock(inbox_->mutex);
    qsizetype chars = 0;
    while (!inbox_->pieces.empty() && chars < kChunkChars) {
        chars += inbox_->pieces.front().text.size();
        chunk.append(std::move(inbox_->pieces.front()));
        inbox_->pieces.pop_front();
    }
    *more = !inbox_->pieces.empty();
    return chunk;
}

void xLogFeed::deliverBatch() {
    // Appending costs about 10 microseconds a line: a few milliseconds'
    // worth at a time, then the window's own events get their turn.
    QElapsedTimer clock;
    clock.start();
    bool more = false;
    do {
        const QList<xLog::Piece> chunk = takeChunk(&more);
        if (view_) view_->addPieces(chunk);
    } while (more && clock.elapsed() < kBudgetMilliseconds);
    if (more) QTimer::singleShot(kBacklogMilliseconds, this, &xLogFeed::deliverBatch);
}

void xLogFeed::flush() {
    xConsole::sharedInstance()->flush();
    for (;;) {
        bool more = false;
        const QList<xLog::Piece> chunk = takeChunk(&more);
        if (view_) view_->addPieces(chunk);
        if (!more) return;
    }
}

void xLogFeed::discardPending() {
    std::lock_guard lock(inbox_->mutex);
    inbox_->pieces.clear();
}
