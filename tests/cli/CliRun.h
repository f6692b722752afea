#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <ostream>

#include "QtPrinters.h"
#include "TestSupport.h"

// Runs the tarn binary with a private settings file and the C locale, so
// the user's preferences are never read or written and texts are stable.
struct CliResult {
    int exitCode = -1;
    QString out;
    QString err;

    QJsonObject json() const { return QJsonDocument::fromJson(out.toUtf8()).object(); }
};

class CliRun {
  public:
    CliRun() : settings_(home_.filePath(QStringLiteral("settings.ini"))) {}

    CliResult operator()(const QStringList& args) const {
        const testsupport::ProcessRun run = testsupport::runProcess(
            QStringLiteral(TARN_CLI_PATH), args, {{QStringLiteral("TARN_SETTINGS"), settings_}});
        return {run.exitCode, QString::fromUtf8(run.out), QString::fromUtf8(run.err)};
    }

    QString settingsFile() const { return settings_; }
    QString tempPath(const QString& name) const { return home_.filePath(name); }

  private:
    QTemporaryDir home_;
    QString settings_;
};
