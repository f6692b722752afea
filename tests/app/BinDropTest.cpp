#include "AppTestKit.h"
#include "bins/BinCommands.h"
#include "bins/TarnDragDropView.h"
#include "window/AppComponents.h"

using namespace apptest;
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

// The demo volume scanned into the window, whose table area takes dropped
// bins.
class BinDropTest : public AppTest {
  protected:
    void SetUp() override {
        AppTest::SetUp();
        scanDemo();
        scanned = shown();
        area()->resize(640, 400);
    }
    QWidget* area() { return window().databaseArea(); }
    BinCommands& commands() { return *app_->components()->bins(); }
    QStringList shown() const { return columnTexts(*app_, TarnColumn::Path); }
    // The scanned rows, in their order, that are (or are not) in bin `index`.
    QStringList scannedInBin(int index, bool in = true) const {
        QStringList paths;
        for (const QString& path : scanned)
            if (demo().bins.at(index).referencedPaths.contains(path) == in) paths.append(path);
        return paths;
    }
    bool veiled() {  // dark on the whole
        const QImage whole =
            area()->grab().toImage().scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        return whole.pixelColor(0, 0).lightness() < 110;
    }
    // Files dragged onto the area and dropped, as the platform delivers it;
    // the operation runs once the drop has been answered.
    bool drop(const QStringList& paths, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        QList<QUrl> urls;
        for (const QString& path : paths) urls << QUrl::fromLocalFile(path);
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(100, 100), kAll, &data, Qt::LeftButton, keys);
        QCoreApplication::sendEvent(area(), &enter);
        veiledDuringDrag = veiled();
        QDropEvent dropped(QPoint(100, 100), kAll, &data, Qt::LeftButton, keys);
        QCoreApplication::sendEvent(area(), &dropped);
        QCoreApplication::sendPostedEvents();
        return dropped.isAccepted();
    }

    QStringList scanned;
    bool veiledDuringDrag = false;
};

}  // namespace

// Copy intersects, else generic adds, else link subtracts; the keys narrow
// what the source offers.
TEST(BinDropMask, OperationFromTheOfferAndTheKeys) {
    const std::tuple<Qt::DropActions, Qt::KeyboardModifiers, Op> cases[] = {
        {kAll, Qt::NoModifier, Op::Intersect},
        {Qt::MoveAction | Qt::LinkAction, Qt::NoModifier, Op::Add},        // mask 6
        {Qt::CopyAction | Qt::LinkAction, Qt::NoModifier, Op::Intersect},  // mask 3
        {Qt::LinkAction, Qt::NoModifier, Op::Subtract},
        {kAll, kAddKeys, Op::Add},
        {kAll, kSubtractKeys, Op::Subtract},
        {Qt::CopyAction | Qt::LinkAction, kAddKeys, Op::None},
    };
    for (const auto& [offered, keys, operation] : cases) {
        EXPECT_EQ(TarnDragDropView::operationForMask(TarnDragDropView::dragMask(offered, keys)),
                  operation)
            << int(offered) << " " << int(keys >> 24);
    }
}

// The veil lets the mouse through to the table, covers the whole area, and
// shows only while a bin hovers.
TEST_F(BinDropTest, DroppedBinIntersectsTheTable) {
    auto* view = area()->findChild<TarnDragDropView*>();
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(view->testAttribute(Qt::WA_TransparentForMouseEvents));
    EXPECT_EQ(view->geometry(), area()->rect());
    testsupport::LogCapture log;
    EXPECT_FALSE(veiled());
    EXPECT_TRUE(drop({demo().bins.at(0).path}));
    EXPECT_TRUE(veiledDuringDrag);
    EXPECT_FALSE(veiled());
    ASSERT_FALSE(scannedInBin(0).isEmpty());
    EXPECT_EQ(shown(), scannedInBin(0));
    EXPECT_EQ(summary("Filtered Items"), QString::number(table().rowCount()));
    EXPECT_TRUE(log.contains("Tarn:: Accepted 1 bins"));
}

TEST_F(BinDropTest, KeysSubtractAndAddBack) {
    drop({demo().bins.at(1).path}, kSubtractKeys);
    EXPECT_EQ(shown(), scannedInBin(1, false));
    drop({demo().bins.at(1).path}, kAddKeys);
    EXPECT_EQ(shown(), scanned);
}

// Only files ending in ".avb", in any case, are taken; the rest beep.
TEST_F(BinDropTest, OnlyFilesEndingInAvbAreTaken) {
    QTemporaryDir dir;
    const QString bin = demo().bins.at(0).path, clip = demo().media.at(0).path;
    const QString upper = dir.filePath("SELECTS.AVB"), misnamed = dir.filePath("Selects.avb.txt");
    QFile::copy(bin, upper);
    QFile::copy(bin, misnamed);
    QDir().mkpath(dir.filePath("Old Bins.avb"));
    QSignalSpy refused(area()->findChild<TarnDragDropView*>(), &TarnDragDropView::dropRefused);
    const QStringList refusedDrops[] = {
        {dir.filePath("Old Bins.avb")}, {clip}, {misnamed}, {bin, clip}};
    for (const QStringList& paths : refusedDrops) {
        EXPECT_FALSE(drop(paths)) << qPrintable(paths.join(' '));
        EXPECT_FALSE(veiledDuringDrag);
    }
    EXPECT_EQ(refused.size(), 4);
    EXPECT_EQ(shown(), scanned);
    EXPECT_TRUE(drop({upper}));
    EXPECT_EQ(shown(), scannedInBin(0));
}

// A drop is answered as a copy (or a link), never as a move that would let
// the file manager remove the bin.
TEST_F(BinDropTest, DropNeverMovesTheBin) {
    const std::pair<Qt::DropActions, Qt::DropAction> cases[] = {
        {kAll, Qt::CopyAction},
        {Qt::MoveAction | Qt::LinkAction, Qt::LinkAction},
        {Qt::MoveAction, Qt::IgnoreAction}};
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(demo().bins.at(0).path)});
    for (const auto& [offered, answer] : cases) {
        QDragEnterEvent enter(QPoint(5, 5), offered, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(area(), &enter);
        EXPECT_EQ(enter.isAccepted() ? enter.dropAction() : Qt::IgnoreAction, answer);
    }
}

// Tag 1 intersects (starting again from the whole filtered database), 2
// subtracts, 3 adds; others do nothing.
TEST_F(BinDropTest, OpenPanelTagChoosesTheOperation) {
    const std::pair<int, QStringList> cases[] = {
        {0, scanned}, {2, scannedInBin(0, false)}, {3, scanned}, {1, scannedInBin(0)}};
    for (const auto& [tag, shownAfter] : cases) {
        commands().OpenAVB(tag);
        auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(panel, nullptr);
        panel->selectFile(demo().bins.at(0).path);
        static_cast<QDialog*>(panel)->accept();  // as the panel's own button does
        EXPECT_EQ(shown(), shownAfter) << tag;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

// While a scan runs the database is the scan's: bin commands leave it alone.
TEST_F(BinDropTest, BusyScanLeavesTheDatabaseAlone) {
    TarnStatusViewController* status = TarnStatusViewController::getTheController();
    ASSERT_TRUE(status->tryStartRunning());
    commands().DoAVBIntersect({demo().bins.at(0).path});
    status->setIsRunning(false);
    EXPECT_EQ(shown(), scanned);
}
