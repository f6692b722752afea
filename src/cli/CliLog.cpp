#include "CliLog.h"

#include <QFile>

#include "log/xConsole.h"

CliLog::~CliLog() {
    close();
}

bool CliLog::open(const QString& path, QString* error) {
    close();
    if (path == QLatin1String("-")) {
        file_ = stderr;
        ownsFile_ = false;
    } else {
        file_ = std::fopen(QFile::encodeName(path).constData(), "w");
        if (!file_) {
            if (error) *error = QStringLiteral("cannot write the log to '%1'").arg(path);
            return false;
        }
        ownsFile_ = true;
    }
    std::FILE* out = file_;
    // The sink runs on the console's delivery thread, one piece at a time.
    sink_ = xConsole::sharedInstance()->subscribe([out](const QString& text, const QString&) {
        const QByteArray bytes = text.toUtf8();
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), out);
        std::fflush(out);
    });
    return true;
}

void CliLog::close() {
    if (!file_) return;
    // Unsubscribing waits for every line appended so far.
    xConsole::sharedInstance()->unsubscribe(sink_);
    sink_ = 0;
    if (ownsFile_) std::fclose(file_);
    file_ = nullptr;
}
