// The action engine against the system's own tools, measured in the same run:
// copying 20 files of 100 MiB (TarnActionOperation "Copy") against `cp`, cold
// (page cache dropped, where allowed) and warm; and a move of 10,000 small
// files on one volume against `mv`. Prints the ratios (target: copy <= 1.1,
// move <= 2). Works in a folder beside the build (TARN_BENCH_DIR overrides)
// and removes everything it wrote.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include <unistd.h>

#include "actions/TarnActionOperation.h"
#include "items/TarnDatabaseItem.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsOf(auto&& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

bool dropCaches() {
    ::sync();
    QFile f(QStringLiteral("/proc/sys/vm/drop_caches"));
    if (!f.open(QIODevice::WriteOnly)) return false;
    return f.write("3\n") == 2 && f.flush();
}

TarnItemPtr itemFor(const QString& path) {
    auto item = std::make_shared<TarnDatabaseItem>();
    item->DB_itemPath = path;
    item->DB_ClipName = QFileInfo(path).fileName();
    item->DB_ProjectName = QStringLiteral("Bench");
    item->validatePath();
    return item;
}

void runAction(const QString& action, const QList<TarnItemPtr>& items, const QString& to) {
    TarnActionOptions o(items);
    o.Action = action;
    o.Destination = to;
    // The bench's own folder stands for the media folder the scan found.
    o.mediaFolderRoots = {QFileInfo(to).path()};
    o.Create_projects_folders = o.Create_mxf_folders = false;
    TarnActionOperation op(o);
    op.start();
    if (op.filesFailed() != 0)
        std::fprintf(stderr, "%s: %llu files failed\n", qPrintable(action),
                     static_cast<unsigned long long>(op.filesFailed()));
}

