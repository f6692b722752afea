#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class TarnDatabaseItem;

// The columns of the database table, in the table's order. The table view, its
// sort, the exports and the command line all take their identifiers, titles,
// sort keys and cell texts from here.
enum class TarnColumn {
    Icon,
    Filename,
    Clipname,
    Path,
    Project,
    FilePackageUID,
    MaterialPackageUID,
    Exists,
    Compression,
    Framerate,
    Samplerate,
    Bits,
    Kind,
    Size,
    Date,
    Hash,
    SourceFileID,
    SourceTapeID,
};

// The columns of the projects summary table.
enum class TarnProjectColumn { Project, Size, Count };

class TarnColumns {
  public:
    // Every column of the database table, in table order.
    static const QList<TarnColumn>& all();
    // "IconCellID", "FilenameCellID", ... "sourceTapeID".
    static QString identifier(TarnColumn column);
    // The header title ("File Name", "Clip Name", ...).
    static QString title(TarnColumn column);

    // The sort key of a column ("filename", "fileUID", ...); null for the
    // columns that cannot be sorted (icon, exists, kind, source ids).
    static QString sortKey(TarnColumn column);
    static std::optional<TarnColumn> fromSortKey(const QString& key);
    // The thirteen sort keys, in table column order.
    static QStringList sortKeys();

    // The text the table shows for an item; null where the cell has no text.
    static QString cellText(TarnColumn column, const TarnDatabaseItem& item);
    // The text an export writes: the table's text, but none for the icon and
    // the hash (those are for the screen only).
    static QString exportText(TarnColumn column, const TarnDatabaseItem& item);

    // Projects summary columns: "ProjectCellID", "SizeCellID", "CountCellID".
    static const QList<TarnProjectColumn>& projectColumns();
    static QString identifier(TarnProjectColumn column);
    static QString title(TarnProjectColumn column);
    static QString projectCellText(TarnProjectColumn column, const QString& name, quint64 size,
                                   quint32 filesCount);
};
