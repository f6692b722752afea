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
    QStringList texts;
    for (const char* name :
         {"1/Harbour_Wide_A01.5F3A1C02.mxf", "1/Harbour_Wide_A01.5F3A1C01.mxf",
          "1/harbour_wide_a01.5F3A1C01.mxf", "10/Harbour.mxf", "1/Harbour", "1/Été.mxf",
          "1/été.mxf", "1/Ete.mxf", "1/Zebra.mxf", "1/_underscore.mxf", "1/[bracket].mxf"})
        texts << QStringLiteral("/Volumes/Media/Avid MediaFiles/MXF/") + QString::fromUtf8(name);
    QList<TarnItemPtr> items;
    QList<quint32> order;
    for (const QString& text : texts) {
        order << quint32(items.size());
        items << dbtest::makeItem(quint64(items.size()) + 1, text);
        items.last()->DB_itemPath = text;
    }
    for (const bool ascending : {true, false}) {
        for (const char* key : {"path", "filename"}) {
            SCOPED_TRACE(::testing::Message() << key << ascending);
            QList<quint32> sorted = order;
            TarnItemComparator(QString::fromLatin1(key), ascending, false).sort(sorted, items);
            QStringList got;
            for (const quint32 i : sorted) got.append(texts.at(i));
            EXPECT_EQ(got, referenceOrder(texts, ascending));
        }
    }
}
