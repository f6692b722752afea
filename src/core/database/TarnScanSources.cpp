#include "database/TarnScanSources.h"

#include <QFileInfo>

#include "database/TarnScanner.h"

TarnScanSources::Take TarnScanSources::take(const QStringList& args, qsizetype& i) {
    const QString& arg = args.at(i);
    if (!arg.startsWith(QLatin1Char('-')) || arg == QLatin1String("-")) {
        paths.append(arg);
    } else if (arg == QLatin1String("--volume")) {
        if (i + 1 >= args.size() || args.at(i + 1).isEmpty()) return Take::MissingValue;
        volumes.append(args.at(++i));
    } else if (arg == QLatin1String("--all-volumes")) {
        allVolumes = true;
    } else if (arg == QLatin1String("--ama")) {
        ama = true;
    } else {
        return Take::NotASource;
    }
    return Take::Taken;
}

bool TarnScanSources::isEmpty() const {
    return paths.isEmpty() && volumes.isEmpty() && !allVolumes && !ama;
}

QStringList TarnScanSources::scanRoots() const {
    QStringList roots;
    for (const QString& path : paths) roots.append(QFileInfo(path).absoluteFilePath());
    for (const QString& volume : volumes) {
        roots.append(TarnScanner::mediaFolderRoots(QFileInfo(volume).absoluteFilePath()));
    }
    if (allVolumes) {
        for (const QString& volume : TarnScanner::mountedVolumes()) {
            roots.append(TarnScanner::mediaFolderRoots(volume));
        }
    }
    if (ama) roots.append(TarnScanner::AMAManagementFolder());
    return roots;
}

QString TarnScanSources::usage() {
    return QStringLiteral(
        "  PATH...                a file or folder, scanned as it is\n"
        "  --volume ROOT          the media folders of the volume at ROOT (repeatable)\n"
        "  --all-volumes          the media folders of every mounted volume\n"
        "  --ama                  the AMA management folder\n");
}
