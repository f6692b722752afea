#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QFileDialog>
#include <QImage>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

#include "DemoVolume.h"
#include "TestSupport.h"
#include "bins/BinCommands.h"
#include "bins/TarnDragDropView.h"
#include "database/TarnCore.h"
#include "database/TarnScanner.h"
#include "status/TarnStatusViewController.h"

using Op = TarnDragDropView::Operation;

namespace {

constexpr Qt::DropActions kAll = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;

// The demo volume scanned into a database, and a drop target over a table
// area wired to the bin commands as the main window wires them.
class BinDropTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(dir.path(), &error, &demo)) << qPrintable(error);
        ASSERT_TRUE(scanner.run(TarnScanner::Kind::SingleFolder, {dir.path()}));
        scanned = shownPaths();
        ASSERT_FALSE(scanned.isEmpty());
        area.resize(640, 400);
        area.show();
        view.setAvbOpDelegate(&commands);
    }

    QStringList shownPaths() const {
        QStringList paths;
        for (qsizetype row = 0; row < core.getItemsCount(); ++row) {
            paths.append(core.ObjectAtIndexFiltered(row)->DB_itemPath);
        }
        return paths;
    }
    // The scanned rows, in their order, that `keep` says yes to.
    template <typename Keep>
    QStringList scannedWhere(Keep keep) const {
        QStringList paths;
        for (const QString& path : scanned) {
            if (keep(path)) paths.append(path);
        }
        return paths;
    }

    static QMimeData* filesData(const QStringList& paths) {
        auto* data = new QMimeData;
        QList<QUrl> urls;
        for (const QString& path : paths) urls.append(QUrl::fromLocalFile(path));
        data->setUrls(urls);
        return data;
    }
    // A drag that enters the area and is dropped on it, as the platform
    // delivers it; the operation runs once the drop has been answered.
    bool drop(QMimeData* data, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
              Qt::DropActions offered = kAll) {
        const QPoint at(100, 100);
        QDragEnterEvent enter(at, offered, data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(&area, &enter);
        highlightedDuringDrag = view.isHighlighted();
        maskDuringDrag = view.currentDragMask();
        QDropEvent dropped(at, offered, data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(&area, &dropped);
        QCoreApplication::sendPostedEvents();
        delete data;
        return dropped.isAccepted();
    }

    QTemporaryDir dir;
    fixtures::DemoVolumeDescription demo;
    TarnCore core;
    TarnScanner scanner{&core};
    TarnStatusViewController* status = TarnStatusViewController::getTheController();
    BinCommands commands{&core, status};
    QWidget area;
    TarnDragDropView view{&area};
    QStringList scanned;
    bool highlightedDuringDrag = false;
    quint32 maskDuringDrag = 0;
};

}  // namespace

TEST(BinDropMask, OperationFollowsTheMaskBits) {
    const struct {
        quint32 mask;
        Op operation;
        const char* label;
    } cases[] = {
        {7, Op::Intersect, "Intersect"},
        {3, Op::Intersect, "Intersect"},
        {1, Op::Intersect, "Intersect"},
        {6, Op::Add, "Add"},
        {4, Op::Add, "Add"},
        {2, Op::Subtract, "Subtract"},
        {0, Op::None, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mask);
        EXPECT_EQ(TarnDragDropView::operationForMask(c.mask), c.operation);
        EXPECT_EQ(TarnDragDropView::label(c.operation), QString::fromLatin1(c.label));
    }
}

TEST(BinDropMask, ModifierKeysNarrowTheOffer) {
    const struct {
        Qt::DropActions offered;
        Qt::KeyboardModifiers modifiers;
        Op operation;
    } cases[] = {
        {kAll, Qt::NoModifier, Op::Intersect},
        {Qt::CopyAction, Qt::NoModifier, Op::Intersect},
        {Qt::LinkAction, Qt::NoModifier, Op::Subtract},
#ifdef Q_OS_MACOS
        {kAll, Qt::AltModifier, Op::Intersect},
        {kAll, Qt::ControlModifier, Op::Add},
        {kAll, Qt::ControlModifier | Qt::AltModifier, Op::Subtract},
        {Qt::CopyAction | Qt::LinkAction, Qt::ControlModifier, Op::None},
#else
        {kAll, Qt::ControlModifier, Op::Intersect},
        {kAll, Qt::ShiftModifier, Op::Add},
        {kAll, Qt::ControlModifier | Qt::ShiftModifier, Op::Subtract},
        {Qt::CopyAction | Qt::LinkAction, Qt::ShiftModifier, Op::None},
#endif
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(int(c.modifiers));
        EXPECT_EQ(
            TarnDragDropView::operationForMask(TarnDragDropView::dragMask(c.offered, c.modifiers)),
            c.operation);
    }
}