bool tool(const QString& program, const QStringList& args) {
    return QProcess::execute(program, args) == 0;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QString base = qEnvironmentVariableIsSet("TARN_BENCH_DIR")
                             ? qEnvironmentVariable("TARN_BENCH_DIR")
                             : QCoreApplication::applicationDirPath();
    QTemporaryDir dir(base + QStringLiteral("/bench-actions-XXXXXX"));
    if (!dir.isValid()) {
        std::fprintf(stderr, "cannot make a folder under %s\n", qPrintable(base));
        return 1;
    }
    const QString src = dir.path() + QStringLiteral("/src");
    const QString ours = dir.path() + QStringLiteral("/ours");
    const QString theirs = dir.path() + QStringLiteral("/cp");
    QDir().mkpath(src);

    // 20 files of 100 MiB of non-repeating data.
    // TARN_BENCH_ONLY=move skips the copy part.
    const bool copyPart = qEnvironmentVariable("TARN_BENCH_ONLY") != QLatin1String("move");
    const int kFiles = copyPart ? 20 : 0;
    constexpr qint64 kSize = 100LL * 1024 * 1024;
    QList<TarnItemPtr> items;
    QStringList paths;
    {
        QByteArray block(1024 * 1024, Qt::Uninitialized);
        quint64 x = 0x9E3779B97F4A7C15ull;
        for (int i = 0; i < kFiles; ++i) {
            const QString path =
                src + QStringLiteral("/clip%1.mxf").arg(i, 2, 10, QLatin1Char('0'));
            QFile f(path);
            if (!f.open(QIODevice::WriteOnly)) return 1;
            for (qint64 done = 0; done < kSize; done += block.size()) {
                auto* words = reinterpret_cast<quint64*>(block.data());
                for (qsizetype w = 0; w < block.size() / 8; ++w) {
                    x ^= x << 13;
                    x ^= x >> 7;
                    x ^= x << 17;
                    words[w] = x;
                }
                f.write(block);
            }
            f.close();
            paths << path;
        }
        for (const QString& p : paths) items << itemFor(p);
    }

    // One round: each tool copies all files into an empty folder, from a
    // dropped page cache when `cold`; `cpFirst` alternates the order.
    auto once = [&](bool cold, bool cpFirst, double* tarnSeconds, double* cpSeconds) {
        bool dropped = true;
        auto ourRun = [&] {
            QDir().mkpath(ours);
            if (cold) dropped = dropCaches() && dropped;
            *tarnSeconds = secondsOf([&] { runAction(QStringLiteral("Copy"), items, ours); });
            ::sync();
            QDir(ours).removeRecursively();
        };
        auto cpRun = [&] {
            QDir().mkpath(theirs);
            if (cold) dropped = dropCaches() && dropped;
            *cpSeconds = secondsOf([&] {
                tool(QStringLiteral("cp"),
                     QStringList{QStringLiteral("--preserve=mode,timestamps,xattr"),
                                 QStringLiteral("-t"), theirs} +
                         paths);
            });
            ::sync();
            QDir(theirs).removeRecursively();
        };
        if (cpFirst) {
            cpRun();
            ourRun();
        } else {
            ourRun();
            cpRun();
        }
        return dropped;
    };

    // Three rounds each, cold and warm; the medians count.
    for (bool cold : {true, false}) {
        if (!copyPart) break;
        std::vector<double> tarnTimes, cpTimes;
        bool dropped = true;
        for (int round = 0; round < 3; ++round) {
            double t = 0, c = 0;
            dropped = once(cold, round % 2 == 1, &t, &c) && dropped;
            tarnTimes.push_back(t);
            cpTimes.push_back(c);
        }
        if (cold && !dropped) {
            std::printf("copy, cold: page cache cannot be dropped here (not allowed): warm only\n");
            continue;
        }
        std::printf("copy 20 x 100 MiB, %s: tarn %.3f s, cp %.3f s, ratio %.2f (target <= 1.1)\n",
                    cold ? "cold" : "warm", median(tarnTimes), median(cpTimes),
                    median(tarnTimes) / median(cpTimes));
    }
    for (const QString& p : paths) QFile::remove(p);

    // 10,000 small files moved within one volume: each tool moves its own
    // fresh set into an empty folder, so neither inherits the other's folders.
    constexpr int kMoves = 10000;
    auto makeSet = [&](const QString& folder, QStringList* names) {
        QDir().mkpath(folder);
        for (int i = 0; i < kMoves; ++i) {
            const QString name = QStringLiteral("file%1.mxf").arg(i, 5, 10, QLatin1Char('0'));
            QFile f(folder + QLatin1Char('/') + name);
            if (!f.open(QIODevice::WriteOnly)) return false;
            f.write(QByteArray(512, 'x'));
            names->append(folder + QLatin1Char('/') + name);
        }
        return true;
    };
    // Five rounds, each tool first in turn; the medians count.
    std::vector<double> tarnTimes, mvTimes;
    bool allMoved = true;
    for (int round = 0; round < 5; ++round) {
        const QString r = dir.path() + QStringLiteral("/round%1").arg(round);
        QStringList tarnSet, mvSet;
        if (!makeSet(r + QStringLiteral("/tarn-from"), &tarnSet) ||
            !makeSet(r + QStringLiteral("/mv-from"), &mvSet))
            return 1;
        const QString tarnTo = r + QStringLiteral("/tarn-to");
        const QString mvTo = r + QStringLiteral("/mv-to");
        QDir().mkpath(tarnTo);
        QDir().mkpath(mvTo);
        QList<TarnItemPtr> moveItems;
        for (const QString& p : tarnSet) moveItems << itemFor(p);
        ::sync();
        auto runMv = [&] {
            mvTimes.push_back(secondsOf([&] {
                tool(QStringLiteral("mv"), QStringList{QStringLiteral("-t"), mvTo} + mvSet);
            }));
        };
        auto runTarn = [&] {
            tarnTimes.push_back(
                secondsOf([&] { runAction(QStringLiteral("Move"), moveItems, tarnTo); }));
        };
        if (round % 2) {
            runTarn();
            runMv();
        } else {
            runMv();
            runTarn();
        }
        allMoved = allMoved && QDir(tarnTo).entryList(QDir::Files).size() == kMoves;
        QDir(r).removeRecursively();
    }
    const int moved = allMoved ? kMoves : 0;
    std::printf(
        "move 10,000 files, one volume: tarn %.3f s, mv %.3f s, ratio %.2f (target <= 2)%s\n",
        median(tarnTimes), median(mvTimes), median(tarnTimes) / median(mvTimes),
        allMoved ? "" : " (files missing!)");
    return moved == kMoves ? 0 : 1;
}
