#include "database/TarnFolderReader.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "support/TarnFileName.h"

bool TarnFolderReader::list(const QString& folder, QList<Entry>& entries, QString* error,
                            bool sorted) {
    entries.clear();
    const QByteArray native = TarnFileName::encode(folder);
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
        entry.name = TarnFileName::decode(name, qsizetype(std::strlen(name)));
        struct stat st;
        if (d->d_type == DT_DIR) {
            entry.isDir = true;
        } else if (d->d_type == DT_LNK) {
            entry.isLink = true;
        } else if (d->d_type == DT_UNKNOWN && ::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) == 0) {
            entry.isDir = S_ISDIR(st.st_mode);
            entry.isLink = S_ISLNK(st.st_mode);
        }
        // The folder flag of a link is its target's.
        if (entry.isLink) entry.isDir = ::fstatat(fd, name, &st, 0) == 0 && S_ISDIR(st.st_mode);
        entries.append(std::move(entry));
    }
    ::closedir(dir);
    if (sorted)
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return true;
}

bool TarnFolderReader::exists(const QString& path) {
    return ::access(TarnFileName::encode(path).constData(), F_OK) == 0;
}

bool TarnFolderReader::isFolder(const QString& path) {
    struct stat st;
    return ::stat(TarnFileName::encode(path).constData(), &st) == 0 && S_ISDIR(st.st_mode);
}