TEST(BinDropCheck, OnlyFilesEndingInAvbPass) {
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("Folder.avb"));
    QDir().mkpath(folder);
    const struct {
        QStringList names;
        bool accepted;
    } cases[] = {
        {{"Selects.avb"}, true},  {{"BIN.AVB"}, true}, {{"a.avb", "b.Avb"}, true},
        {{"bin.avb.txt"}, false}, {{"bin"}, false},    {{"a.avb", "clip.mxf"}, false},
        {{"Folder.avb"}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(qPrintable(c.names.join(QLatin1Char(','))));
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& name : c.names) urls.append(QUrl::fromLocalFile(dir.filePath(name)));
        data.setUrls(urls);
        EXPECT_EQ(TarnDragDropView::checkDraginfo(&data), c.accepted);
    }
    QMimeData text;
    text.setText(QStringLiteral("not files"));
    EXPECT_TRUE(TarnDragDropView::checkDraginfo(&text));
}

TEST_F(BinDropTest, DroppedBinIntersectsTheDatabase) {
    QSignalSpy intersect(&view, &TarnDragDropView::intersectRequested);
    QSignalSpy reload(&commands, &BinCommands::AllTablesReload);
    testsupport::LogCapture log;
    const fixtures::DemoBin& bin = demo.bins.at(0);

    EXPECT_TRUE(drop(filesData({bin.path})));
    EXPECT_TRUE(highlightedDuringDrag);
    EXPECT_EQ(maskDuringDrag, 7u);
    EXPECT_FALSE(view.isHighlighted());
    EXPECT_EQ(view.currentDragMask(), 0u);
    ASSERT_EQ(intersect.size(), 1);
    EXPECT_EQ(intersect.at(0).at(0).toStringList(), QStringList({bin.path}));
    EXPECT_EQ(reload.size(), 1);

    const QStringList expected =
        scannedWhere([&](const QString& p) { return bin.referencedPaths.contains(p); });
    ASSERT_FALSE(expected.isEmpty());
    EXPECT_EQ(shownPaths(), expected);
    EXPECT_TRUE(log.contains(QStringLiteral("Tarn:: Accepted 1 bins")));
    EXPECT_TRUE(log.contains(QStringLiteral("Execution Time: ")));
}

TEST_F(BinDropTest, ModifiersSubtractAndAddBack) {
#ifdef Q_OS_MACOS
    const Qt::KeyboardModifiers subtract = Qt::ControlModifier | Qt::AltModifier;
    const Qt::KeyboardModifiers add = Qt::ControlModifier;
#else
    const Qt::KeyboardModifiers subtract = Qt::ControlModifier | Qt::ShiftModifier;
    const Qt::KeyboardModifiers add = Qt::ShiftModifier;
#endif
    const fixtures::DemoBin& bin = demo.bins.at(1);
    drop(filesData({bin.path}), subtract);
    EXPECT_EQ(maskDuringDrag, quint32(TarnDragDropView::kLink));
    EXPECT_EQ(shownPaths(),
              scannedWhere([&](const QString& p) { return !bin.referencedPaths.contains(p); }));
    drop(filesData({bin.path}), add);
    EXPECT_EQ(shownPaths().size(), scanned.size());
}

