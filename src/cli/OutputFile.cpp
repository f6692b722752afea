#include "OutputFile.h"

#include <QFile>
#include <QSaveFile>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// True when the path names something that exists and is not a regular file
// (after symbolic links).
bool isNonRegularFile(const QString& path) {
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0) return false;
    return !S_ISREG(st.st_mode);
}

}  // namespace

bool OutputFile::open(const QString& path) {
    // The report goes through a buffer of its own.
    const QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    if (path.isEmpty()) {
        auto out = std::make_unique<QFile>();
        if (!out->open(STDOUT_FILENO, mode, QFileDevice::DontCloseHandle)) return false;
        file_ = std::move(out);
    } else if (isNonRegularFile(path)) {
        file_ = std::make_unique<QFile>(path);
        if (!file_->open(mode)) return false;
    } else {
        file_ = std::make_unique<QSaveFile>(path);
        if (!file_->open(QIODevice::WriteOnly)) return false;
    }
    return true;
}

bool OutputFile::commit(bool written) {
    if (!file_) return false;
    if (auto* save = qobject_cast<QSaveFile*>(file_.get())) {
        if (!written) {
            save->cancelWriting();
            save->commit();
            return false;
        }
        return save->commit();
    }
    const bool ok = written && file_->flush() && file_->error() == QFileDevice::NoError;
    file_->close();
    return ok;
}
