#pragma once

// A progress display that background work may drive from any thread: a
// spinning wheel (indeterminate) or a count towards a maximum. The status
// strip's wheels implement it; readers take an optional one.
class TarnProgressIndicator {
  public:
    virtual ~TarnProgressIndicator() = default;
    virtual void setIndeterminate(bool indeterminate) = 0;
    virtual void setMinValue(double value) = 0;
    virtual void setMaxValue(double value) = 0;
    virtual void setDoubleValue(double value) = 0;
    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;
};
