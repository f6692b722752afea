#pragma once

#include <QFileDevice>
#include <QString>

#include <memory>

// Where a command writes its report: stdout, or the file it names. A regular
// file (or a new one) appears whole or not at all: the report is written
// beside it and renamed into place when complete. Anything else (a device
// such as /dev/null, a pipe) is written in place, since renaming over it
// would replace the device with a plain file.
class OutputFile {
  public:
    // An empty path is stdout. False when the output cannot be opened.
    bool open(const QString& path);
    QIODevice* device() const { return file_.get(); }
    // Completes the output; `written` false (the report could not be
    // written) drops a file that was to be renamed into place. False when
    // anything failed.
    bool commit(bool written);

  private:
    std::unique_ptr<QFileDevice> file_;
};
