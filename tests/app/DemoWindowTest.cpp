#include "AppTestKit.h"
#include "items/TarnFileSize.h"
#include "models/VolumeListModel.h"
#include "sheets/ProjectsSummarySheet.h"
#include "sheets/VolumeSelectorSheet.h"

using namespace apptest;

// The demo volume scanned through the window's own command shows what
// `tarn scan` shows of it: the same rows in the same order, the same cell
// texts and the same summary.
TEST_F(AppTest, ScanAllVolumesShowsWhatTheCommandLineShows) {
    const QString root = demoRoot();
    app_->scans()->setVolumeLister([root] { return QStringList{root}; });
    // A cancelled volume selector scans nothing.
    app_->scans()->beginAllScan();
    ASSERT_NE(app_->scans()->volumeSelector(), nullptr);
    EXPECT_TRUE(app_->guard()->busy());
    app_->scans()->volumeSelector()->pushCancel();
    waitUntil([&] { return window().statusStrip()->text() == "Cancelled"; });
    EXPECT_FALSE(app_->guard()->busy());
    EXPECT_EQ(table().rowCount(), 0);

    scanWith([this, &root] {
        QTest::mouseClick(window().bigRedButton(), Qt::LeftButton);
        VolumeSelectorSheet* selector = app_->scans()->volumeSelector();
        ASSERT_NE(selector, nullptr);
        EXPECT_EQ(selector->createResultingArray(), QStringList{root});
        QTest::mouseClick(selector->findChild<QPushButton*>("pushGo"), Qt::LeftButton);
    });

    const QJsonObject json =
        QJsonDocument::fromJson(tarnScan({"--volume", root, "--format", "json"}).toUtf8()).object();
    const QJsonArray items = json.value("items").toArray();
    // Each line of the CSV export: every field quoted ("" for a quote), then ";".
    const QStringList csv =
        tarnScan({"--volume", root, "--format", "csv"}).split('\n', Qt::SkipEmptyParts);
    static const QRegularExpression field("\"((?:[^\"]|\"\")*)\";");
    ASSERT_EQ(table().rowCount(), items.size());
    ASSERT_EQ(csv.size(), items.size() + 1);
    for (int row = 0; row < table().rowCount(); ++row) {
        SCOPED_TRACE(row);
        EXPECT_EQ(text(table(), row, section(TarnColumn::Hash)),
                  items.at(row).toObject().value("hash").toString());
        // Every exported cell as the table shows it; an empty export is a
        // cell without text (the placeholder) or an empty one. The hash is
        // for the screen only, the icon column has only its image.
        auto cells = field.globalMatch(csv.at(row + 1));
        for (int column = 0; column < table().columnCount(); ++column) {
            ASSERT_TRUE(cells.hasNext());
            const QString exported = cells.next().captured(1).replace("\"\"", "\"");
            const QString shown = text(table(), row, column);
            if (column == section(TarnColumn::Hash)) continue;
            if (exported.isEmpty())
                EXPECT_TRUE(shown.isEmpty() || shown == TarnCore::novalue()) << column;
            else
                EXPECT_EQ(shown, exported) << column;
        }
        EXPECT_FALSE(cells.hasNext());
        EXPECT_FALSE(
            table().index(row, section(TarnColumn::Icon)).data(Qt::DecorationRole).isNull());
        EXPECT_EQ(text(table(), row, section(TarnColumn::SourceTapeID)), TarnCore::novalue());
    }

    const QJsonObject totals = json.value("summary").toObject();
    for (const auto& [line, key] : {std::pair{"Items In Database", "items_in_database"},
                                    {"Projects count", "projects_count"},
                                    {"Filtered Items", "filtered_items"}})
        EXPECT_EQ(summary(line), QString::number(totals.value(key).toInt())) << line;
    EXPECT_EQ(summary("Filtered Size"),
              TarnFileSize::toHumanBytes(totals.value("filtered_size").toDouble()));
    // The end of an all-volumes scan: its time, and the projects summary.
    EXPECT_TRUE(window().statusStrip()->text().startsWith("Execution Time: "));
    EXPECT_TRUE(app_->projectsSummarySheet()->isVisible());
    EXPECT_EQ(app_->projectSummaryModel()->rowCount(), json.value("projects").toArray().size());
}

TEST(VolumeListModel, ChecksEveryVolumeAndHandsBackTheTickedOnes) {
    VolumeListModel model({"/", "/Volumes/Media", "/Volumes/Backup"});
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(model.data(model.index(1, 1)).toString(), "/Volumes/Media");
    model.setData(model.index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
    EXPECT_EQ(model.selector().createResultingArray(),
              (QStringList{"/Volumes/Media", "/Volumes/Backup"}));
    EXPECT_EQ(model.delectDeselectAll(false), "Select all");
    EXPECT_TRUE(model.selector().createResultingArray().isEmpty());
    EXPECT_EQ(model.delectDeselectAll(true), "Deselect all");
    EXPECT_EQ(model.selector().createResultingArray().size(), 3);
}
