#include "DemoCommand.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

#include "DemoVolume.h"
#include "OutputFile.h"
#include "ScanCommand.h"
#include "SelectionOptions.h"
#include "database/TarnCore.h"
#include "report/TarnReportSink.h"

QString DemoCommand::defaultFolder() {
    // The binary lives in <build>/src; the demo volume goes next to <build>.
    return fixtures::DemoVolume::defaultRoot(QCoreApplication::applicationDirPath());
}

int DemoCommand::run(const QStringList& args) {
    QString folder;
    for (const QString& arg : args) {
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs("usage: tarn demo [DIR]\n", stdout);
            return 0;
        }
        if (arg.startsWith(QLatin1Char('-')) || !folder.isEmpty()) {
            std::fprintf(stderr, "tarn demo: unexpected argument '%s'\nusage: tarn demo [DIR]\n",
                         qPrintable(arg));
            return ScanCommand::kUsage;
        }
        folder = arg;
    }
    if (folder.isEmpty()) folder = defaultFolder();
    folder = QFileInfo(folder).absoluteFilePath();

    if (!QFileInfo::exists(folder)) {
        QString error;
        if (!fixtures::DemoVolume::write(folder, &error)) {
            std::fprintf(stderr, "tarn demo: %s\n", qPrintable(error));
            return 1;
        }
        std::printf("Wrote the demo volume to %s\n", qPrintable(folder));
    }
    std::printf("Scanning the demo volume %s\n\n", qPrintable(folder));
    std::fflush(stdout);

    ScanCommand::installFatalErrorHook();
    SelectionOptions selection;
    selection.sources.volumes.append(folder);
    TarnCore& core = *TarnCore::sharedCore();
    selection.run(core);

    OutputFile output;
    bool written = output.open(QString());
    if (written) {
        TarnReportSink sink(output.device());
        ScanCommand::writeItemsTable(core, sink);
        sink.appendText(ScanCommand::countsLine(core));
        sink.append(QLatin1StringView("\nProjects summary\n\n"));
        ScanCommand::writeProjectsTable(core, sink);
        written = sink.flush();
    }
    output.commit(written);
    return 0;
}
