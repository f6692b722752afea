#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <ostream>

// Readable failure messages for the values the suites compare.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QJsonArray& array, std::ostream* os) {
    *os << QJsonDocument(array).toJson(QJsonDocument::Compact).toStdString();
}

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
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("TARN_SETTINGS"), settings_);
        env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(TARN_CLI_PATH), args);
        process.waitForFinished(-1);
        CliResult result;
        result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        result.out = QString::fromUtf8(process.readAllStandardOutput());
        result.err = QString::fromUtf8(process.readAllStandardError());
        return result;
    }

    QString settingsFile() const { return settings_; }
    QString tempPath(const QString& name) const { return home_.filePath(name); }

  private:
    QTemporaryDir home_;
    QString settings_;
};
