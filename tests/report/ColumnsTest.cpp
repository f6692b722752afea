#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "database/TarnItemComparator.h"
#include "items/TarnDatabaseItem.h"
#include "report/TarnColumns.h"
#include "report/TarnItemRows.h"

namespace {

TarnItemPtr videoItem() {
    auto item = std::make_shared<TarnDatabaseItem>();
    item->DB_ClipName = QStringLiteral("A001C002_V01.mxf");
    item->DB_NameInBin = QStringLiteral("Interview wide");
    item->DB_ProjectName = QStringLiteral("Harbour");
    item->DB_itemPath = QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/A001C002_V01.mxf");
    item->DB_SizeofUID = 2;
    const quint8 shortId[8] = {0x01, 0x02, 0x03, 0x04, 0x10, 0x20, 0x30, 0x40};
    std::memcpy(item->filePackageUID + 16, shortId, 8);
    item->DB_FileExists = true;
    item->DB_filesize = 1500000;
    item->DB_CompressionString = QStringLiteral("DNxHD 1080p HQX");
    item->DB_DIDResolutionID = 1235;
    item->setFrameRateNumerator(2997, 100);
    item->DB_bits = 10;
    item->DB_usageCode = 15;
    return item;
}

QString text(TarnColumn column, const TarnDatabaseItem& item) {
    return TarnColumns::cellText(column, item);
}

}  // namespace

TEST(Columns, IdentifiersTitlesAndSortKeysRoundTrip) {
    const QList<TarnColumn>& all = TarnColumns::all();
    ASSERT_EQ(all.size(), 18);
    EXPECT_EQ(TarnColumns::identifier(all.first()), QStringLiteral("IconCellID"));
    EXPECT_EQ(TarnColumns::identifier(all.last()), QStringLiteral("sourceTapeID"));
    for (TarnColumn c : all) {
        EXPECT_EQ(TarnColumns::fromIdentifier(TarnColumns::identifier(c)), c);
        EXPECT_FALSE(TarnColumns::title(c).isEmpty());
        const QString key = TarnColumns::sortKey(c);
        if (!key.isNull()) {
            EXPECT_EQ(TarnColumns::fromSortKey(key), c);
        }
    }
    // The comparator sorts by every key a column names (each key's order is
    // checked by the database's sort tests).
    const QStringList keys = TarnColumns::sortKeys();
    EXPECT_EQ(keys.size(), 13);
    for (const QString& key : keys) {
        EXPECT_TRUE(TarnItemComparator(key, true, false).isKnownKey()) << key.toStdString();
    }
    EXPECT_FALSE(TarnItemComparator(QStringLiteral("kind"), true, false).isKnownKey());
    EXPECT_FALSE(TarnColumns::fromSortKey(QStringLiteral("kind")));
    EXPECT_FALSE(TarnColumns::fromIdentifier(QStringLiteral("CheckCellID")));
}

TEST(Columns, ItemTexts) {
    TarnItemPtr item = videoItem();
    EXPECT_EQ(text(TarnColumn::Filename, *item), QStringLiteral("A001C002_V01.mxf"));
    EXPECT_EQ(text(TarnColumn::Clipname, *item), QStringLiteral("Interview wide"));
    EXPECT_EQ(text(TarnColumn::Path, *item), item->DB_itemPath);
    EXPECT_EQ(text(TarnColumn::Project, *item), QStringLiteral("Harbour"));
    EXPECT_EQ(text(TarnColumn::FilePackageUID, *item), QStringLiteral("{ 0102030410203040 }"));
    EXPECT_EQ(text(TarnColumn::Exists, *item), QStringLiteral("Yes"));
    EXPECT_EQ(text(TarnColumn::Compression, *item), QStringLiteral("DNxHD 1080p HQX"));
    // The rate texts are the vocabulary's (checked with it).
    EXPECT_EQ(text(TarnColumn::Framerate, *item), QStringLiteral("29.97fps"));
    EXPECT_EQ(text(TarnColumn::Samplerate, *item), QStringLiteral("220x"));
    EXPECT_EQ(text(TarnColumn::Bits, *item), QStringLiteral("10 bit"));
    EXPECT_EQ(text(TarnColumn::Kind, *item), QStringLiteral("IMPORTED"));
    EXPECT_EQ(text(TarnColumn::Size, *item), QStringLiteral("1.50 MB"));
    EXPECT_EQ(text(TarnColumn::Hash, *item),
              QStringLiteral("%1").arg(item->hash(), 8, 16, QLatin1Char('0')));
    EXPECT_EQ(text(TarnColumn::Hash, *item).size(), 8);
    EXPECT_TRUE(text(TarnColumn::Icon, *item).isNull());
    EXPECT_TRUE(text(TarnColumn::SourceFileID, *item).isNull());
    EXPECT_TRUE(text(TarnColumn::SourceTapeID, *item).isNull());
}

