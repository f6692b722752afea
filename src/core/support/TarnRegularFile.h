#pragma once

#include <QByteArray>
#include <QString>

#include <limits>
#include <optional>

// How the readers open the files they are given. Index files, media databases,
// bins and media files are regular files; a FIFO, a device or a socket under
// such a name (also behind a link) is refused before anything is read: a FIFO
// would block the opening thread for good, and /dev/zero would never end. A
// file is read only up to the size it had when it was opened, so one that
// grows while it is read cannot make the reading endless.
class TarnRegularFile {
  public:
    // A read-only descriptor (close-on-exec) on a regular file, or -1: missing,
    // unreadable, or not a regular file. `size` gets its size at opening. The
    // open itself never blocks.
    static int openForReading(const QString& path, qint64* size);

    // The file's bytes, at most its size at opening; none when it cannot be
    // opened as above or is larger than `maxSize`. A file that shrinks while
    // it is read gives what was there.
    static std::optional<QByteArray> readAll(const QString& path,
                                             qint64 maxSize = std::numeric_limits<qint64>::max());

    // True when the open descriptor is a regular file; its size then goes to
    // `size` (when not null).
    static bool isRegular(int fd, qint64* size);
};
