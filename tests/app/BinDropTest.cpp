#include "AppTestKit.h"
#include "bins/BinCommands.h"
#include "bins/TarnDragDropView.h"
#include "database/TarnScanner.h"

using Op = TarnDragDropView::Operation;

namespace {

constexpr Qt::DropActions kAll = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
#ifdef Q_OS_MACOS
constexpr Qt::KeyboardModifiers kAddKeys = Qt::ControlModifier;  // Command
constexpr Qt::KeyboardModifiers kSubtractKeys = Qt::ControlModifier | Qt::AltModifier;
#else
constexpr Qt::KeyboardModifiers kAddKeys = Qt::ShiftModifier;
constexpr Qt::KeyboardModifiers kSubtractKeys = Qt::ControlModifier | Qt::ShiftModifier;
#endif

QMimeData* filesData(const QStringList& paths) {
    auto* data = new QMimeData;
    QList<QUrl> urls;
    for (const QString& path : paths) urls.append(QUrl::fromLocalFile(path));
    data->setUrls(urls);
    return data;
}

// A drag that enters `area` and is dropped, as the platform delivers it; the
// operation runs once the drop has been answered. Takes `data`.
bool dropOn(QWidget* area, QMimeData* data, Qt::KeyboardModifiers keys = Qt::NoModifier,
            const TarnDragDropView* view = nullptr, bool* highlighted = nullptr) {
    std::unique_ptr<QMimeData> owned(data);
    QDragEnterEvent enter(QPoint(100, 100), kAll, data, Qt::LeftButton, keys);
    QCoreApplication::sendEvent(area, &enter);
    if (view) *highlighted = view->isHighlighted();
    QDropEvent dropped(QPoint(100, 100), kAll, data, Qt::LeftButton, keys);
    QCoreApplication::sendEvent(area, &dropped);
    QCoreApplication::sendPostedEvents();
    return dropped.isAccepted();
}

// The demo volume scanned into a database, and a drop target over a table
// area wired to the bin commands as the main window wires them.
class BinDropTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(dir.path(), &error, &demo)) << qPrintable(error);
        ASSERT_TRUE(TarnScanner(&core).run(TarnScanner::Kind::SingleFolder, {dir.path()}));
        scanned = shownPaths();
        area.resize(640, 400);
        area.show();
        view.setAvbOpDelegate(&commands);
    }
    QStringList shownPaths() const {
        QStringList paths;
        for (qsizetype row = 0; row < core.getItemsCount(); ++row)
            paths.append(core.ObjectAtIndexFiltered(row)->DB_itemPath);
        return paths;
    }
    // The scanned rows, in their order, that are (or are not) in bin `index`.
    QStringList scannedInBin(int index, bool in = true) const {
        QStringList paths;
        for (const QString& path : scanned)
            if (demo.bins.at(index).referencedPaths.contains(path) == in) paths.append(path);
        return paths;
    }
    bool drop(QMimeData* data, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        return dropOn(&area, data, keys, &view, &highlightedDuringDrag);
    }

    QTemporaryDir dir;
    fixtures::DemoVolumeDescription demo;
    TarnCore core;
    TarnStatusViewController* status = TarnStatusViewController::getTheController();
    BinCommands commands{&core, status};
    QWidget area;
    TarnDragDropView view{&area};
    QStringList scanned;
    bool highlightedDuringDrag = false;
};

}  // namespace

// Copy intersects, else generic adds, else link subtracts; the keys narrow
// what the source offers.
TEST(BinDropMask, OperationFromTheOfferAndTheKeys) {
    const struct {
        Qt::DropActions offered;
        Qt::KeyboardModifiers keys;
        Op operation;
    } cases[] = {
        {kAll, Qt::NoModifier, Op::Intersect},
        {Qt::MoveAction | Qt::LinkAction, Qt::NoModifier, Op::Add},        // mask 6
        {Qt::CopyAction | Qt::LinkAction, Qt::NoModifier, Op::Intersect},  // mask 3
        {Qt::LinkAction, Qt::NoModifier, Op::Subtract},
        {kAll, kAddKeys, Op::Add},
        {kAll, kSubtractKeys, Op::Subtract},
        {Qt::CopyAction | Qt::LinkAction, kAddKeys, Op::None},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(int(c.offered) * 1000 + int(c.keys >> 24));
        EXPECT_EQ(TarnDragDropView::operationForMask(TarnDragDropView::dragMask(c.offered, c.keys)),
                  c.operation);
    }
}

TEST_F(BinDropTest, DroppedBinIntersectsTheDatabase) {
    QSignalSpy intersect(&view, &TarnDragDropView::intersectRequested);
    QSignalSpy reload(&commands, &BinCommands::AllTablesReload);
    testsupport::LogCapture log;
    EXPECT_TRUE(drop(filesData({demo.bins.at(0).path})));
    EXPECT_TRUE(highlightedDuringDrag);
    EXPECT_FALSE(view.isHighlighted());
    EXPECT_EQ(reload.size(), 1);
    ASSERT_FALSE(scannedInBin(0).isEmpty());
    EXPECT_EQ(shownPaths(), scannedInBin(0));
    EXPECT_TRUE(log.contains("Tarn:: Accepted 1 bins"));

    // A drag without files is taken too, and runs on no bins: nothing changes.
    auto* text = new QMimeData;
    text->setText("hello");
    EXPECT_TRUE(drop(text));
    ASSERT_EQ(intersect.size(), 2);
    EXPECT_TRUE(intersect.at(1).at(0).toStringList().isEmpty());
    EXPECT_EQ(shownPaths(), scannedInBin(0));
}