TEST(Columns, MissingAmaAndEmptyValues) {
    TarnDatabaseItem item;
    item.DB_ClipName = QStringLiteral("gone.wav");
    item.DB_filesize = 4096;
    EXPECT_EQ(text(TarnColumn::Exists, item), QStringLiteral("NO"));
    // The size of a missing file is not shown.
    EXPECT_TRUE(text(TarnColumn::Size, item).isNull());
    EXPECT_EQ(text(TarnColumn::Project, item), QStringLiteral("_00_TRN_NULL_PROJECT_NAME"));
    EXPECT_EQ(text(TarnColumn::Bits, item), QStringLiteral(""));
    EXPECT_EQ(text(TarnColumn::Kind, item), QStringLiteral(""));
    item.DB_usageCode = 7;
    EXPECT_EQ(text(TarnColumn::Kind, item), QStringLiteral(""));
    item.DB_isAMA = true;
    EXPECT_EQ(text(TarnColumn::Exists, item), QStringLiteral("AMA link"));
    item.setFrameRateNumerator(25, 0);
    EXPECT_TRUE(text(TarnColumn::Framerate, item).isNull());
}

TEST(Columns, ExportLeavesIconAndHashEmpty) {
    TarnItemPtr item = videoItem();
    EXPECT_TRUE(TarnColumns::exportText(TarnColumn::Hash, *item).isEmpty());
    EXPECT_TRUE(TarnColumns::exportText(TarnColumn::Icon, *item).isEmpty());
    EXPECT_EQ(TarnColumns::exportText(TarnColumn::Kind, *item), QStringLiteral("IMPORTED"));

    const TarnItemRows rows({item, nullptr}, QStringLiteral("Tarn"));
    ASSERT_EQ(rows.headers().size(), 18);
    ASSERT_EQ(rows.rowCount(), 2);
    QStringList row;
    rows.cells(0, row);
    ASSERT_EQ(row.size(), 18);
    EXPECT_EQ(row.at(TarnColumns::all().indexOf(TarnColumn::Filename)), item->DB_ClipName);
    EXPECT_TRUE(row.at(TarnColumns::all().indexOf(TarnColumn::Hash)).isEmpty());
    // A row without its item is a row of empty cells.
    row.clear();
    rows.cells(1, row);
    EXPECT_EQ(row, QStringList(18, QString()));

    // The table's own column order, whatever it is.
    const TarnItemRows reordered({item}, QStringLiteral("Tarn"),
                                 {TarnColumn::Size, TarnColumn::Filename});
    EXPECT_EQ(reordered.headers(),
              (QStringList{QStringLiteral("Size"), QStringLiteral("File Name")}));
    row.clear();
    reordered.cells(0, row);
    EXPECT_EQ(row, (QStringList{QStringLiteral("1.50 MB"), item->DB_ClipName}));
}

TEST(Columns, ProjectSummaryColumns) {
    ASSERT_EQ(TarnColumns::projectColumns().size(), 3);
    EXPECT_EQ(TarnColumns::identifier(TarnProjectColumn::Project), QStringLiteral("ProjectCellID"));
    EXPECT_EQ(TarnColumns::identifier(TarnProjectColumn::Size), QStringLiteral("SizeCellID"));
    EXPECT_EQ(TarnColumns::identifier(TarnProjectColumn::Count), QStringLiteral("CountCellID"));
    QStringList cells;
    for (TarnProjectColumn c : TarnColumns::projectColumns()) {
        cells.append(TarnColumns::projectCellText(c, QStringLiteral("Harbour"), 2500, 3));
    }
    EXPECT_EQ(cells, (QStringList{QStringLiteral("Harbour"), QStringLiteral("2.50 kB"),
                                  QStringLiteral("3")}));
}
