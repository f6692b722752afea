#pragma once

#include <QThreadPool>

#include <condition_variable>
#include <functional>
#include <mutex>

class QRunnable;

// The process-wide queue of scanner operations: a thread pool that runs at
// most TarnMAXThreads (6) operations at once, and a wait for all of them.
//
// Hand-over and completion go through the queue's own lock, so whatever an
// operation was given before it was added is visible to it, and whatever it
// did is visible to the thread that waited for the queue.
class TarnScannerQueue {
  public:
    explicit TarnScannerQueue(int maxConcurrentOperations);
    ~TarnScannerQueue();
    TarnScannerQueue(const TarnScannerQueue&) = delete;
    TarnScannerQueue& operator=(const TarnScannerQueue&) = delete;

    // The shared queue of the scan commands.
    static TarnScannerQueue* shared();

    // Takes the operation and runs it (its run()) on a pool thread; deletes it after.
    void addOperation(QRunnable* operation);
    // Blocks until every added operation has finished.
    void waitUntilAllOperationsAreFinished();

    int maxConcurrentOperationCount() const { return pool_.maxThreadCount(); }
    int operationCount() const;

  private:
    QThreadPool pool_;
    mutable std::mutex lock_;
    std::condition_variable drained_;
    int pending_ = 0;
};
