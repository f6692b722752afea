#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>

#include <string>

#include "report/TarnExport.h"
#include "report/TarnExportTable.h"

namespace {

// Byte for byte: the file's bytes against the UTF-8 of the generated text.
std::string golden(const char* name) {
    QFile file(QStringLiteral(TARN_TEST_SOURCE_DIR "/report/golden/") + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly)) return std::string("<missing golden> ") + name;
    return file.readAll().toStdString();
}

// Two columns and rows that exercise quoting, separators inside cells, line
// feeds, markup characters and non-ASCII text.
TarnExportTable sampleTable() {
    TarnExportTable table(QStringLiteral("Tarn <media>"),
                          {QStringLiteral("File \"Name\""), QStringLiteral("Project")});
    table.addRow({QStringLiteral("A001_C002.mxf"), QStringLiteral("Tom & Jerry <x>")});
    table.addRow({QStringLiteral("say \"hi\"; now, then"), QStringLiteral("line one\nline two")});
    table.addRow({QStringLiteral("Director's cut"), QString()});
    table.addRow({QStringLiteral("Café été.wav"), QStringLiteral("")});
    return table;
}

}  // namespace

TEST(Export, CsvMatchesGoldenInBothFlavours) {
    const TarnExportTable table = sampleTable();
    EXPECT_EQ(TarnExport::genCsv(table, QStringLiteral(";")).toStdString(),
              golden("sample-semicolon.csv"));
    EXPECT_EQ(TarnExport::genCsv(table, QStringLiteral(",")).toStdString(),
              golden("sample-comma.csv"));
}

TEST(Export, HtmlMatchesGolden) {
    EXPECT_EQ(TarnExport::genHtml(sampleTable()).toStdString(), golden("sample.html"));
}

TEST(Export, CsvQuotesEveryFieldAndEndsEachWithTheSeparator) {
    TarnExportTable table(QStringLiteral("t"), {QStringLiteral("A"), QStringLiteral("B")});
    table.addRow({QStringLiteral("x"), QStringLiteral("y")});
    EXPECT_EQ(TarnExport::genCsv(table, QStringLiteral(";")),
              QStringLiteral("\"A\";\"B\";\n\"x\";\"y\";\n"));
    EXPECT_EQ(TarnExport::genCsv(table, QStringLiteral(",")),
              QStringLiteral("\"A\",\"B\",\n\"x\",\"y\",\n"));

    TarnExportTable quotes(QStringLiteral("t"), {QStringLiteral("Q")});
    quotes.addRow({QStringLiteral("a \"b\" c")});
    quotes.addRow({QStringLiteral("semi;colon\r\nbreak")});
    EXPECT_EQ(TarnExport::genCsv(quotes, QStringLiteral(";")),
              QStringLiteral("\"Q\";\n\"a \"\"b\"\" c\";\n\"semi;colon\r\nbreak\";\n"));
}

TEST(Export, EmptyTableKeepsHeaderAndEmptyBody) {
    TarnExportTable table(QStringLiteral("Nothing"), {QStringLiteral("A"), QStringLiteral("B")});
    EXPECT_EQ(TarnExport::genCsv(table, QStringLiteral(",")), QStringLiteral("\"A\",\"B\",\n"));
    const QString html = TarnExport::genHtml(table);
    EXPECT_TRUE(html.contains(QLatin1String("<th>A</th><th>B</th></tr></thead><tbody></tbody>")));
    EXPECT_TRUE(html.endsWith(QLatin1String("</tbody></table></div></body></html>")));

    TarnExportTable noColumns(QStringLiteral("x"), {});
    EXPECT_EQ(TarnExport::genCsv(noColumns, QStringLiteral(";")), QStringLiteral("\n"));
}

// The golden files hold the page's shape and the usual entities; an entity
// already in the text is escaped once, not left as markup.
TEST(Export, XmlEntitiesAreEscapedAmpersandFirst) {
    EXPECT_EQ(TarnExport::stringByEncodingXMLEntities(QStringLiteral("&lt; it's \"q\"")),
              QStringLiteral("&amp;lt; it&apos;s &quot;q&quot;"));
    EXPECT_TRUE(TarnExport::stringByEncodingXMLEntities(QString()).isEmpty());
}

TEST(Export, JsonCarriesTitleColumnsAndRows) {
    const QString json = TarnExport::genJson(sampleTable());
    EXPECT_TRUE(json.contains(QLatin1String("\"title\": \"Tarn <media>\"")));
    EXPECT_TRUE(json.contains(QLatin1String("\"line one\\nline two\"")));
    EXPECT_TRUE(json.endsWith(QLatin1Char('\n')));
}

TEST(Export, RowsArePaddedOrCutToTheHeader) {
    TarnExportTable table(QStringLiteral("t"), {QStringLiteral("A"), QStringLiteral("B")});
    table.addRow({QStringLiteral("1")});
    table.addRow({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
    EXPECT_EQ(TarnExport::genCsv(table, QStringLiteral(";")),
              QStringLiteral("\"A\";\"B\";\n\"1\";\"\";\n\"1\";\"2\";\n"));
}
