// The queue window while an action copies 20 files of 100 MiB: the progress
// timer is meant to tick every 0.1 s on the GUI thread, and it must keep
// doing so however busy the worker is (target: no gap above 150 ms). Shows
// the window (offscreen unless a display is set), queues the copy through
// the same commands as the main window and prints the gaps between ticks.
// Works in a folder beside the build (TARN_BENCH_DIR overrides) and removes
// everything it wrote.
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <vector>

#include "actions/TarnActionCommands.h"
#include "actions/TarnActionOperation.h"
#include "items/TarnDatabaseItem.h"

namespace {

constexpr int kFiles = 20;
constexpr qint64 kFileBytes = qint64(100) << 20;
constexpr double kTargetMs = 150.0;

bool writeFile(const QString& path, qint64 size, int seed) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    QByteArray block(4 << 20, '\0');
    for (int i = 0; i < block.size(); ++i) block[i] = char(i * 31 + seed);
    for (qint64 left = size; left > 0; left -= block.size())
        if (file.write(block.constData(), std::min<qint64>(left, block.size())) < 0) return false;
    return true;
}

TarnItemPtr itemFor(const QString& path) {
    auto item = std::make_shared<TarnDatabaseItem>();
    item->DB_itemPath = path;
    item->DB_ProjectName = QStringLiteral("Bench");
    item->validatePath();
    return item;
}

// Nanoseconds this thread has waited for a CPU so far (Linux schedstat), or
// -1: a gap in the ticks less this wait is what the program itself took.
qint64 waitedForCpu() {
    QFile file(QStringLiteral("/proc/thread-self/schedstat"));
    if (!file.open(QIODevice::ReadOnly)) return -1;
    const QList<QByteArray> fields = file.readAll().split(' ');
    return fields.size() >= 2 ? fields.at(1).toLongLong() : -1;
}

double percentile(std::vector<double> values, double p) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, size_t(p * double(values.size() - 1) + 0.5))];
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QString base = qEnvironmentVariableIsSet("TARN_BENCH_DIR")
                             ? qEnvironmentVariable("TARN_BENCH_DIR")
                             : QCoreApplication::applicationDirPath();
    QTemporaryDir dir(base + QStringLiteral("/bench-queue-XXXXXX"));
    const QString src = dir.path() + QStringLiteral("/src");
    const QString dst = dir.path() + QStringLiteral("/dst");
    if (!dir.isValid() || !QDir().mkpath(src) || !QDir().mkpath(dst)) {
        std::fprintf(stderr, "cannot make a folder under %s\n", qPrintable(base));
        return 1;
    }
    QList<TarnItemPtr> items;
    for (int i = 0; i < kFiles; ++i) {
        const QString path = src + QStringLiteral("/clip%1.mxf").arg(i, 2, 10, QLatin1Char('0'));
        if (!writeFile(path, kFileBytes, i)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            return 1;
        }
        items.append(itemFor(path));
    }

    QMainWindow window;
    window.resize(1000, 700);
    window.show();
    TarnActionManager manager;
    TarnActionCommands commands(&manager, &window);
    TarnActionOptions options(items);
    options.Destination = dst;
    options.Create_projects_folders = options.Create_mxf_folders = false;

    // Every tick of the timer on the GUI thread, while the copy runs.
    std::vector<qint64> ticks, waits;
    QElapsedTimer clock;
    clock.start();
    auto action = commands.ContinueActionSetup(options);
    QObject::connect(
        action.get(), &TarnAction::progressChanged, &window,
        [&](double, bool busy) {
            if (QThread::currentThread() != app.thread() || busy) return;
            ticks.push_back(clock.nsecsElapsed());
            waits.push_back(waitedForCpu());
        },
        Qt::DirectConnection);
    while (!action->Action_Operation()->isFinished())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    const double copySeconds = double(clock.nsecsElapsed()) / 1e9;

    std::vector<double> gaps, ownGaps;
    for (size_t i = 1; i < ticks.size(); ++i) {
        gaps.push_back(double(ticks[i] - ticks[i - 1]) / 1e6);
        if (waits[i] >= 0 && waits[i - 1] >= 0)
            ownGaps.push_back(double(ticks[i] - ticks[i - 1] - (waits[i] - waits[i - 1])) / 1e6);
    }
    const double mean =
        gaps.empty() ? 0 : std::accumulate(gaps.begin(), gaps.end(), 0.0) / double(gaps.size());
    const double worst = gaps.empty() ? 0 : *std::max_element(gaps.begin(), gaps.end());
    const auto over =
        std::count_if(gaps.begin(), gaps.end(), [](double g) { return g > kTargetMs; });
    std::printf("queue window while copying %d files of %lld MiB (%s platform)\n", kFiles,
                static_cast<long long>(kFileBytes >> 20),
                qPrintable(QGuiApplication::platformName()));
    std::printf("  copy            %.2f s (%.0f MiB/s), %llu files failed\n", copySeconds,
                double(kFiles) * double(kFileBytes >> 20) / copySeconds,
                static_cast<unsigned long long>(action->Action_Operation()->filesFailed()));
    std::printf(
        "  timer ticks     %zu, gap mean %.1f ms, median %.1f ms, p99 %.1f ms, max %.1f ms\n",
        ticks.size(), mean, percentile(gaps, 0.5), percentile(gaps, 0.99), worst);
    if (!ownGaps.empty())
        std::printf("  less the time the GUI thread waited for a CPU: p99 %.1f ms, max %.1f ms\n",
                    percentile(ownGaps, 0.99), *std::max_element(ownGaps.begin(), ownGaps.end()));
    std::printf("  gaps over %.0f ms: %lld (target: none) -> %s\n", kTargetMs,
                static_cast<long long>(over), over == 0 ? "within target" : "OVER TARGET");
    return 0;
}
