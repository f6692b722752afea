#include "database/TarnScannerQueue.h"

#include <QRunnable>

#include "status/TarnStatusViewController.h"

TarnScannerQueue::TarnScannerQueue(int maxConcurrentOperations) {
    pool_.setMaxThreadCount(maxConcurrentOperations);
}

TarnScannerQueue::~TarnScannerQueue() {
    waitUntilAllOperationsAreFinished();
}

TarnScannerQueue* TarnScannerQueue::shared() {
    static TarnScannerQueue* queue = new TarnScannerQueue(TarnStatusViewController::TarnMAXThreads);
    return queue;
}

void TarnScannerQueue::addOperation(QRunnable* operation) {
    if (!operation) return;
    {
        std::lock_guard<std::mutex> guard(lock_);
        ++pending_;
    }
    pool_.start([this, operation] {
        {
            // Pairs with the increment above: the operation sees its set-up.
            std::lock_guard<std::mutex> guard(lock_);
        }
        operation->run();
        delete operation;
        std::lock_guard<std::mutex> guard(lock_);
        if (--pending_ == 0) drained_.notify_all();
    });
}

void TarnScannerQueue::waitUntilAllOperationsAreFinished() {
    std::unique_lock<std::mutex> guard(lock_);
    drained_.wait(guard, [this] { return pending_ == 0; });
}

int TarnScannerQueue::operationCount() const {
    std::lock_guard<std::mutex> guard(lock_);
    return pending_;
}
