#pragma once

// Running the `tarn` command in the action tests: a private settings file and
// a private data folder (so its Trash) for every run.

#include <QDirIterator>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include "ActionTestKit.h"
#include "PmrWriter.h"

namespace actiontest {

struct Outcome {
    int code = -1;
    QString out, err;
};

struct CommandFixture : ::testing::Test {
    QTemporaryDir tmp;
    QString vol() const { return tmp.path() + "/vol"; }
    QString dst() const { return tmp.path() + "/dst"; }
    QProcessEnvironment env() const {
        QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
        e.insert("TARN_SETTINGS", tmp.path() + "/settings.ini");
        e.insert("XDG_DATA_HOME", tmp.path() + "/data");
        return e;
    }
    // Runs `program args` (default: tarn) with its input closed, or taken
    // from `input` (a file or terminal).
    Outcome run(const QStringList& args, const QString& program = QStringLiteral(TARN_CLI_PATH),
                const QProcessEnvironment& environment = {}, const QString& workingFolder = {},
                const QString& input = {}) {
        QProcess p;
        p.setProcessEnvironment(environment.isEmpty() ? env() : environment);
        if (!workingFolder.isEmpty()) p.setWorkingDirectory(workingFolder);
        if (!input.isEmpty()) p.setStandardInputFile(input);
        p.start(program, args);
        p.closeWriteChannel();
        p.waitForFinished(-1);
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
                QString::fromUtf8(p.readAllStandardOutput()),
                QString::fromUtf8(p.readAllStandardError())};
    }
    Outcome tarn(const QStringList& args) { return run(args); }
    // A media folder whose index lists `listed` (project "Doc"); each name
    // in `files` is written as a file of its own content.
    static void writeMediaFolder(const QString& folder, const QStringList& listed,
                                 const QStringList& files,
                                 const QList<fixtures::PmrEntry>& extra = {}) {
        QList<fixtures::PmrEntry> entries;
        quint64 id = 0x5F3A0000;
        for (const QString& name : listed)
            entries << fixtures::makePmrEntry(++id, name, QStringLiteral("Doc"));
        entries << extra;
        writeFile(folder + "/msmFMID.pmr", fixtures::writePmr(entries));
        for (const QString& name : files) writeFile(folder + "/" + name, content(name));
    }
    int filesUnder(const QString& folder) {
        int n = 0;
        QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            ++n;
        }
        return n;
    }
};

}  // namespace actiontest
