#include "report/TarnColumns.h"

#include "items/TarnDatabaseItem.h"
#include "items/TarnFileSize.h"
#include "items/TarnSortKey.h"
#include "items/TarnVocabulary.h"
#include "support/TarnFileName.h"

namespace {

struct ColumnInfo {
    TarnColumn column;
    const char* identifier;
    const char* title;
    std::optional<TarnSortKey> sortKey;  // none: not sortable
};

// Table order.
constexpr ColumnInfo kColumns[] = {
    {TarnColumn::Icon, "IconCellID", "Icon", std::nullopt},
    {TarnColumn::Filename, "FilenameCellID", "File Name", TarnSortKey::FileName},
    {TarnColumn::Clipname, "ClipnameCellID", "Clip Name", TarnSortKey::ClipName},
    {TarnColumn::Path, "PathCellID", "Path", TarnSortKey::Path},
    {TarnColumn::Project, "ProjectCellID", "Project", TarnSortKey::Project},
    {TarnColumn::FilePackageUID, "filePackageUID", "File Package UID", TarnSortKey::FileUID},
    {TarnColumn::MaterialPackageUID, "materialPackageUID", "Material Package UID",
     TarnSortKey::MaterialUID},
    {TarnColumn::Exists, "ExistsCellID", "Exists", std::nullopt},
    {TarnColumn::Compression, "CompressionCellID", "Compression", TarnSortKey::Compression},
    {TarnColumn::Framerate, "FramerateCellID", "Frame Rate", TarnSortKey::FrameRate},
    {TarnColumn::Samplerate, "SamplerateCellID", "Sample Rate", TarnSortKey::SampleRate},
    {TarnColumn::Bits, "BitsCellID", "Bits", TarnSortKey::Bits},
    {TarnColumn::Kind, "KindCellID", "Kind", std::nullopt},
    {TarnColumn::Size, "SizeCellID", "Size", TarnSortKey::FileSize},
    {TarnColumn::Date, "DateCellID", "Date", TarnSortKey::FileDate},
    {TarnColumn::Hash, "hash", "Hash", TarnSortKey::Hash},
    {TarnColumn::SourceFileID, "sourceFileID", "Source File ID", std::nullopt},
    {TarnColumn::SourceTapeID, "sourceTapeID", "Source Tape ID", std::nullopt},
};

const ColumnInfo& info(TarnColumn column) {
    for (const ColumnInfo& c : kColumns) {
        if (c.column == column) return c;
    }
    return kColumns[0];
}

QString sizeText(quint64 size) {
    return TarnFileSize::toHumanBytes(double(size));
}

// The rate words are fixed tables, built once and only read afterwards.
const TarnVocabulary& vocabulary() {
    static const TarnVocabulary words;
    return words;
}

}  // namespace

const QList<TarnColumn>& TarnColumns::all() {
    static const QList<TarnColumn> columns = [] {
        QList<TarnColumn> list;
        for (const ColumnInfo& c : kColumns) list.append(c.column);
        return list;
    }();
    return columns;
}

QString TarnColumns::identifier(TarnColumn column) {
    return QString::fromLatin1(info(column).identifier);
}

QString TarnColumns::title(TarnColumn column) {
    return QString::fromLatin1(info(column).title);
}

QString TarnColumns::sortKey(TarnColumn column) {
    const std::optional<TarnSortKey> key = info(column).sortKey;
    return key ? TarnSortKeys::name(*key) : QString();
}

std::optional<TarnColumn> TarnColumns::fromSortKey(const QString& key) {
    const std::optional<TarnSortKey> sortKey = TarnSortKeys::fromName(key);
    if (!sortKey) return std::nullopt;
    for (const ColumnInfo& c : kColumns) {
        if (c.sortKey == sortKey) return c.column;
    }
    return std::nullopt;
}

QStringList TarnColumns::sortKeys() {
    QStringList keys;
    for (TarnSortKey key : TarnSortKeys::all()) keys.append(TarnSortKeys::name(key));
    return keys;
}

QString TarnColumns::cellText(TarnColumn column, const TarnDatabaseItem& item) {
    switch (column) {
        case TarnColumn::Icon:
            return QString();
        // Paths are kept as plain file-system paths, never percent-encoded,
        // so the text is the path itself; bytes of a name that are not UTF-8
        // show as replacement characters, as a file manager shows them.
        case TarnColumn::Filename:
            return TarnFileName::displayText(item.DB_ClipName);
        case TarnColumn::Path:
            return TarnFileName::displayText(item.DB_itemPath);
        case TarnColumn::Clipname:
            return item.DB_NameInBin;
        case TarnColumn::Project:
            return item.get_DB_ProjectName();
        case TarnColumn::FilePackageUID:
            return item.getFileUIDString();
        case TarnColumn::MaterialPackageUID:
            return item.getMaterialUIDString();
        case TarnColumn::Exists:
            if (item.DB_isAMA) return QStringLiteral("AMA link");
            return item.DB_FileExists ? QStringLiteral("Yes") : QStringLiteral("NO");
        case TarnColumn::Compression:
            return item.DB_CompressionString;
        case TarnColumn::Framerate:
            return vocabulary().frameRateText(item);
        case TarnColumn::Samplerate:
            return vocabulary().sampleRateText(item);
        case TarnColumn::Bits:
            return item.DB_bits ? QStringLiteral("%1 bit").arg(item.DB_bits) : QStringLiteral("");
        case TarnColumn::Kind:
            return TarnDatabaseItem::kindForUsageCode(item.DB_usageCode);
        case TarnColumn::Size:
            if (!item.DB_FileExists) return QString();
            return sizeText(item.DB_filesize.value_or(0));
        case TarnColumn::Date:
            return item.DB_Date_String();
        case TarnColumn::Hash:
            return QStringLiteral("%1").arg(item.hash(), 8, 16, QLatin1Char('0'));
        case TarnColumn::SourceFileID:
        case TarnColumn::SourceTapeID:
            return QString();
    }
    return QString();
}

QString TarnColumns::exportText(TarnColumn column, const TarnDatabaseItem& item) {
    if (column == TarnColumn::Icon || column == TarnColumn::Hash) return QString();
    return cellText(column, item);
}

const QList<TarnProjectColumn>& TarnColumns::projectColumns() {
    static const QList<TarnProjectColumn> columns = {
        TarnProjectColumn::Project, TarnProjectColumn::Size, TarnProjectColumn::Count};
    return columns;
}

QString TarnColumns::identifier(TarnProjectColumn column) {
    switch (column) {
        case TarnProjectColumn::Project:
            return QStringLiteral("ProjectCellID");
        case TarnProjectColumn::Size:
            return QStringLiteral("SizeCellID");
        case TarnProjectColumn::Count:
            return QStringLiteral("CountCellID");
    }
    return QString();
}

QString TarnColumns::title(TarnProjectColumn column) {
    switch (column) {
        case TarnProjectColumn::Project:
            return QStringLiteral("Project");
        case TarnProjectColumn::Size:
            return QStringLiteral("Size");
        case TarnProjectColumn::Count:
            return QStringLiteral("Files");
    }
    return QString();
}

QString TarnColumns::projectCellText(TarnProjectColumn column, const QString& name, quint64 size,
                                     quint32 filesCount) {
    switch (column) {
        case TarnProjectColumn::Project:
            return name;
        case TarnProjectColumn::Size:
            return sizeText(size);
        case TarnProjectColumn::Count:
            return QString::number(filesCount);
    }
    return QString();
}
