#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QTest>

#include "WindowTestKit.h"
#include "items/TarnFileSize.h"
#include "models/SummaryTableModel.h"
#include "sheets/ProjectsSummarySheet.h"
#include "sheets/VolumeSelectorSheet.h"
#include "status/StatusStrip.h"

using apptest::AppTest;
using apptest::section;
using apptest::text;

namespace {

// The fields of one line of `tarn scan --format csv`: each quoted, with ""
// for a quote, and followed by ";".
QStringList csvFields(const QString& line) {
    QStringList fields;
    QString field;
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (quoted && c == QLatin1Char('"') && i + 1 < line.size() &&
            line.at(i + 1) == QLatin1Char('"')) {
            field += c;
            ++i;
        } else if (c == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (c == QLatin1Char(';') && !quoted) {
            fields << field;
            field.clear();
        } else {
            field += c;
        }
    }
    return fields;
}

}  // namespace

// The demo volume scanned through the window's own command shows what
// `tarn scan` shows of it: the same rows in the same order, the same cell
// texts and the same summary.
TEST_F(AppTest, ScanAllVolumesShowsWhatTheCommandLineShows) {
    const QString root = apptest::demoRoot();
    app_->scans()->setVolumeLister([root] { return QStringList{root}; });
    scanWith([this, &root] {
        QTest::mouseClick(window().bigRedButton(), Qt::LeftButton);
        VolumeSelectorSheet* selector = app_->scans()->volumeSelector();
        ASSERT_NE(selector, nullptr);
        EXPECT_EQ(selector->createResultingArray(), QStringList{root});
        QTest::mouseClick(selector->findChild<QPushButton*>(QStringLiteral("pushGo")),
                          Qt::LeftButton);
    });

    const QStringList csv = apptest::tarnScan({QStringLiteral("--volume"), root,
                                               QStringLiteral("--format"), QStringLiteral("csv")})
                                .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const QJsonObject json =
        QJsonDocument::fromJson(
            apptest::tarnScan({QStringLiteral("--volume"), root, QStringLiteral("--format"),
                               QStringLiteral("json")})
                .toUtf8())
            .object();
    const QJsonArray items = json.value(QStringLiteral("items")).toArray();
    ASSERT_EQ(table().rowCount(), items.size());
    ASSERT_EQ(csv.size(), items.size() + 1);
    for (int row = 0; row < table().rowCount(); ++row) {
        SCOPED_TRACE(row);
        const QJsonObject item = items.at(row).toObject();
        EXPECT_EQ(text(table(), row, section(TarnColumn::Path)),
                  item.value(QStringLiteral("path")).toString());
        EXPECT_EQ(text(table(), row, section(TarnColumn::Hash)),
                  item.value(QStringLiteral("hash")).toString());
        // Every exported cell as the table shows it; an empty export is a
        // cell without text (the placeholder) or an empty one. The hash is
        // for the screen only.
        const QStringList cells = csvFields(csv.at(row + 1));
        ASSERT_EQ(cells.size(), table().columnCount());
        for (int column = 0; column < table().columnCount(); ++column) {
            if (column == section(TarnColumn::Hash)) continue;
            const QString shown = text(table(), row, column);
            if (cells.at(column).isEmpty()) {
                EXPECT_TRUE(shown.isEmpty() || shown == TarnCore::novalue()) << column;
            } else {
                EXPECT_EQ(shown, cells.at(column)) << column;
            }
        }
        // Texts the core leaves out show the placeholder.
        const std::pair<const char*, TarnColumn> nullable[] = {
            {"clip_name", TarnColumn::Clipname},
            {"frame_rate_text", TarnColumn::Framerate},
            {"sample_rate_text", TarnColumn::Samplerate}};
        for (const auto& [field, column] : nullable) {
            if (item.value(QLatin1String(field)).isNull()) {
                EXPECT_EQ(text(table(), row, section(column)), TarnCore::novalue()) << field;
            }
        }
    }

    const QJsonObject summary = json.value(QStringLiteral("summary")).toObject();
    const SummaryTableModel& shown = *app_->summaryModel();
    EXPECT_EQ(shown.text(QStringLiteral("Items In Database")),
              QString::number(summary.value(QStringLiteral("items_in_database")).toInt()));
    EXPECT_EQ(shown.text(QStringLiteral("Projects count")),
              QString::number(summary.value(QStringLiteral("projects_count")).toInt()));
    EXPECT_EQ(shown.text(QStringLiteral("Filtered Items")),
              QString::number(summary.value(QStringLiteral("filtered_items")).toInt()));
    EXPECT_EQ(
        shown.text(QStringLiteral("Filtered Size")),
        TarnFileSize::toHumanBytes(summary.value(QStringLiteral("filtered_size")).toDouble()));
    EXPECT_EQ(shown.text(QStringLiteral("Selected Items")), QStringLiteral("0"));

    // The end of an all-volumes scan: its time, and the projects summary.
    EXPECT_TRUE(window().statusStrip()->text().startsWith(QLatin1String("Execution Time: ")));
    EXPECT_TRUE(app_->projectsSummarySheet()->isVisible());
    EXPECT_EQ(app_->projectSummaryModel()->rowCount(),
              json.value(QStringLiteral("projects")).toArray().size());
}

TEST_F(AppTest, CancelledVolumeSelectorScansNothing) {
    app_->scans()->setVolumeLister([] { return QStringList{QStringLiteral("/")}; });
    app_->scans()->beginAllScan();
    ASSERT_NE(app_->scans()->volumeSelector(), nullptr);
    EXPECT_TRUE(app_->guard()->busy());
    app_->scans()->volumeSelector()->pushCancel();
    apptest::waitUntil(
        [&] { return window().statusStrip()->text() == QLatin1String("Cancelled"); });
    EXPECT_FALSE(app_->guard()->busy());
    EXPECT_EQ(table().rowCount(), 0);
}
