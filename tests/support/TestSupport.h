#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
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

// Sets an environment variable for the life of the instance.
class ScopedEnv {
  public:
    ScopedEnv(const char* name, const QString& value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

  private:
    const char* name_;
    QByteArray saved_;
    bool wasSet_;
};

// The original paths of the files in the freedesktop.org Trash under
// `dataHome` (XDG_DATA_HOME), read from its .trashinfo records, sorted.
QStringList trashedPaths(const QString& dataHome);

}  // namespace testsupport
