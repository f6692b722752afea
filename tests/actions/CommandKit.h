#pragma once

// Running the `tarn` command in the action tests: a private settings file and
// a private data folder (so its Trash) for every run.

#include <QDirIterator>
#include <QProcess>

#include "ActionTestKit.h"
#include "PmrWriter.h"
#include "TestSupport.h"

namespace actiontest {

struct Outcome {
    int code = -1;
    QString out, err;
};

struct CommandFixture : ::testing::Test {
    QTemporaryDir tmp;
    QString vol() const { return tmp.path() + "/vol"; }
    QString dst() const { return tmp.path() + "/dst"; }
    QMap<QString, QString> env() const {
        return {{"TARN_SETTINGS", tmp.path() + "/settings.ini"},
                {"XDG_DATA_HOME", tmp.path() + "/data"}};
    }
    // No Trash can be made in runs with this environment: a file is where
    // their data folder should be.
    QMap<QString, QString> withoutTrash() const {
        writeFile(tmp.path() + "/blocked", "x");
        return {{"XDG_DATA_HOME", tmp.path() + "/blocked/data"}};
    }
    // Runs `program args` to its end with env() and then `setup.env` set.
    Outcome run(const QStringList& args, testsupport::ProcessSetup setup = {},
                const QString& program = QStringLiteral(TARN_CLI_PATH)) const {
        QMap<QString, QString> environment = env();
        environment.insert(setup.env);
        setup.env = environment;
        const testsupport::ProcessRun r = testsupport::runProcessWith(program, args, setup);
        return {r.exitCode, QString::fromUtf8(r.out), QString::fromUtf8(r.err)};
    }
    Outcome tarn(const QStringList& args) const { return run(args); }
    // Starts tarn with `args` and waits until it writes a partial copy into
    // `folder` (true) or ends (false).
    bool startCopying(QProcess& p, const QStringList& args, const QString& folder) const {
        QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
        const QMap<QString, QString> settings = env();
        for (auto it = settings.cbegin(); it != settings.cend(); ++it)
            e.insert(it.key(), it.value());
        p.setProcessEnvironment(e);
        p.start(QStringLiteral(TARN_CLI_PATH), args);
        p.closeWriteChannel();
        // Waiting on the process (not sleeping) is what notices a run that ended early.
        while (partials(folder).isEmpty() && p.state() != QProcess::NotRunning)
            p.waitForFinished(5);
        return !partials(folder).isEmpty();
    }
    // A media folder whose index lists `listed` (project "Doc"); each name
    // in `files` is written as a file of its own content.
    static void writeMediaFolder(const QString& folder, const QStringList& listed,
                                 const QStringList& files,
                                 const QList<fixtures::PmrEntry>& extra = {}) {
        QList<fixtures::PmrEntry> entries;
        quint64 id = 0x5F3A0000;
        for (const QString& name : listed)
            entries << fixtures::makePmrEntry(++id, name, QStringLiteral("Doc"));
        writeFile(folder + "/msmFMID.pmr", fixtures::writePmr(entries + extra));
        for (const QString& name : files) writeFile(folder + "/" + name, content(name));
    }
    static int filesUnder(const QString& folder) {
        int n = 0;
        for (QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
             it.hasNext(); it.next())
            ++n;
        return n;
    }
};

}  // namespace actiontest
