#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QUrl>

#include "log/xConsole.h"

namespace testsupport {

LogCapture::LogCapture() : start_(xConsole::sharedInstance()->contents().size()) {}

QString LogCapture::text() const {
    return xConsole::sharedInstance()->contents().mid(start_);
}

ScopedEnv::ScopedEnv(const char* name, const QString& value)
    : name_(name), saved_(qgetenv(name)), wasSet_(qEnvironmentVariableIsSet(name)) {
    qputenv(name, QFile::encodeName(value));
}

ScopedEnv::~ScopedEnv() {
    if (wasSet_)
        qputenv(name_, saved_);
    else
        qunsetenv(name_);
}

QStringList trashedPaths(const QString& dataHome) {
    QStringList paths;
    const QDir info(dataHome + QStringLiteral("/Trash/info"));
    for (const QString& name : info.entryList({QStringLiteral("*.trashinfo")}, QDir::Files)) {
        QFile file(info.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) continue;
        for (const QByteArray& line : file.readAll().split('\n'))
            if (line.startsWith("Path="))
                paths.append(QUrl::fromPercentEncoding(line.mid(5).trimmed()));
    }
    paths.sort();
    return paths;
}

}  // namespace testsupport
