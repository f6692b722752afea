#include "support/TarnRegularFile.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/TarnFileName.h"

bool TarnRegularFile::isRegular(int fd, qint64* size) {
    struct stat st;
    if (fd < 0 || ::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) return false;
    if (size) *size = qint64(st.st_size);
    return true;
}

int TarnRegularFile::openForReading(const QString& path, qint64* size) {
    if (path.isEmpty()) return -1;
    const QByteArray native = TarnFileName::encode(path);
    // Looked at before opening, so that no device is ever opened; checked
    // again on the descriptor, since the name may change in between.
    struct stat st;
    if (::stat(native.constData(), &st) != 0 || !S_ISREG(st.st_mode)) return -1;
    // O_NONBLOCK: should a FIFO take the name meanwhile, the open returns at
    // once instead of waiting for a writer.
    const int fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return -1;
    qint64 opened = 0;
    if (!isRegular(fd, &opened)) {
        ::close(fd);
        return -1;
    }
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags != -1) ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    if (size) *size = opened;
    return fd;
}

std::optional<QByteArray> TarnRegularFile::readAll(const QString& path, qint64 maxSize) {
    qint64 size = 0;
    const int fd = openForReading(path, &size);
    if (fd < 0) return std::nullopt;
    if (size > maxSize) {
        ::close(fd);
        return std::nullopt;
    }
    QByteArray data(size, Qt::Uninitialized);
    qint64 got = 0;
    while (got < size) {
        const ssize_t n = ::read(fd, data.data() + got, size_t(size - got));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        got += n;
    }
    ::close(fd);
    data.truncate(got);
    return data;
}
