#include "actions/TarnMediaFileGuard.h"

#include <QFile>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/TarnFileName.h"

namespace {

// More open folders than this and the cache starts again.
constexpr qsizetype kMaxOpenFolders = 64;

QString systemWord(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

// The system's word for the error in `reason`, errno kept: always false.
bool failWith(int error, QString* reason) {
    *reason = systemWord(error);
    errno = error;
    return false;
}

// The path with every link resolved, or null (errno set).
QString resolved(const QString& path) {
    char buffer[PATH_MAX];
    if (!::realpath(TarnFileName::encode(path).constData(), buffer)) return QString();
    return TarnFileName::decode(buffer);
}

// Why a file of this type is refused; errno is set to match.
QString typeReason(mode_t mode) {
    const QString reason = S_ISDIR(mode)   ? systemWord(EISDIR)
                           : S_ISLNK(mode) ? QStringLiteral("Is a symbolic link")
                                           : QStringLiteral("Not a regular file");
    errno = S_ISDIR(mode) ? EISDIR : S_ISLNK(mode) ? ELOOP : EINVAL;
    return reason;
}

}  // namespace

TarnMediaFileGuard::TarnMediaFileGuard(const QStringList& roots) {
    for (const QString& root : roots) {
        if (root.isEmpty()) continue;
        QString real = resolved(root);
        struct stat st {};
        if (real.isNull() || ::stat(TarnFileName::encode(real).constData(), &st) != 0 ||
            !S_ISDIR(st.st_mode))
            continue;
        if (!roots_.contains(real)) roots_.append(real);
    }
}

TarnMediaFileGuard::~TarnMediaFileGuard() {
    closeFolders();
}

void TarnMediaFileGuard::closeFolders() {
    for (int fd : std::as_const(folders_)) ::close(fd);
    folders_.clear();
}

QString TarnMediaFileGuard::rootOf(const QString& resolvedFolder) const {
    for (const QString& root : roots_) {
        if (root == QLatin1String("/")) return root;
        if (resolvedFolder == root ||
            (resolvedFolder.startsWith(root) && resolvedFolder.at(root.size()) == QLatin1Char('/')))
            return root;
    }
    return QString();
}

bool TarnMediaFileGuard::check(const QString& itemPath, Checked* checked, QString* reason) {
    if (itemPath.isEmpty()) {
        *reason = QStringLiteral("No path");
        return false;
    }
    const qsizetype slash = itemPath.lastIndexOf(QLatin1Char('/'));
    const QString name = itemPath.mid(slash + 1);
    if (slash < 0 || name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")) {
        *reason = QStringLiteral("Not a file name");
        return false;
    }
    const QString named = slash == 0 ? QStringLiteral("/") : itemPath.left(slash);
    QString folder = resolved_.value(named);
    if (folder.isNull()) {
        folder = resolved(named);
        if (folder.isNull()) return failWith(errno, reason);
        resolved_.insert(named, folder);
    }
    Checked c;
    c.root = rootOf(folder);
    if (c.root.isNull()) {
        *reason = QStringLiteral("Outside the media folders of the scan");
        return false;
    }
    c.folder = folder;
    c.name = name;
    c.path = (folder == QLatin1String("/") ? QString() : folder) + QLatin1Char('/') + name;
    const int fd = folderFd(c);
    struct stat st {};
    if (fd < 0 || ::fstatat(fd, TarnFileName::encode(name).constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return failWith(errno, reason);
    if (!S_ISREG(st.st_mode)) {
        *reason = typeReason(st.st_mode);
        return false;
    }
    c.device = st.st_dev;
    c.inode = st.st_ino;
    *checked = c;
    return true;
}

int TarnMediaFileGuard::folderFd(const Checked& checked) {
    auto known = folders_.constFind(checked.folder);
    if (known != folders_.constEnd()) return *known;
    if (folders_.size() >= kMaxOpenFolders) closeFolders();

    const int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    int fd = ::open(TarnFileName::encode(checked.root).constData(), flags);
    if (fd < 0) return -1;
    // From the root down, one folder at a time, never through a link.
    const QString below = checked.folder.mid(checked.root.size());
    for (const QString& part : below.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        int next = ::openat(fd, TarnFileName::encode(part).constData(), flags);
        const int error = errno;
        ::close(fd);
        if (next < 0) {
            errno = error;
            return -1;
        }
        fd = next;
    }
    folders_.insert(checked.folder, fd);
    return fd;
}

bool TarnMediaFileGuard::stillSame(const Checked& checked, QString* reason) {
    const int fd = folderFd(checked);
    struct stat st {};
    if (fd < 0 ||
        ::fstatat(fd, TarnFileName::encode(checked.name).constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return failWith(errno, reason);
    if (!S_ISREG(st.st_mode)) {
        *reason = typeReason(st.st_mode);
        return false;
    }
    if (st.st_dev != checked.device || st.st_ino != checked.inode) {
        errno = ESTALE;
        *reason = QStringLiteral("Replaced since it was checked");
        return false;
    }
    return true;
}

bool TarnMediaFileGuard::removeFile(const Checked& checked, QString* reason) {
    if (!stillSame(checked, reason)) return false;
    // Without AT_REMOVEDIR unlinkat refuses a folder (EISDIR).
    if (::unlinkat(folderFd(checked), TarnFileName::encode(checked.name).constData(), 0) != 0)
        return failWith(errno, reason);
    return true;
}

bool TarnMediaFileGuard::renameFile(const Checked& checked, const QString& target, int* error,
                                    QString* reason) {
    if (!stillSame(checked, reason)) {
        *error = errno;
        return false;
    }
    if (::renameat(folderFd(checked), TarnFileName::encode(checked.name).constData(), AT_FDCWD,
                   TarnFileName::encode(target).constData()) != 0) {
        *error = errno;
        return failWith(*error, reason);
    }
    return true;
}
