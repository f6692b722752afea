#pragma once

#include <mutex>

#include <functional>

#include "status/TarnProgressIndicator.h"

// One of the status strip's small progress wheels, as a thread-safe model.
// Every change calls the owner's notifier with the wheel's index, so a view
// (the app's strip, the command line's progress line) can redraw it.
class TarnStatusWheel : public TarnProgressIndicator {
  public:
    struct State {
        bool indeterminate = true;
        bool animating = false;
        double minValue = 0;
        double maxValue = 100;
        double value = 0;
    };

    TarnStatusWheel(int index, std::function<void(int)> notify);

    int index() const { return index_; }
    bool isFree() const;
    void setIsFree(bool free);
    State state() const;

    void setIndeterminate(bool indeterminate) override;
    void setMinValue(double value) override;
    void setMaxValue(double value) override;
    void setDoubleValue(double value) override;
    void startAnimation() override;
    void stopAnimation() override;

  private:
    void changed();

    const int index_;
    std::function<void(int)> notify_;
    mutable std::mutex mutex_;
    State state_;
    bool isFree_ = true;
};
