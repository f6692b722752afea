#pragma once

#include <QTimer>
#include <QWidget>

#include "status/TarnStatusWheel.h"

// A spinning progress wheel: spokes turning while work of unknown length
// runs (indeterminate), a filling pie while it counts towards a maximum, and
// nothing at all when stopped.
class ProgressWheel : public QWidget {
    Q_OBJECT
  public:
    explicit ProgressWheel(int diameter, QWidget* parent = nullptr);

    void setState(const TarnStatusWheel::State& state);
    const TarnStatusWheel::State& state() const { return state_; }
    bool isSpinning() const { return state_.animating; }

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void paintSpokes(class QPainter& painter, const QRectF& box);
    void paintPie(class QPainter& painter, const QRectF& box);

    int diameter_;
    TarnStatusWheel::State state_;
    QTimer turn_;
    int step_ = 0;
};
