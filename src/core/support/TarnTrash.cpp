#include "support/TarnTrash.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/TarnFileName.h"

namespace {

bool fail(int error, int* code, QString* description) {
    if (code) *code = error;
    if (description) *description = QString::fromLocal8Bit(std::strerror(error));
    return false;
}

#ifndef Q_OS_DARWIN

bool isFolder(const QByteArray& path, struct stat* st = nullptr) {
    struct stat s {};
    if (::lstat(path.constData(), &s) != 0 || !S_ISDIR(s.st_mode)) return false;
    if (st) *st = s;
    return true;
}

// A Trash folder with its "files" and "info" folders, made (owner only) where
// missing. True when all three are folders on the device `device`.
bool prepareTrash(const QByteArray& trash, dev_t device) {
    for (const QByteArray& folder : {trash, trash + "/files", trash + "/info"}) {
        ::mkdir(folder.constData(), 0700);
        struct stat st {};
        if (!isFolder(folder, &st) || st.st_dev != device) return false;
    }
    return true;
}

QByteArray parentOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.left(slash);
}

// The top folder of the volume that holds `path`: the last folder upwards
// that is still on the same device.
QByteArray topFolderOf(const QByteArray& path, dev_t device) {
    QByteArray top = parentOf(path);
    while (top != "/") {
        const QByteArray up = parentOf(top);
        struct stat st {};
        if (::stat(up.constData(), &st) != 0 || st.st_dev != device) break;
        top = up;
    }
    return top;
}

// The Trash that takes a file of `device` without copying it; empty if none.
QByteArray trashFor(const QByteArray& path, dev_t device) {
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (!data.isEmpty() && QDir().mkpath(data)) {
        const QByteArray home = TarnFileName::encode(data + QStringLiteral("/Trash"));
        if (prepareTrash(home, device)) return home;
    }
    const QByteArray top = topFolderOf(path, device);
    const QByteArray uid = QByteArray::number(qulonglong(::getuid()));
    const QByteArray base = top == "/" ? QByteArray() : top;
    struct stat shared {};
    if (isFolder(base + "/.Trash", &shared) && (shared.st_mode & S_ISVTX)) {
        const QByteArray own = base + "/.Trash/" + uid;
        if (prepareTrash(own, device)) return own;
    }
    const QByteArray own = base + "/.Trash-" + uid;
    if (prepareTrash(own, device)) return own;
    return QByteArray();
}

// "clip.mxf", then "clip.2.mxf", "clip.3.mxf", ...
QByteArray candidateName(const QByteArray& name, int n) {
    if (n == 1) return name;
    const qsizetype dot = name.lastIndexOf('.');
    const QByteArray number = '.' + QByteArray::number(n);
    return dot > 0 ? name.left(dot) + number + name.mid(dot) : name + number;
}

bool writeAll(int fd, const QByteArray& bytes) {
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + written, size_t(bytes.size() - written));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        written += n;
    }
    return true;
}

#endif

}  // namespace

bool TarnTrash::moveToTrash(const QString& path, int* code, QString* description) {
#ifdef Q_OS_DARWIN
    QFile file(path);
    if (file.moveToTrash()) return true;
    if (code) *code = int(file.error());
    if (description) *description = file.errorString();
    return false;
#else
    QString absolute = QDir::isAbsolutePath(path) ? path : QDir::currentPath() + u'/' + path;
    while (absolute.size() > 1 && absolute.endsWith(u'/')) absolute.chop(1);
    const QByteArray source = TarnFileName::encode(absolute);
    struct stat st {};
    if (::lstat(source.constData(), &st) != 0) return fail(errno, code, description);
    const QByteArray trash = trashFor(source, st.st_dev);
    if (trash.isEmpty()) return fail(EXDEV, code, description);

    const QByteArray name = source.mid(source.lastIndexOf('/') + 1);
    const QByteArray info =
        "[Trash Info]\nPath=" + source.toPercentEncoding("/") + "\nDeletionDate=" +
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss")).toLatin1() +
        '\n';
    for (int n = 1; n < 10000; ++n) {
        const QByteArray candidate = candidateName(name, n);
        // The info file is made exclusively first: it reserves the name.
        const QByteArray infoPath = trash + "/info/" + candidate + ".trashinfo";
        const int fd = ::open(infoPath.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST) continue;
            return fail(errno, code, description);
        }
        const QByteArray target = trash + "/files/" + candidate;
        struct stat taken {};
        const bool free = ::lstat(target.constData(), &taken) != 0;
        const bool written = free && writeAll(fd, info);
        const int writeError = errno;
        ::close(fd);
        if (!free) {
            ::unlink(infoPath.constData());
            continue;
        }
        if (!written || ::rename(source.constData(), target.constData()) != 0) {
            const int error = written ? errno : writeError;
            ::unlink(infoPath.constData());
            return fail(error ? error : EIO, code, description);
        }
        return true;
    }
    return fail(EEXIST, code, description);
#endif
}
