// The desktop window over 100,000 items: opening it and showing the first
// screen, scrolling from top to bottom, a header-click sort and a search
// keystroke, each timed until the table has painted (offscreen), against a
// target of 100 ms; and the window's resident memory per item over what the
// database itself takes.
//
//   bench_app [ITEMS]      ITEMS: how many items (100,000 by default)
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "database/TarnCore.h"
#include "models/DatabaseTableModel.h"
#include "window/AppDelegate.h"
#include "window/CoreAccess.h"
#include "window/DatabaseTableView.h"
#include "window/MainWindow.h"

namespace {

constexpr double kTargetMs = 100;

long residentKiB() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:")) return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return 0;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

void report(const char* what, double ms) {
    std::printf("  %-44s %8.1f ms   (target < %.0f ms)%s\n", what, ms, kTargetMs,
                ms < kTargetMs ? "" : "  OVER");
}

// Media files as a scan of a large shared volume finds them: 200 folders,
// 25 projects, video and audio.
QList<TarnItemPtr> makeItems(int count) {
    QList<TarnItemPtr> items;
    items.reserve(count);
    const QDateTime base(QDate(2024, 3, 1), QTime(9, 0));
    for (int i = 0; i < count; ++i) {
        auto item = std::make_shared<TarnDatabaseItem>();
        const quint64 uid = 0x1000000ull + quint64(i) * 7919;
        std::memcpy(item->filePackageUID + 16, &uid, 8);
        std::memcpy(item->materialPackageUID + 16, &uid, 8);
        item->DB_SizeofUID = 8;
        const bool audio = i % 4 == 3;
        item->DB_ClipName =
            QString::asprintf("A%03d_C%03d_%05X%s.mxf", i / 500, i % 500,
                              unsigned(i * 2654435761u) & 0xFFFFF, audio ? "A1" : "V");
        item->DB_NameInBin = QString::asprintf("Scene %d take %d", i / 40, i % 40);
        item->DB_ProjectName = QString::asprintf("Project %02d", (i * 31) % 25);
        item->DB_itemPath = QString::asprintf("/Volumes/Media/Avid MediaFiles/MXF/%d/%s", i / 500,
                                              qPrintable(item->DB_ClipName));
        item->DB_FileExists = true;
        item->DB_isReferenced = true;
        item->DB_filesize = 1000000ull + quint64(i % 997) * 4096;
        item->DB_setDate(base.addSecs(i * 37));
        item->DB_bits = audio ? 24 : 8;
        item->setFrameRateNumerator(25, 1);
        if (audio) {
            std::memcpy(item->CompressionFourCC, "_AUD", 4);
            item->setSampleRateNumerator(48000, 1);
            item->DB_CompressionString = QStringLiteral("Audio");
        } else {
            item->DB_DIDResolutionID = 1237;
            item->DB_CompressionString = QStringLiteral("DNxHD 1080p 120");
        }
        items.append(item);
    }
    return items;
}

void paint(DatabaseTableView* table) {
    table->viewport()->repaint();
    QCoreApplication::processEvents();
}

template <typename Action>
double timeToScreen(DatabaseTableView* table, Action action) {
    QElapsedTimer timer;
    timer.start();
    action();
    paint(table);
    return double(timer.nsecsElapsed()) / 1e6;
}

void clickHeader(DatabaseTableView* table, TarnColumn column) {
    QHeaderView* header = table->horizontalHeader();
    const int section = DatabaseTableModel::sectionOf(column);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(header->sectionViewportPosition(section) + 4, header->height() / 2));
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication qapp(argc, argv);
    const int count = argc > 1 ? std::max(1, std::atoi(argv[1])) : 100000;

    TarnCore core;
    const long before = residentKiB();
    QList<TarnItemPtr> items = makeItems(count);
    auto load = [&] {
        {
            std::lock_guard<std::mutex> guard(core.theCoreLock());
            core.AddItemsFromArray(items);
        }
        core.LoadDefaults();
    };
    load();
    const long coreKiB = residentKiB() - before;
    std::printf("bench_app: %d items; the database takes %.2f KiB per item\n", count,
                double(coreKiB) / count);

    // Opening: the window is built and shown (an empty database, as at
    // start-up), the items come in as a scan leaves them, and the first
    // screen of them is painted. The database's own loading is not counted.
    const long windowBefore = residentKiB();
    QElapsedTimer open;
    open.start();
    AppDelegate app(&core);
    app.start({QStringLiteral("tarn-app")});
    DatabaseTableView* table = app.window()->databaseTable();
    paint(table);
    const qint64 shownEmpty = open.nsecsElapsed();
    load();
    QElapsedTimer firstScreen;
    firstScreen.start();
    app.coreAccess()->publish();
    paint(table);
    const double openMs = double(shownEmpty + firstScreen.nsecsElapsed()) / 1e6;
    std::printf("(window shows %d rows)\n", app.databaseModel()->rowCount());
    report("open the window, first screen", openMs);

    QScrollBar* bar = table->verticalScrollBar();
    std::vector<double> pages;
    for (int page = 0; bar->value() < bar->maximum(); ++page) {
        pages.push_back(
            timeToScreen(table, [bar] { bar->triggerAction(QScrollBar::SliderPageStepAdd); }));
    }
    report("scroll one page (median of the way down)", median(pages));
    report("scroll one page (slowest)",
           pages.empty() ? 0 : *std::max_element(pages.begin(), pages.end()));
    report("jump from top to bottom", timeToScreen(table, [table] {
               table->scrollToTop();
               table->scrollToBottom();
           }));
    table->scrollToTop();

    const std::pair<const char*, TarnColumn> sorts[] = {
        {"header click: sort by file name", TarnColumn::Filename},
        {"header click: sort by size", TarnColumn::Size},
        {"header click: sort by path (slowest key)", TarnColumn::Path}};
    for (const auto& [what, column] : sorts) {
        std::vector<double> runs;
        for (int i = 0; i < 3; ++i)
            runs.push_back(timeToScreen(table, [&] { clickHeader(table, column); }));
        report(what, median(runs));
    }

    QLineEdit* search = app.window()->searchField();
    search->setFocus();
    std::vector<double> keys;
    for (const char key : {'s', 'c', 'e', 'n'}) {
        keys.push_back(timeToScreen(table, [&] { QTest::keyClick(search, key); }));
    }
    report("search keystroke (median of 4)", median(keys));
    report("search keystroke (slowest)", *std::max_element(keys.begin(), keys.end()));
    std::vector<double> erase;
    for (int i = 0; i < 4; ++i) {
        erase.push_back(timeToScreen(table, [&] { QTest::keyClick(search, Qt::Key_Backspace); }));
    }
    report("search backspace back to every row (slowest)",
           *std::max_element(erase.begin(), erase.end()));

    const long windowKiB = residentKiB() - windowBefore;
    std::printf("  %-44s %8.2f KiB per item   (target < 1.5 KiB)%s\n", "window over the database",
                double(windowKiB) / count, double(windowKiB) / count < 1.5 ? "" : "  OVER");
    return 0;
}
