#pragma once

// Shared pieces of the action tests: scripted answers, real files, items.

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <deque>
#include <memory>
#include <ostream>

#include <gtest/gtest.h>

#include "actions/TarnAlert.h"
#include "items/TarnDatabaseItem.h"

// Readable failure messages for texts.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList& list, std::ostream* os) {
    *os << '[' << list.join(QStringLiteral("\", \"")).toStdString() << ']';
}

namespace actiontest {

// Answers every question from a script, in order, and records what was asked.
// Runs out -> kNoAnswer (and the test sees the extra question in `asked`).
class ScriptedAnswers {
  public:
    explicit ScriptedAnswers(std::initializer_list<int> answers = {}) : answers_(answers) {
        TarnAlert::setPresenter([this](const TarnAlert::Request& request) {
            QMutexLocker lock(&mutex_);
            asked_.append(request.message);
            details_.append(request.detail);
            buttons_.append(request.buttons.join(QLatin1Char('|')));
            if (answers_.empty()) return int(TarnAlert::kNoAnswer);
            int answer = answers_.front();
            answers_.pop_front();
            if (onAsk_) onAsk_();
            return answer;
        });
    }
    ~ScriptedAnswers() { TarnAlert::setPresenter({}); }
    void onAsk(std::function<void()> f) { onAsk_ = std::move(f); }
    QStringList asked() const {
        QMutexLocker lock(&mutex_);
        return asked_;
    }
    QStringList details() const {
        QMutexLocker lock(&mutex_);
        return details_;
    }
    QStringList buttons() const {
        QMutexLocker lock(&mutex_);
        return buttons_;
    }
    std::size_t left() const {
        QMutexLocker lock(&mutex_);
        return answers_.size();
    }

  private:
    mutable QMutex mutex_;
    std::deque<int> answers_;
    QStringList asked_, details_, buttons_;
    std::function<void()> onAsk_;
};

inline bool writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).path());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
    return f.write(bytes) == bytes.size();
}

inline QByteArray readFile(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return QByteArray();
    return f.readAll();
}

// A distinct, recognisable content for each name.
inline QByteArray content(const QString& name, int size = 4096) {
    QByteArray b;
    b.reserve(size);
    QByteArray seed = name.toUtf8();
    for (int i = 0; b.size() < size; ++i) b.append(char(seed.at(i % seed.size()) ^ (i & 0x7f)));
    return b;
}

// An item for a file on disk, as the scanner would make it.
inline TarnItemPtr makeItem(const QString& path, const QString& project = QStringLiteral("Doc")) {
    auto item = std::make_shared<TarnDatabaseItem>();
    item->DB_itemPath = path;
    item->DB_ClipName = QFileInfo(path).fileName();
    item->DB_ProjectName = project;
    item->validatePath();
    return item;
}

// The action log with every timestamp replaced by "T".
inline QString untimed(const QString& log) {
    static const QRegularExpression stamp(QStringLiteral("(?m)^\\d[^\\n]*?\\d( [AP]M)? :: "));
    QString out = log;
    out.replace(stamp, QStringLiteral("T :: "));
    return out;
}

// Names in a folder, hidden ones included.
inline QStringList entries(const QString& folder) {
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

}  // namespace actiontest
