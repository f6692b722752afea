#include <gtest/gtest.h>

#include <QFile>

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

// Every field quoted (quotes doubled) and followed by the separator; rows
// padded or cut to the header; an empty table is its header line.
TEST(Export, CsvFieldsAndRowShapes) {
    TarnExportTable quotes(QStringLiteral("t"), {QStringLiteral("Q")});
    quotes.addRow({QStringLiteral("a \"b\" c")});
    quotes.addRow({QStringLiteral("semi;colon\r\nbreak")});
    TarnExportTable ragged(QStringLiteral("t"), {QStringLiteral("A"), QStringLiteral("B")});
    ragged.addRow({QStringLiteral("1")});
    ragged.addRow({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
    const struct {
        TarnExportTable table;
        const char* separator;
        const char* csv;
    } cases[] = {
        {quotes, ";", "\"Q\";\n\"a \"\"b\"\" c\";\n\"semi;colon\r\nbreak\";\n"},
        {ragged, ",", "\"A\",\"B\",\n\"1\",\"\",\n\"1\",\"2\",\n"},
        {TarnExportTable(QStringLiteral("t"), {QStringLiteral("A"), QStringLiteral("B")}), ",",
         "\"A\",\"B\",\n"},
        {TarnExportTable(QStringLiteral("t"), {}), ";", "\n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TarnExport::genCsv(c.table, QString::fromLatin1(c.separator)),
                  QString::fromLatin1(c.csv));
    }
    const QString html = TarnExport::genHtml(cases[2].table);
    EXPECT_TRUE(html.contains(QLatin1String("<th>A</th><th>B</th></tr></thead><tbody></tbody>")));
}
