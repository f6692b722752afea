#include "database/TarnFolderReader.h"

#include <QFile>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

bool TarnFolderReader::list(const QString& folder, QList<Entry>& entries, QString* error,
                            bool sorted) {
    entries.clear();
    const QByteArray native = QFile::encodeName(folder);
    DIR* dir = ::opendir(native.constData());
    if (!dir) {
        if (error) *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    const int fd = ::dirfd(dir);
    while (dirent* d = ::readdir(dir)) {
        const char* name = d->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
        Entry entry;
        entry.name = QString::fromUtf8(name);
        if (d->d_type == DT_DIR) {
            entry.isDir = true;
        } else if (d->d_type == DT_UNKNOWN || d->d_type == DT_LNK) {
            // The folder flag of a link is its target's, as the file manager reports it.
            struct stat st;
            entry.isDir = ::fstatat(fd, name, &st, 0) == 0 && S_ISDIR(st.st_mode);
        }
        entries.append(std::move(entry));
    }
    ::closedir(dir);
    if (sorted)
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return true;
}

bool TarnFolderReader::exists(const QString& path) {
    return ::access(QFile::encodeName(path).constData(), F_OK) == 0;
}

bool TarnFolderReader::isFolder(const QString& path) {
    struct stat st;
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 && S_ISDIR(st.st_mode);
}
