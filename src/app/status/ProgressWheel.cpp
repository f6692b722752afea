#include "status/ProgressWheel.h"

#include <QPainter>

namespace {
constexpr int kSpokes = 12;
}  // namespace

ProgressWheel::ProgressWheel(int diameter, QWidget* parent) : QWidget(parent), diameter_(diameter) {
    setFixedSize(diameter, diameter);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    turn_.setInterval(80);
    connect(&turn_, &QTimer::timeout, this, [this] {
        step_ = (step_ + 1) % kSpokes;
        update();
    });
}

QSize ProgressWheel::sizeHint() const {
    return {diameter_, diameter_};
}

void ProgressWheel::setState(const TarnStatusWheel::State& state) {
    state_ = state;
    const bool turning = state_.animating && state_.indeterminate;
    if (turning && !turn_.isActive()) turn_.start();
    if (!turning) turn_.stop();
    update();
}

void ProgressWheel::paintEvent(QPaintEvent*) {
    if (!state_.animating) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(rect()).adjusted(1, 1, -1, -1);
    if (state_.indeterminate) {
        paintSpokes(painter, box);
    } else {
        paintPie(painter, box);
    }
}

void ProgressWheel::paintSpokes(QPainter& painter, const QRectF& box) {
    const QPointF centre = box.center();
    const double outer = box.width() / 2;
    QColor colour = palette().color(QPalette::WindowText);
    QPen pen(colour, qMax(1.5, outer / 4), Qt::SolidLine, Qt::RoundCap);
    for (int i = 0; i < kSpokes; ++i) {
        // The spoke at the current step is darkest; the ones behind it fade.
        const int age = (step_ - i + kSpokes) % kSpokes;
        colour.setAlphaF(1.0 - 0.8 * age / kSpokes);
        pen.setColor(colour);
        painter.setPen(pen);
        painter.save();
        painter.translate(centre);
        painter.rotate(360.0 * i / kSpokes);
        painter.drawLine(QPointF(0, -outer * 0.45), QPointF(0, -outer * 0.95));
        painter.restore();
    }
}

void ProgressWheel::paintPie(QPainter& painter, const QRectF& box) {
    const double span = state_.maxValue - state_.minValue;
    const double fraction =
        span > 0 ? qBound(0.0, (state_.value - state_.minValue) / span, 1.0) : 0;
    const QColor colour = palette().color(QPalette::WindowText);
    painter.setPen(QPen(colour, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(box);
    painter.setBrush(colour);
    // Qt's angles are in 1/16 degree, counter-clockwise from three o'clock.
    painter.drawPie(box, 90 * 16, -int(fraction * 360 * 16));
}
