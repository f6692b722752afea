#pragma once

#include <QObject>
#include <QString>
#include <mutex>

#include <array>
#include <atomic>
#include <memory>

#include "status/TarnStatusWheel.h"

// The status strip without its widgets: the process-wide busy flag, one line of
// status text, the big wheel for foreground work and a pool of 16 small wheels
// handed out to background readers. Any thread may use it; every change is
// announced by a signal (connect queued from a view).
class TarnStatusViewController : public QObject {
    Q_OBJECT
  public:
    static constexpr int TarnMAXThreads = 6;
    static constexpr int TarnMAXWheels = 16;

    static TarnStatusViewController* getTheController();

    bool isRunning() const { return running_.load(); }
    void setIsRunning(bool running);
    // Sets the busy flag only when it was clear; false when work already runs.
    bool tryStartRunning();

    void Status_SetTextWithString(const QString& text);
    QString statusText() const;

    TarnStatusWheel* Status_GetBigWheel() { return bigWheel_.get(); }
    // A free wheel, started; none (and "NowheelsLeft" in the log) when all 16 are out.
    TarnStatusWheel* Status_GetProgressWheel();
    // Returns a wheel to the pool. There is no guard against returning one
    // twice: the free count then runs ahead until StopAllWheels.
    void Status_DeleteProgressWheel(TarnStatusWheel* wheel);
    void StopAllWheels();

    int wheelsleft() const;
    TarnStatusWheel* wheelAt(int index) const;

  signals:
    void textChanged(const QString& text);
    void wheelChanged(int index);  // -1 is the big wheel
    void runningChanged(bool running);

  private:
    TarnStatusViewController();
    void Status_InitWheels();

    mutable std::mutex lock_;
    std::array<std::unique_ptr<TarnStatusWheel>, TarnMAXWheels> wheels_;
    std::unique_ptr<TarnStatusWheel> bigWheel_;
    int wheelsleft_ = TarnMAXWheels;
    QString text_;
    std::atomic<bool> running_{false};
};
