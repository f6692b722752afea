#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

#include "AppTestKit.h"
#include "items/TarnFileSize.h"
#include "models/SummaryTableModel.h"
#include "sheets/ProjectsSummarySheet.h"
#include "sheets/VolumeSelectorSheet.h"
#include "status/StatusStrip.h"

using namespace apptest;

namespace {

// The fields of one line of `tarn scan --format csv`: each quoted, with ""
// for a quote, and followed by ";".
QStringList csvFields(const QString& line) {
    static const QRegularExpression field("\"((?:[^\"]|\"\")*)\";");
    QStringList fields;
    for (auto it = field.globalMatch(line); it.hasNext();)
        fields << it.next().captured(1).replace("\"\"", "\"");
    return fields;
}

}  // namespace

// The demo volume scanned through the window's own command shows what
// `tarn scan` shows of it: the same rows in the same order, the same cell
// texts and the same summary.
TEST_F(AppTest, ScanAllVolumesShowsWhatTheCommandLineShows) {
    const QString root = demoRoot();
    app_->scans()->setVolumeLister([root] { return QStringList{root}; });
    scanWith([this, &root] {
        QTest::mouseClick(window().bigRedButton(), Qt::LeftButton);
        VolumeSelectorSheet* selector = app_->scans()->volumeSelector();
        ASSERT_NE(selector, nullptr);
        EXPECT_EQ(selector->createResultingArray(), QStringList{root});
        QTest::mouseClick(selector->findChild<QPushButton*>("pushGo"), Qt::LeftButton);
    });

    const QStringList csv =
        tarnScan({"--volume", root, "--format", "csv"}).split('\n', Qt::SkipEmptyParts);
    const QJsonObject json =
        QJsonDocument::fromJson(tarnScan({"--volume", root, "--format", "json"}).toUtf8()).object();
    const QJsonArray items = json.value("items").toArray();
    ASSERT_EQ(table().rowCount(), items.size());
    ASSERT_EQ(csv.size(), items.size() + 1);
    for (int row = 0; row < table().rowCount(); ++row) {
        SCOPED_TRACE(row);
        const QJsonObject item = items.at(row).toObject();
        EXPECT_EQ(text(table(), row, section(TarnColumn::Path)), item.value("path").toString());
        EXPECT_EQ(text(table(), row, section(TarnColumn::Hash)), item.value("hash").toString());
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

    const QJsonObject summary = json.value("summary").toObject();
    const SummaryTableModel& shown = *app_->summaryModel();
    for (const auto& [line, field] : {std::pair{"Items In Database", "items_in_database"},
                                      {"Projects count", "projects_count"},
                                      {"Filtered Items", "filtered_items"}})
        EXPECT_EQ(shown.text(line), QString::number(summary.value(field).toInt())) << line;
    EXPECT_EQ(shown.text("Filtered Size"),
              TarnFileSize::toHumanBytes(summary.value("filtered_size").toDouble()));
    EXPECT_EQ(shown.text("Selected Items"), "0");

    // The end of an all-volumes scan: its time, and the projects summary.
    EXPECT_TRUE(window().statusStrip()->text().startsWith("Execution Time: "));
    EXPECT_TRUE(app_->projectsSummarySheet()->isVisible());
    EXPECT_EQ(app_->projectSummaryModel()->rowCount(), json.value("projects").toArray().size());
}

TEST_F(AppTest, CancelledVolumeSelectorScansNothing) {
    app_->scans()->setVolumeLister([] { return QStringList{"/"}; });
    app_->scans()->beginAllScan();
    ASSERT_NE(app_->scans()->volumeSelector(), nullptr);
    EXPECT_TRUE(app_->guard()->busy());
    app_->scans()->volumeSelector()->pushCancel();
    waitUntil([&] { return window().statusStrip()->text() == "Cancelled"; });
    EXPECT_FALSE(app_->guard()->busy());
    EXPECT_EQ(table().rowCount(), 0);
}
