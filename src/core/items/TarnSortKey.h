#pragma once

#include <QList>
#include <QString>

#include <optional>

// The keys the database table sorts by, in the order of their columns. The
// comparator orders by them and the table's columns name them.
enum class TarnSortKey {
    FileName,
    ClipName,
    Path,
    Project,
    FileUID,
    MaterialUID,
    Compression,
    FrameRate,
    SampleRate,
    Bits,
    FileSize,
    FileDate,
    Hash,
};

class TarnSortKeys {
  public:
    // The thirteen keys, in column order.
    static const QList<TarnSortKey>& all();
    // "filename", "clipname", "path", "project", "fileUID", "materialUID",
    // "compression", "framerate", "samplerate", "bits", "filesize",
    // "filedate", "hash".
    static QString name(TarnSortKey key);
    static std::optional<TarnSortKey> fromName(const QString& name);
};