TEST_F(BinDropTest, FoldersAndOtherFilesAreRefused) {
    QSignalSpy refused(&view, &TarnDragDropView::dropRefused);
    QSignalSpy intersect(&view, &TarnDragDropView::intersectRequested);
    const QString folder = dir.filePath(QStringLiteral("Old Bins.avb"));
    QDir().mkpath(folder);
    const QString clip = demo.media.at(0).path;

    const QStringList refusedDrops[] = {{folder}, {clip}, {demo.bins.at(0).path, clip}};
    for (const QStringList& paths : refusedDrops) {
        SCOPED_TRACE(qPrintable(paths.join(QLatin1Char(','))));
        EXPECT_FALSE(drop(filesData(paths)));
        EXPECT_FALSE(highlightedDuringDrag);
        EXPECT_FALSE(view.isHighlighted());
    }
    EXPECT_EQ(refused.size(), 3);
    EXPECT_EQ(intersect.size(), 0);
    EXPECT_EQ(shownPaths(), scanned);
}

TEST_F(BinDropTest, DragWithoutFilesRunsTheOperationOnNoBins) {
    QSignalSpy intersect(&view, &TarnDragDropView::intersectRequested);
    auto* text = new QMimeData;
    text->setText(QStringLiteral("hello"));
    EXPECT_TRUE(drop(text));
    ASSERT_EQ(intersect.size(), 1);
    EXPECT_TRUE(intersect.at(0).at(0).toStringList().isEmpty());
    EXPECT_EQ(shownPaths(), scanned);
}

// Bins are never moved by a drop: the answer is a copy, or a link where
// the source offers no copy; a source that only offers to move is turned away.
TEST_F(BinDropTest, DropNeverMovesTheBin) {
    const QString bin = demo.bins.at(0).path;
    const struct {
        Qt::DropActions offered;
        bool accepted;
        Qt::DropAction answer;
    } cases[] = {
        {kAll, true, Qt::CopyAction},
        {Qt::MoveAction | Qt::LinkAction, true, Qt::LinkAction},
        {Qt::MoveAction, false, Qt::IgnoreAction},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(int(c.offered));
        QMimeData* data = filesData({bin});
        QDragEnterEvent enter(QPoint(5, 5), c.offered, data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&area, &enter);
        EXPECT_EQ(enter.isAccepted(), c.accepted);
        if (c.accepted) {
            EXPECT_EQ(enter.dropAction(), c.answer);
        }
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(&area, &leave);
        delete data;
    }
}

// At rest the target draws nothing and lets the mouse through; while a bin
// hovers it veils the area.
TEST_F(BinDropTest, InvisibleAtRestVeiledWhileABinHovers) {
    area.setAutoFillBackground(true);
    area.setPalette(QPalette(Qt::white));
    EXPECT_TRUE(view.testAttribute(Qt::WA_TransparentForMouseEvents));
    EXPECT_EQ(view.geometry(), area.rect());
    const QPoint centre(320, 300);
    EXPECT_EQ(area.grab().toImage().pixelColor(centre), QColor(Qt::white));

    QMimeData* data = filesData({demo.bins.at(0).path});
    QDragEnterEvent enter(QPoint(5, 5), kAll, data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&area, &enter);
    const QColor veiled = area.grab().toImage().pixelColor(centre);
    EXPECT_LT(veiled.lightness(), 80);
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&area, &leave);
    EXPECT_EQ(area.grab().toImage().pixelColor(centre), QColor(Qt::white));
    delete data;

    area.resize(800, 500);
    EXPECT_EQ(view.geometry(), area.rect());
}

TEST_F(BinDropTest, OpenPanelTagChoosesTheOperation) {
    const QString bin = demo.bins.at(0).path;
    const QStringList inBin =
        scannedWhere([&](const QString& p) { return demo.bins.at(0).referencedPaths.contains(p); });
    const struct {
        int tag;
        QStringList shown;
    } cases[] = {
        {0, scanned},
        {4, scanned},
        {2, scannedWhere([&](const QString& p) { return !inBin.contains(p); })},
        {3, scanned},
        {1, inBin},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tag);
        commands.OpenAVB(c.tag);
        auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(panel, nullptr);
        EXPECT_EQ(panel->fileMode(), QFileDialog::ExistingFiles);
        panel->selectFile(bin);
        static_cast<QDialog*>(panel)->accept();  // as the panel's own button does
        EXPECT_EQ(shownPaths(), c.shown);
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
