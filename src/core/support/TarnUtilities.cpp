#include "support/TarnUtilities.h"

#include <QDir>
#include <QFile>
#include <QUrl>

#include <pwd.h>
#include <unistd.h>

#include <vector>

#include "support/TarnFileName.h"
#include "support/TarnVersion.h"

QString TarnUtilities::stringByRemovingPercentEncoding(const QString& text) {
    if (text.isNull() || !text.contains(QLatin1Char('%'))) return text;
    return TarnFileName::removingPercentEncoding(text);
}

QString TarnUtilities::stringByExpandingTildeInPath(const QString& path) {
    if (!path.startsWith(QLatin1Char('~'))) return path;
    const qsizetype slash = path.indexOf(QLatin1Char('/'));
    const QString user = path.mid(1, slash < 0 ? -1 : slash - 1);
    const QString rest = slash < 0 ? QString() : path.mid(slash);
    if (user.isEmpty()) return QDir::homePath() + rest;
    // getpwnam_r: the worker threads may expand paths while others look users up.
    long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size_t(size > 0 ? size : 16384));
    struct passwd entry {};
    struct passwd* found = nullptr;
    const QByteArray name = QFile::encodeName(user);
    if (::getpwnam_r(name.constData(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
        !found || !found->pw_dir)
        return path;
    return QFile::decodeName(found->pw_dir) + rest;
}

QString TarnUtilities::absoluteFolderPath(const QString& typed) {
    if (typed.isEmpty()) return typed;
    const QString path = stringByRemovingPercentEncoding(stringByExpandingTildeInPath(typed));
    return QDir::cleanPath(QDir::isAbsolutePath(path) ? path
                                                      : QDir::current().absoluteFilePath(path));
}

QString TarnUtilities::versionText() {
    return QStringLiteral("v%1 build %2")
        .arg(QStringLiteral(TARN_VERSION_STRING), QStringLiteral(TARN_BUILD_STRING));
}
