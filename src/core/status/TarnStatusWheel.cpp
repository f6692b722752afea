#include "status/TarnStatusWheel.h"

TarnStatusWheel::TarnStatusWheel(int index, std::function<void(int)> notify)
    : index_(index), notify_(std::move(notify)) {}

bool TarnStatusWheel::isFree() const {
    std::lock_guard<std::mutex> locker(mutex_);
    return isFree_;
}

void TarnStatusWheel::setIsFree(bool free) {
    std::lock_guard<std::mutex> locker(mutex_);
    isFree_ = free;
}

TarnStatusWheel::State TarnStatusWheel::state() const {
    std::lock_guard<std::mutex> locker(mutex_);
    return state_;
}

void TarnStatusWheel::setIndeterminate(bool indeterminate) {
    {
        std::lock_guard<std::mutex> locker(mutex_);
        state_.indeterminate = indeterminate;
    }
    changed();
}

void TarnStatusWheel::setMinValue(double value) {
    {
        std::lock_guard<std::mutex> locker(mutex_);
        state_.minValue = value;
    }
    changed();
}

void TarnStatusWheel::setMaxValue(double value) {
    {
        std::lock_guard<std::mutex> locker(mutex_);
        state_.maxValue = value;
    }
    changed();
}

void TarnStatusWheel::setDoubleValue(double value) {
    {
        std::lock_guard<std::mutex> locker(mutex_);
        state_.value = value;
    }
    changed();
}

void TarnStatusWheel::startAnimation() {
    {
        std::lock_guard<std::mutex> locker(mutex_);
        state_.animating = true;
    }
    changed();
}

void TarnStatusWheel::stopAnimation() {
    {
        std::lock_guard<std::mutex> locker(mutex_);
        state_.animating = false;
    }
    changed();
}

void TarnStatusWheel::changed() {
    if (notify_) notify_(index_);
}
