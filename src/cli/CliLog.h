#pragma once

#include <QString>

#include <cstdio>

// The console log of one command-line run, written to a file or to stderr.
// Everything logged while an instance is open goes out; close() (or the
// destructor) waits until the last line is written.
class CliLog {
  public:
    CliLog() = default;
    ~CliLog();
    CliLog(const CliLog&) = delete;
    CliLog& operator=(const CliLog&) = delete;

    // "-" is stderr. False with a message when the file cannot be opened.
    bool open(const QString& path, QString* error);
    void close();

  private:
    std::FILE* file_ = nullptr;
    bool ownsFile_ = false;
    int sink_ = 0;
};
