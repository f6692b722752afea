#include "status/StatusStrip.h"

#include <QHBoxLayout>
#include <QLabel>

#include "status/ProgressWheel.h"

namespace {
constexpr int kSmallWheel = 14;
constexpr int kBigWheel = 20;
}  // namespace

StatusStrip::StatusStrip(TarnStatusViewController* controller, QWidget* parent)
    : QWidget(parent), controller_(controller) {
    setObjectName(QStringLiteral("TarnStatusViewController"));
    setAccessibleName(QStringLiteral("Status"));

    bigWheel_ = new ProgressWheel(kBigWheel, this);
    bigWheel_->setObjectName(QStringLiteral("CentralProgressWheel"));
    bigWheel_->setAccessibleName(QStringLiteral("CentralProgressWheel"));

    info_ = new QLabel(this);
    info_->setObjectName(QStringLiteral("InfoTextField"));
    info_->setAccessibleName(QStringLiteral("InfoTextField"));
    info_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    info_->setMinimumWidth(120);
    info_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    wheelBox_ = new QWidget(this);
    wheelBox_->setObjectName(QStringLiteral("wheels"));
    wheelBox_->setFixedSize(kSmallWheel * (TarnStatusViewController::TarnMAXWheels + 1), kBigWheel);
    for (int i = 0; i < TarnStatusViewController::TarnMAXWheels; ++i) {
        wheels_[size_t(i)] = new ProgressWheel(kSmallWheel, wheelBox_);
        wheels_[size_t(i)]->setAccessibleName(QStringLiteral("wheel %1").arg(i));
    }

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 2, 8, 2);
    layout->addWidget(bigWheel_);
    layout->addWidget(info_, 1);
    layout->addWidget(wheelBox_);

    // Any thread may change the controller; the strip reads it on its own.
    auto changed = [this] { scheduleRefresh(); };
    connect(controller_, &TarnStatusViewController::textChanged, this, changed,
            Qt::DirectConnection);
    connect(controller_, &TarnStatusViewController::wheelChanged, this, changed,
            Qt::DirectConnection);
    connect(controller_, &TarnStatusViewController::runningChanged, this, changed,
            Qt::DirectConnection);
    refresh();
}

StatusStrip::~StatusStrip() {
    disconnect(controller_, nullptr, this, nullptr);
}

QString StatusStrip::text() const {
    return info_->text();
}

const ProgressWheel* StatusStrip::wheel(int index) const {
    if (index < 0 || index >= TarnStatusViewController::TarnMAXWheels) return nullptr;
    return wheels_[size_t(index)];
}

void StatusStrip::scheduleRefresh() {
    if (refreshPending_.exchange(true)) return;
    QMetaObject::invokeMethod(this, &StatusStrip::refresh, Qt::QueuedConnection);
}

void StatusStrip::refresh() {
    refreshPending_ = false;
    info_->setText(controller_->statusText());
    bigWheel_->setState(controller_->Status_GetBigWheel()->state());
    for (int i = 0; i < TarnStatusViewController::TarnMAXWheels; ++i) {
        wheels_[size_t(i)]->setState(controller_->wheelAt(i)->state());
    }
}

void StatusStrip::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeWheels();
}

// Wheel i sits at w/2 - d/2 + (d/2)k, k = i for odd i and -(i + 1) for even
// i: -d, 0, -2d, +d, -3d, +2d, ... from the centre of the box.
void StatusStrip::placeWheels() {
    const int half = wheelBox_->width() / 2;
    const int y = (wheelBox_->height() - kSmallWheel) / 2;
    for (int i = 0; i < TarnStatusViewController::TarnMAXWheels; ++i) {
        const int k = (i % 2 == 1) ? i : -(i + 1);
        wheels_[size_t(i)]->move(half - kSmallWheel / 2 + kSmallWheel / 2 * k, y);
    }
}
