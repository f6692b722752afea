#pragma once

// Shared pieces of the action tests: scripted answers, real files, items, and
// a volume for runs of the action engine.

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "FixtureFiles.h"
#include "QtPrinters.h"
#include "TestSupport.h"
#include "actions/TarnActionOperation.h"
#include "actions/TarnAlert.h"
#include "actions/TarnFileCopier.h"

namespace actiontest {

// Answers every question (asked on the test's thread) from a script, in
// order, and records what was asked. Runs out -> kNoAnswer (and the test sees
// the extra question in `asked`).
struct ScriptedAnswers {
    explicit ScriptedAnswers(std::initializer_list<int> script = {}) : answers(script) {
        TarnAlert::setPresenter([this](const TarnAlert::Request& request) {
            asked << request.message;
            details << request.detail;
            return answers.isEmpty() ? int(TarnAlert::kNoAnswer) : answers.takeFirst();
        });
    }
    ~ScriptedAnswers() { TarnAlert::setPresenter({}); }
    QList<int> answers;
    QStringList asked, details;
};

using fixtures::writeFile;
using testsupport::contentOf;
using testsupport::entries;
using testsupport::makeItem;

// A distinct, recognisable content for each name.
inline QByteArray content(const QString& name, int size = 4096) {
    QByteArray b;
    b.reserve(size);
    QByteArray seed = name.toUtf8();
    for (int i = 0; b.size() < size; ++i) b.append(char(seed.at(i % seed.size()) ^ (i & 0x7f)));
    return b;
}

// A size whose copy takes many chunks.
constexpr qint64 kBig = 384LL * 1024 * 1024;

// A large file that takes no disk space; its first and last bytes are set.
inline bool makeSparse(const QString& path, qint64 size) {
    QDir().mkpath(QFileInfo(path).path());
    int fd = ::open(QFile::encodeName(path).constData(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    if (fd < 0) return false;
    bool ok = ::pwrite(fd, "head", 4, 0) == 4 && ::ftruncate(fd, size) == 0 &&
              ::pwrite(fd, "tail", 4, size - 4) == 4;
    ::close(fd);
    return ok;
}

// The action log with every timestamp replaced by "T".
inline QString untimed(const QString& log) {
    static const QRegularExpression stamp(QStringLiteral("(?m)^\\d[^\\n]*?\\d( [AP]M)? :: "));
    QString out = log;
    out.replace(stamp, QStringLiteral("T :: "));
    return out;
}

// The partial copies in a folder.
inline QStringList partials(const QString& folder) {
    return entries(folder).filter(
        QRegularExpression("^" + QRegularExpression::escape(TarnFileCopier::temporaryPrefix())));
}

// Whether /dev/shm is a file system of its own next to `path` (a second
// volume to move to).
inline bool shmIsAnotherVolume(const QString& path) {
    struct stat here {
    }, shm{};
    return ::stat(QFile::encodeName(path).constData(), &here) == 0 &&
           ::stat("/dev/shm", &shm) == 0 && here.st_dev != shm.st_dev;
}

// Makes a file or folder that the engine must treat as locked: read-only
// (`userMode`) for a normal user; immutable for root, who may write anything
// else. Undone when it goes.
class Locked {
  public:
    Locked(const QString& path, mode_t userMode) : path_(path) {
        struct stat st {};
        ::stat(QFile::encodeName(path).constData(), &st);
        mode_ = st.st_mode & 07777;
        ok_ = asRoot_ ? QProcess::execute("chattr", {"+i", path}) == 0
                      : ::chmod(QFile::encodeName(path).constData(), userMode) == 0;
    }
    ~Locked() {
        if (ok_ && asRoot_) QProcess::execute("chattr", {"-i", path_});
        if (ok_ && !asRoot_) ::chmod(QFile::encodeName(path_).constData(), mode_);
    }
    bool ok() const { return ok_; }

  private:
    QString path_;
    mode_t mode_ = 0;
    bool asRoot_ = ::geteuid() == 0, ok_ = false;
};

// A volume with a media folder, a destination next to it, and options for
// runs of the action engine over files made in that media folder.
// Its own Trash is under `dataHome()`.
struct ActionFixture : ::testing::Test {
    QTemporaryDir tmp;
    testsupport::ScopedEnv data{"XDG_DATA_HOME", dataHome()};
    QString dataHome() const { return tmp.path() + "/data"; }
    QString src() const { return tmp.path() + "/Vol/Avid MediaFiles/MXF/1"; }
    QString dst() const { return tmp.path() + "/Dst"; }
    TarnActionOptions options(const QList<TarnItemPtr>& items, const QString& action = "Copy") {
        TarnActionOptions o(items);
        o.Action = action;
        if (action != "Delete") o.Destination = dst();
        o.mediaFolderRoots = {tmp.path() + "/Vol"};
        return o;
    }
    // The same without project and type folders, into an existing destination.
    TarnActionOptions flat(const QList<TarnItemPtr>& items, const QString& action = "Copy") {
        TarnActionOptions o = options(items, action);
        o.Create_projects_folders = o.Create_mxf_folders = false;
        QDir().mkpath(dst());
        return o;
    }
    TarnItemPtr file(const QString& name, int size = 4096, const QString& folder = {}) {
        const QString path = (folder.isEmpty() ? src() : folder) + "/" + name;
        EXPECT_TRUE(writeFile(path, content(name, size)));
        return makeItem(path);
    }
    TarnItemPtr big(const QString& name, qint64 size) {
        EXPECT_TRUE(makeSparse(src() + "/" + name, size));
        return makeItem(src() + "/" + name);
    }
};

}  // namespace actiontest
