#include "TestSupport.h"

#include <QFile>

#include <ftw.h>
#include <sys/stat.h>

#include <cstdio>

#include "log/xConsole.h"
#include "support/TarnFileName.h"

namespace testsupport {

LogCapture::LogCapture() : start_(xConsole::sharedInstance()->contents().size()) {}

QString LogCapture::text() const {
    return xConsole::sharedInstance()->contents().mid(start_);
}

QByteArray contentOf(const QString& path) {
    QFile file;
    if (!TarnFileName::open(file, path, QIODevice::ReadOnly)) return QByteArray("(missing)");
    return file.readAll();
}

bool exists(const QString& path) {
    struct stat st {};
    return ::lstat(TarnFileName::encode(path).constData(), &st) == 0;
}

TempDir::~TempDir() {
    if (!dir_.isValid()) return;
    // Depth first, links not followed: every entry goes before its folder.
    ::nftw(
        TarnFileName::encode(dir_.path()).constData(),
        [](const char* path, const struct stat*, int, struct FTW*) {
            std::remove(path);
            return 0;
        },
        16, FTW_DEPTH | FTW_PHYS);
}

}  // namespace testsupport
