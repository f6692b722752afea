#pragma once

#include <QString>
#include <QStringList>

// The places a scan starts from, as both programs take them on their command
// line (`tarn scan ...`, `tarn-app ...`):
//
//   PATH...          a file or folder, scanned as it is
//   --volume ROOT    the media folder roots of the volume at ROOT (repeatable)
//   --all-volumes    the media folder roots of every mounted volume
//   --ama            the AMA management folder
class TarnScanSources {
  public:
    enum class Take { NotASource, Taken, MissingValue };

    // Looks at args[i]: when it names a source, records it and leaves i on
    // the last argument it used (its value, for --volume).
    Take take(const QStringList& args, qsizetype& i);
    bool isEmpty() const;

    // The roots to scan, in order: the paths, each volume's media folder
    // roots, those of every mounted volume, then the AMA folder. Relative
    // paths are made absolute against the current folder.
    QStringList scanRoots() const;

    // The lines of a usage text that describe these arguments.
    static QString usage();

    QStringList paths;
    QStringList volumes;
    bool allVolumes = false;
    bool ama = false;
};
