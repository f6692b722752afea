#pragma once

#include <QString>

// A byte count and its human-readable text.
class TarnFileSize {
  public:
    explicit TarnFileSize(double size);

    double filesize() const { return filesize_; }
    QString humanBytes() const { return humanBytes_; }
    QString description() const { return humanBytes_; }

    // Steps of 1000: "0 byte", "1 byte", " 999 bytes", "1000.00 bytes", "1.00 kB".
    // A value is divided only while it is strictly above 1000, so 1000 stays
    // "1000.00 bytes" and 1,000,000 reads "1000.00 kB".
    static QString toHumanBytes(double size);
    // The same in steps of 1024 with "KiB", "MiB", ...
    static QString toHumanBytes_2(double size);

  private:
    double filesize_;
    QString humanBytes_;
};
