#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QUrl>

#include <ftw.h>
#include <sys/stat.h>

#include <cstdio>

#include "log/xConsole.h"
#include "support/TarnFileName.h"

namespace testsupport {

TarnItemPtr makeItem(const QString& path, const QString& project) {
    auto item = std::make_shared<TarnDatabaseItem>();
    item->DB_itemPath = path;
    item->DB_ClipName = QFileInfo(path).fileName();
    item->DB_ProjectName = project;
    item->validatePath();
    return item;
}

QStringList entries(const QString& folder) {
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

LogCapture::LogCapture() : start_(xConsole::sharedInstance()->contents().size()) {}

QString LogCapture::text() const {
    return xConsole::sharedInstance()->contents().mid(start_);
}

QByteArray contentOf(const QString& path) {
    QFile file;
    if (!TarnFileName::open(file, path, QIODevice::ReadOnly)) return QByteArray("(missing)");
    return file.readAll();
}

bool exists(const QString& path) {
    struct stat st {};
    return ::lstat(TarnFileName::encode(path).constData(), &st) == 0;
}

TempDir::~TempDir() {
    if (!dir_.isValid()) return;
    // Depth first, links not followed: every entry goes before its folder.
    ::nftw(
        TarnFileName::encode(dir_.path()).constData(),
        [](const char* path, const struct stat*, int, struct FTW*) {
            std::remove(path);
            return 0;
        },
        16, FTW_DEPTH | FTW_PHYS);
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

ProcessRun runProcess(const QString& program, const QStringList& args,
                      const QMap<QString, QString>& env) {
    return runProcessWith(program, args, {env, {}, {}});
}

ProcessRun runProcessWith(const QString& program, const QStringList& args,
                          const ProcessSetup& setup) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    for (auto it = setup.env.cbegin(); it != setup.env.cend(); ++it)
        environment.insert(it.key(), it.value());
    process.setProcessEnvironment(environment);
    if (!setup.workingFolder.isEmpty()) process.setWorkingDirectory(setup.workingFolder);
    if (!setup.input.isEmpty()) process.setStandardInputFile(setup.input);
    process.start(program, args);
    process.closeWriteChannel();
    process.waitForFinished(-1);
    ProcessRun run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
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
