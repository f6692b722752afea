#include <gtest/gtest.h>

#include <algorithm>

#include "DatabaseTestSupport.h"
#include "database/TarnItemComparator.h"

namespace {

// The order a text key must give: case ignored, ties kept in their order.
QStringList referenceOrder(QStringList texts, bool ascending) {
    std::stable_sort(texts.begin(), texts.end(), [ascending](const QString& a, const QString& b) {
        const int c = QString::compare(a, b, Qt::CaseInsensitive);
        return ascending ? c < 0 : c > 0;
    });
    return texts;
}

}  // namespace

// Names and paths that share long prefixes, differ only far in, only in case,
// or in letters outside ASCII, sort as a plain case-insensitive comparison
// would sort them.
TEST(TextSort, PathsAndNamesOrderIgnoringCase) {
    const QStringList texts = {
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/Harbour_Wide_A01.5F3A1C02.mxf"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/Harbour_Wide_A01.5F3A1C01.mxf"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/harbour_wide_a01.5F3A1C01.mxf"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/10/Harbour.mxf"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/Harbour"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/Été.mxf"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/été.mxf"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/Ete.mxf"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/Zebra.mxf"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/_underscore.mxf"),
        QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/1/[bracket].mxf"),
    };
    for (const bool ascending : {true, false}) {
        SCOPED_TRACE(ascending);
        QList<TarnItemPtr> items;
        QList<quint32> order;
        for (qsizetype i = 0; i < texts.size(); ++i) {
            items.append(dbtest::makeItem(quint64(i) + 1, texts.at(i)));
            items.last()->DB_itemPath = texts.at(i);
            order.append(quint32(i));
        }
        for (const char* key : {"path", "filename"}) {
            SCOPED_TRACE(key);
            QList<quint32> sorted = order;
            TarnItemComparator(QString::fromLatin1(key), ascending, false).sort(sorted, items);
            QStringList got;
            for (const quint32 i : sorted) got.append(texts.at(i));
            EXPECT_EQ(got, referenceOrder(texts, ascending));
        }
    }
}
