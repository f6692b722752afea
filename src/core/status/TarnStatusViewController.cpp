#include "status/TarnStatusViewController.h"

#include "log/xConsole.h"

TarnStatusViewController::TarnStatusViewController() {
    Status_InitWheels();
    bigWheel_ = std::make_unique<TarnStatusWheel>(-1, [this](int i) { emit wheelChanged(i); });
    text_ = QStringLiteral("Wish you all the best!");
    wheelsleft_ = TarnMAXWheels;
}

TarnStatusViewController* TarnStatusViewController::getTheController() {
    static TarnStatusViewController* controller = new TarnStatusViewController();
    return controller;
}

void TarnStatusViewController::Status_InitWheels() {
    if (wheels_[0]) return;
    for (int i = 0; i < TarnMAXWheels; ++i) {
        wheels_[i] =
            std::make_unique<TarnStatusWheel>(i, [this](int idx) { emit wheelChanged(idx); });
    }
}

void TarnStatusViewController::setIsRunning(bool running) {
    if (running_.exchange(running) != running) emit runningChanged(running);
}

bool TarnStatusViewController::tryStartRunning() {
    bool expected = false;
    if (!running_.compare_exchange_strong(expected, true)) return false;
    emit runningChanged(true);
    return true;
}

void TarnStatusViewController::Status_SetTextWithString(const QString& text) {
    if (text.isNull()) return;
    {
        std::lock_guard<std::mutex> locker(lock_);
        text_ = text;
    }
    emit textChanged(text);
}

QString TarnStatusViewController::statusText() const {
    std::lock_guard<std::mutex> locker(lock_);
    return text_;
}

TarnStatusWheel* TarnStatusViewController::Status_GetProgressWheel() {
    TarnStatusWheel* found = nullptr;
    {
        std::lock_guard<std::mutex> locker(lock_);
        if (wheelsleft_ > 0) {
            for (auto& wheel : wheels_) {
                if (wheel->isFree()) {
                    found = wheel.get();
                    break;
                }
            }
            if (found) {
                found->setIsFree(false);
                --wheelsleft_;
            }
        }
    }
    if (!found) {
        TARN_LOG(QStringLiteral("NowheelsLeft"));
        return nullptr;
    }
    found->startAnimation();
    return found;
}

void TarnStatusViewController::Status_DeleteProgressWheel(TarnStatusWheel* wheel) {
    if (!wheel) return;
    {
        std::lock_guard<std::mutex> locker(lock_);
        wheel->setIsFree(true);
        ++wheelsleft_;
    }
    wheel->setIndeterminate(true);
    wheel->stopAnimation();
}

void TarnStatusViewController::StopAllWheels() {
    {
        std::lock_guard<std::mutex> locker(lock_);
        for (auto& wheel : wheels_) wheel->setIsFree(true);
        wheelsleft_ = TarnMAXWheels;
    }
    for (auto& wheel : wheels_) {
        wheel->setIndeterminate(true);
        wheel->stopAnimation();
    }
}

int TarnStatusViewController::wheelsleft() const {
    std::lock_guard<std::mutex> locker(lock_);
    return wheelsleft_;
}

TarnStatusWheel* TarnStatusViewController::wheelAt(int index) const {
    if (index < 0 || index >= TarnMAXWheels) return nullptr;
    return wheels_[index].get();
}
