#pragma once

#include <QWidget>

#include <array>
#include <atomic>

#include "status/TarnStatusViewController.h"

class QLabel;
class ProgressWheel;

// The status strip along the bottom of the main window, the view of the
// status controller: one line of status text ("InfoTextField"), the big wheel
// of foreground work ("CentralProgressWheel") and the 16 small wheels handed
// out to the scanner operations, side by side from the centre of their box
// outwards, alternately left and right.
//
// The controller may change from any thread, thousands of times a second
// during a scan; the strip redraws at most once per turn of the GUI thread,
// reading the controller's current state.
class StatusStrip : public QWidget {
    Q_OBJECT
  public:
    explicit StatusStrip(TarnStatusViewController* controller, QWidget* parent = nullptr);
    ~StatusStrip() override;

    QString text() const;
    const ProgressWheel* bigWheel() const { return bigWheel_; }
    const ProgressWheel* wheel(int index) const;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void scheduleRefresh();
    void refresh();
    void placeWheels();

    TarnStatusViewController* controller_;
    QLabel* info_;
    ProgressWheel* bigWheel_;
    QWidget* wheelBox_;
    std::array<ProgressWheel*, TarnStatusViewController::TarnMAXWheels> wheels_{};
    std::atomic<bool> refreshPending_{false};
};
