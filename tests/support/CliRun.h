#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "QtPrinters.h"
#include "TestSupport.h"

// Runs the tarn binary with a private settings file, a private data folder
// (so its own Trash) and the C locale, so the user's preferences are never
// read or written and texts are stable.
struct CliResult {
    int exitCode = -1;
    QString out;
    QString err;

    QJsonObject json() const { return QJsonDocument::fromJson(out.toUtf8()).object(); }
    QJsonArray items() const { return json().value("items").toArray(); }
};

inline QStringList sorted(QStringList list) {
    list.sort();
    return list;
}

// The members of `object` named in `expected`, to compare with it.
inline QJsonObject fieldsOf(const QJsonObject& object, const QJsonObject& expected) {
    QJsonObject picked;
    for (auto it = expected.begin(); it != expected.end(); ++it)
        picked.insert(it.key(), object.value(it.key()));
    return picked;
}

class CliRun {
  public:
    // Runs tarn with `args` to its end; `setup.env` is set over the private
    // folders, and `program` runs instead of tarn (given tarn among its args).
    CliResult operator()(const QStringList& args, testsupport::ProcessSetup setup = {},
                         const QString& program = QStringLiteral(TARN_CLI_PATH)) const {
        QMap<QString, QString> env{{"TARN_SETTINGS", settingsFile()},
                                   {"XDG_DATA_HOME", dataHome()}};
        env.insert(setup.env);
        setup.env = env;
        const testsupport::ProcessRun run = testsupport::runProcessWith(program, args, setup);
        return {run.exitCode, QString::fromUtf8(run.out), QString::fromUtf8(run.err)};
    }

    QString settingsFile() const { return tempPath("settings.ini"); }
    QString dataHome() const { return tempPath("data"); }
    QString tempPath(const QString& name) const { return home_.filePath(name); }

  private:
    testsupport::TempDir home_;
};
