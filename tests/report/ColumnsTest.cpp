#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "items/TarnDatabaseItem.h"
#include "report/TarnColumns.h"
#include "report/TarnItemRows.h"

namespace {

TarnItemPtr videoItem() {
    auto item = std::make_shared<TarnDatabaseItem>();
    item->DB_ClipName = QStringLiteral("A001C002_V01.mxf");
    item->DB_ProjectName = QStringLiteral("Harbour");
    item->DB_SizeofUID = 2;
    std::memcpy(item->filePackageUID + 16, "\x01\x02\x03\x04\x10\x20\x30\x40", 8);
    item->DB_FileExists = true;
    item->DB_filesize = 1500000;
    item->DB_bits = 10;
    item->DB_usageCode = 15;
    return item;
}

// A null text (no text: the table shows its placeholder) reads "<null>".
QString shown(const QString& text) {
    return text.isNull() ? QStringLiteral("<null>") : text;
}

}  // namespace

TEST(Columns, CellTexts) {
    const TarnItemPtr video = videoItem();
    TarnDatabaseItem gone, ama;
    gone.DB_filesize = 4096;
    gone.DB_usageCode = 7;
    gone.setFrameRateNumerator(25, 0);
    ama.DB_isAMA = true;
    const struct {
        TarnColumn column;
        const TarnDatabaseItem& item;
        const char* text;  // nullptr: no text
    } cases[] = {
        {TarnColumn::FilePackageUID, *video, "{ 0102030410203040 }"},
        {TarnColumn::Exists, *video, "Yes"},
        {TarnColumn::Bits, *video, "10 bit"},
        {TarnColumn::Kind, *video, "IMPORTED"},
        {TarnColumn::Size, *video, "1.50 MB"},
        {TarnColumn::Icon, *video, nullptr},
        {TarnColumn::SourceTapeID, *video, nullptr},
        {TarnColumn::Exists, gone, "NO"},
        {TarnColumn::Size, gone, nullptr},  // the size of a missing file is not shown
        {TarnColumn::Project, gone, "_00_TRN_NULL_PROJECT_NAME"},
        {TarnColumn::Bits, gone, ""},
        {TarnColumn::Kind, gone, ""},
        {TarnColumn::Framerate, gone, nullptr},
        {TarnColumn::Exists, ama, "AMA link"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(shown(TarnColumns::cellText(c.column, c.item)),
                  c.text ? QString::fromUtf8(c.text) : shown(QString()))
            << TarnColumns::identifier(c.column).toStdString();
    }
}

// Exports leave the icon and hash cells empty, follow the table's own column
// order, and write a row without its item as empty cells.
TEST(Columns, ExportRows) {
    const TarnItemPtr item = videoItem();
    EXPECT_TRUE(TarnColumns::exportText(TarnColumn::Hash, *item).isEmpty());
    EXPECT_TRUE(TarnColumns::exportText(TarnColumn::Icon, *item).isEmpty());
    EXPECT_EQ(TarnColumns::exportText(TarnColumn::Kind, *item), "IMPORTED");

    const TarnItemRows rows({item, nullptr}, QStringLiteral("Tarn"),
                            {TarnColumn::Size, TarnColumn::Hash, TarnColumn::Filename});
    EXPECT_EQ(rows.headers(), (QStringList{"Size", "Hash", "File Name"}));
    QStringList row;
    rows.cells(0, row);
    EXPECT_EQ(row, (QStringList{"1.50 MB", "", item->DB_ClipName}));
    row.clear();
    rows.cells(1, row);
    EXPECT_EQ(row, QStringList(3, QString()));
    EXPECT_EQ(TarnItemRows({item}, QStringLiteral("Tarn")).headers().size(),
              TarnColumns::all().size());
}
