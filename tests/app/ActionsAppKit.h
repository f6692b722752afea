#pragma once

// Pieces shared by the tests of the new-action sheet and the queue window.

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>

#include <functional>

#include "DemoVolume.h"
#include "actions/TarnAlert.h"
#include "database/TarnCore.h"
#include "database/TarnScanner.h"

namespace appactions {

// Answers every alert with `answer` and records the messages asked.
class Answers {
  public:
    explicit Answers(int answer = TarnAlert::kNoAnswer) : answer_(answer) {
        TarnAlert::setPresenter([this](const TarnAlert::Request& request) {
            QMutexLocker lock(&mutex_);
            asked_.append(request.message);
            return answer_;
        });
    }
    ~Answers() { TarnAlert::setPresenter({}); }
    QStringList asked() const {
        QMutexLocker lock(&mutex_);
        return asked_;
    }

  private:
    mutable QMutex mutex_;
    QStringList asked_;
    int answer_;
};

template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
    }
}

inline QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool writeBytes(const QString& path, qint64 size) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    QByteArray block(1 << 20, '\0');
    for (int i = 0; i < block.size(); ++i) block[i] = char(i * 7 + size);
    for (qint64 left = size; left > 0; left -= block.size())
        if (file.write(block.constData(), qMin<qint64>(left, block.size())) < 0) return false;
    return true;
}

inline TarnItemPtr itemFor(const QString& path, const QString& project = QStringLiteral("Doc")) {
    auto item = std::make_shared<TarnDatabaseItem>();
    item->DB_itemPath = path;
    item->DB_ProjectName = project;
    item->validatePath();
    return item;
}

// The existing media of a freshly written demo volume, as a scan shows them.
inline QList<TarnItemPtr> scannedDemoMedia(const QString& root, TarnCore& core) {
    static QTemporaryDir settings;  // keep the user's preferences out of the tests
    if (qEnvironmentVariableIsEmpty("TARN_SETTINGS"))
        qputenv("TARN_SETTINGS", (settings.path() + QStringLiteral("/tarn.ini")).toUtf8());
    QString error;
    if (!fixtures::DemoVolume::write(root, &error)) return {};
    TarnScanner(&core).run(TarnScanner::Kind::SingleFolder, {root});
    QList<TarnItemPtr> items;
    for (qsizetype row = 0; row < core.getFilteredIndexesCount(); ++row) {
        TarnItemPtr item = core.ObjectAtIndexFiltered(row);
        if (item && item->DB_FileExists && QFileInfo(item->DB_itemPath).isFile())
            items.append(item);
    }
    return items;
}

}  // namespace appactions