TEST_F(BinDropTest, KeysSubtractAndAddBack) {
    drop(filesData({demo.bins.at(1).path}), kSubtractKeys);
    EXPECT_EQ(shownPaths(), scannedInBin(1, false));
    drop(filesData({demo.bins.at(1).path}), kAddKeys);
    EXPECT_EQ(shownPaths(), scanned);
}

// Only files ending in ".avb", in any case, are taken; the rest beep.
TEST_F(BinDropTest, OnlyFilesEndingInAvbAreTaken) {
    const QString bin = demo.bins.at(0).path, clip = demo.media.at(0).path;
    const QString upper = dir.filePath("SELECTS.AVB"), misnamed = dir.filePath("Selects.avb.txt");
    QFile::copy(bin, upper);
    QFile::copy(bin, misnamed);
    QDir().mkpath(dir.filePath("Old Bins.avb"));
    QSignalSpy refused(&view, &TarnDragDropView::dropRefused);
    const QStringList refusedDrops[] = {
        {dir.filePath("Old Bins.avb")}, {clip}, {misnamed}, {bin, clip}};
    for (const QStringList& paths : refusedDrops) {
        EXPECT_FALSE(drop(filesData(paths))) << qPrintable(paths.join(' '));
        EXPECT_FALSE(highlightedDuringDrag);
    }
    EXPECT_EQ(refused.size(), 4);
    EXPECT_EQ(shownPaths(), scanned);
    EXPECT_TRUE(drop(filesData({upper})));
    EXPECT_EQ(shownPaths(), scannedInBin(0));
}

// A drop is answered as a copy (or a link), never as a move that would let
// the file manager remove the bin.
TEST_F(BinDropTest, DropNeverMovesTheBin) {
    const struct {
        Qt::DropActions offered;
        Qt::DropAction answer;
    } cases[] = {{kAll, Qt::CopyAction},
                 {Qt::MoveAction | Qt::LinkAction, Qt::LinkAction},
                 {Qt::MoveAction, Qt::IgnoreAction}};
    std::unique_ptr<QMimeData> data(filesData({demo.bins.at(0).path}));
    for (const auto& c : cases) {
        QDragEnterEvent enter(QPoint(5, 5), c.offered, data.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&area, &enter);
        EXPECT_EQ(enter.isAccepted() ? enter.dropAction() : Qt::IgnoreAction, c.answer);
    }
}

TEST_F(BinDropTest, InvisibleAtRestVeiledWhileABinHovers) {
    area.setAutoFillBackground(true);
    area.setPalette(QPalette(Qt::white));
    EXPECT_TRUE(view.testAttribute(Qt::WA_TransparentForMouseEvents));
    const auto centre = [&] { return area.grab().toImage().pixelColor(320, 300); };
    EXPECT_EQ(centre(), QColor(Qt::white));
    std::unique_ptr<QMimeData> data(filesData({demo.bins.at(0).path}));
    QDragEnterEvent enter(QPoint(5, 5), kAll, data.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&area, &enter);
    EXPECT_LT(centre().lightness(), 80);
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&area, &leave);
    EXPECT_EQ(centre(), QColor(Qt::white));
    area.resize(800, 500);
    EXPECT_EQ(view.geometry(), area.rect());
}

// Tag 1 intersects (starting again from the whole filtered database), 2
// subtracts, 3 adds; others do nothing.
TEST_F(BinDropTest, OpenPanelTagChoosesTheOperation) {
    const struct {
        int tag;
        QStringList shown;
    } cases[] = {{0, scanned}, {2, scannedInBin(0, false)}, {3, scanned}, {1, scannedInBin(0)}};
    for (const auto& c : cases) {
        commands.OpenAVB(c.tag);
        auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(panel, nullptr);
        panel->selectFile(demo.bins.at(0).path);
        static_cast<QDialog*>(panel)->accept();  // as the panel's own button does
        EXPECT_EQ(shownPaths(), c.shown) << c.tag;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

// While a scan runs the database is the scan's: bin commands leave it alone.
TEST_F(BinDropTest, BusyScanLeavesTheDatabaseAlone) {
    QSignalSpy reload(&commands, &BinCommands::AllTablesReload);
    ASSERT_TRUE(status->tryStartRunning());
    commands.DoAVBIntersect({demo.bins.at(0).path});
    status->setIsRunning(false);
    EXPECT_EQ(reload.size(), 0);
    EXPECT_EQ(shownPaths(), scanned);
}

// The main window wires its table area the same way: a bin dropped on it
// narrows the table itself.
using apptest::AppTest;

TEST_F(AppTest, BinDroppedOnTheWindowNarrowsTheShownRows) {
    scanDemo();
    const int before = table().rowCount();
    QDirIterator bins(apptest::demoRoot(), {"*.avb"}, QDir::Files, QDirIterator::Subdirectories);
    ASSERT_TRUE(bins.hasNext());
    EXPECT_TRUE(dropOn(window().databaseArea(), filesData({bins.next()})));
    apptest::waitUntil([&] { return table().rowCount() != before; });
    EXPECT_GT(table().rowCount(), 0);
    EXPECT_EQ(summary("Filtered Items"), QString::number(table().rowCount()));
}
