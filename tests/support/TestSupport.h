#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "items/TarnDatabaseItem.h"

// Helpers shared by the suites.
namespace testsupport {

// An item for a file on disk, as the scanner would make it.
TarnItemPtr makeItem(const QString& path, const QString& project = QStringLiteral("Doc"));
// Names in a folder, hidden ones included, in name order.
QStringList entries(const QString& folder);

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

// The bytes of a file, or "(missing)"; whether anything is at a path (a link
// is not followed). Both reach names that are not UTF-8.
QByteArray contentOf(const QString& path);
bool exists(const QString& path);

// A temporary folder that is removed with everything in it, whatever the
// bytes of the names (QTemporaryDir leaves names that are not UTF-8 behind).
class TempDir {
  public:
    TempDir() = default;
    explicit TempDir(const QString& templatePath) : dir_(templatePath) {}
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    bool isValid() const { return dir_.isValid(); }
    QString path() const { return dir_.path(); }
    QString filePath(const QString& name) const { return dir_.filePath(name); }

  private:
    QTemporaryDir dir_;
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

// What a process that ran to its end wrote, and its exit code (-1 when it
// did not exit normally).
struct ProcessRun {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// Runs `program` to its end with its standard input closed, the C locale and
// `env` set over the system environment.
ProcessRun runProcess(const QString& program, const QStringList& args,
                      const QMap<QString, QString>& env = {});

// How runProcessWith starts a process: `env` set over the system environment,
// its working folder, and a file (or terminal) for its standard input.
struct ProcessSetup {
    QMap<QString, QString> env;
    QString workingFolder;
    QString input;
};
ProcessRun runProcessWith(const QString& program, const QStringList& args,
                          const ProcessSetup& setup);

// The original paths of the files in the freedesktop.org Trash under
// `dataHome` (XDG_DATA_HOME), read from its .trashinfo records, sorted.
QStringList trashedPaths(const QString& dataHome);

}  // namespace testsupport
