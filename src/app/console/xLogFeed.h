#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

#include "console/xLog.h"

// Carries the application log (xConsole) into an xLog view on the GUI thread
// in batches: pieces logged on any thread are collected and appended together
// a few times a second, for at most kBudgetMilliseconds at a time, so a scan
// that logs 100,000 lines keeps the window responsive.
class xLogFeed : public QObject {
    Q_OBJECT
  public:
    static constexpr int kBatchMilliseconds = 50;
    static constexpr int kBudgetMilliseconds = 6;
    // A backlog goes on after a pause that leaves time to paint and to answer the user.
    static constexpr int kBacklogMilliseconds = 10;
    static constexpr qsizetype kChunkChars = 16 * 1024;

    explicit xLogFeed(xLog* view, QObject* parent = nullptr);
    ~xLogFeed() override;

    // Appends everything logged so far now (waits for the log's delivery).
    void flush();
    // Forgets what is collected and not yet shown.
    void discardPending();

  private:
    struct Inbox;
    void schedule();
    void deliverBatch();
    // Up to kChunkChars of what is collected; `more` tells whether some is left.
    QList<xLog::Piece> takeChunk(bool* more);

    QPointer<xLog> view_;
    std::shared_ptr<Inbox> inbox_;
    QTimer timer_;
    int sinkId_ = 0;
};
