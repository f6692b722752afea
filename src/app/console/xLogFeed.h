#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

#include "console/xLog.h"

// Carries the application log (xConsole) into an xLog view on the GUI thread
// in batches: pieces logged on any thread are collected and appended together
// a few times a second, at most kMaxBatchChars at a time, so a scan that logs
// 100,000 lines keeps the window responsive.
class xLogFeed : public QObject {
    Q_OBJECT
  public:
    static constexpr int kBatchMilliseconds = 50;
    static constexpr qsizetype kMaxBatchChars = 256 * 1024;

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

    QPointer<xLog> view_;
    std::shared_ptr<Inbox> inbox_;
    QTimer timer_;
    int sinkId_ = 0;
};
