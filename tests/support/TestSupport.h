#pragma once

#include <QString>
#include <QTemporaryDir>

// Helpers shared by the suites.
namespace testsupport {

// The log text appended while an instance lives.
class LogCapture {
  public:
    LogCapture();
    QString text() const;
    bool contains(const QString& needle) const { return text().contains(needle); }
    int count(const QString& needle) const { return text().count(needle); }

  private:
    qsizetype start_;
};

}  // namespace testsupport
