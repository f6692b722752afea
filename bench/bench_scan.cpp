// The media database on a synthetic volume of 200 media folders of 500 files
// (100,000 items): a full scan against a bare walk of the same tree with
// `find` (which stats every file, as the scan must), the scan's memory per
// item, the whole `tarn scan` process writing each report format against the
// same walk, and the view operations on the 100,000 items in memory.
//
//   bench_scan [ROOT]      ROOT: where the volume is made (kept for later runs)
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "AvbWriter.h"
#include "FixtureFiles.h"
#include "MdbWriter.h"
#include "MxfWriter.h"
#include "PmrWriter.h"
#include "database/TarnCore.h"
#include "database/TarnFilter.h"
#include "database/TarnScanner.h"
#include "report/TarnExport.h"
#include "report/TarnItemRows.h"
#include "report/TarnJsonReport.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kFolders = 200;
constexpr int kFilesPerFolder = 500;
constexpr int kUnlistedPerFolder = 50;  // 10% of the files

double msSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double cpuSeconds(int who) {
    rusage usage{};
    ::getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

template <typename F>
double medianMs(int runs, F&& f) {
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        const auto start = Clock::now();
        f();
        times.push_back(msSince(start));
    }
    return median(times);
}

quint64 uidOf(int folder, int file) {
    return quint64(folder) * 1000 + quint64(file) + 1;
}

// Listed files are MXF media; the unlisted ones are other files left in the
// folder (and, in some folders, one real MXF file).
QString fileName(int folder, int file) {
    if (file < kUnlistedPerFolder && !(file == 0 && folder % 20 == 0))
        return QString::asprintf("U%03d_%03d.wav", folder, file);
    return QString::asprintf("V%03d_%03d_%s.mxf", folder, file, file % 7 ? "v" : "a1");
}

bool makeVolume(const QString& root) {
    const QString marker = root + QStringLiteral("/.complete-2");
    if (QFileInfo::exists(marker)) return true;
    std::printf("making the volume in %s ...\n", qPrintable(root));
    QDir(root).removeRecursively();
    const QString media = root + QStringLiteral("/Avid MediaFiles/MXF/");
    for (int f = 0; f < kFolders; ++f) {
        const QString folder = media + QString::number(f + 1) + QLatin1Char('/');
        if (!QDir().mkpath(folder)) return false;
        QList<fixtures::PmrEntry> entries;
        QList<fixtures::MdbClip> clips;
        for (int i = 0; i < kFilesPerFolder; ++i) {
            const QString name = fileName(f, i);
            if (i >= kUnlistedPerFolder) {
                const QString project = QStringLiteral("Project %1").arg(f % 12);
                entries << fixtures::makePmrEntry(uidOf(f, i), name, project);
                fixtures::MdbClip clip;
                clip.fileShortUID = uidOf(f, i);
                clip.materialShortUID = uidOf(f, i) + 1;
                clip.clipName = QStringLiteral("Clip %1 %2").arg(f).arg(i);
                clip.project = project;
                clip.frameRate = {25, 1};
                clip.audio = i % 7 == 0;
                if (!clip.audio) {
                    clip.resolutionID = 1237 + quint32(i % 3);
                    std::memcpy(clip.fourCC, "AVdn", 4);
                    clip.bits = 8;
                }
                clips << clip;
            }
            // Every 20th folder holds one real MXF file that no index lists.
            if (i == 0 && f % 20 == 0) {
                fixtures::MxfClip mxf;
                mxf.clipName = QStringLiteral("Unlisted %1").arg(f);
                mxf.projectName = QStringLiteral("Lost");
                mxf.fileUMID = fixtures::umidFor(quint32(900000 + f));
                if (!fixtures::writeMxfFile(folder + name, mxf)) return false;
            } else {
                QFile file(folder + name);
                if (!file.open(QIODevice::WriteOnly)) return false;
                file.resize(4096 + i);  // sparse
            }
        }
        fixtures::writeFile(folder + QStringLiteral("msmFMID.pmr"), fixtures::writePmr(entries));
        fixtures::writeFile(folder + QStringLiteral("msmMMOB.mdb"), fixtures::writeMdb(clips));
    }
    return fixtures::writeFile(marker, "1");
}

long vmHWMKiB() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return 0;
}

// In a fresh process: the scan's peak memory growth per item.
int memoryChild(const QString& root) {
    TarnCore core;
    TarnScanner scanner(&core);
    const long before = vmHWMKiB();
    scanner.run(TarnScanner::Kind::SingleFolder, {root});
    const long after = vmHWMKiB();
    std::printf("%lld %ld %ld\n", (long long)core.getAllItemsCount(), before, after);
    return 0;
}

// Counts what it is given and keeps nothing.
class NullDevice : public QIODevice {
  public:
    NullDevice() { open(QIODevice::WriteOnly); }
    qint64 bytes = 0;

  protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64 length) override {
        bytes += length;
        return length;
    }
};

// The reports alone, written from the scanned database to a device that
// keeps nothing.
void reportsInProcess(const TarnCore& core) {
    const TarnItemRows rows(core, QStringLiteral("Tarn"));
    const std::vector<std::pair<const char*, std::function<bool(QIODevice*)>>> reports = {
        {"json", [&](QIODevice* d) { return TarnJsonReport::write(core, d); }},
        {"csv", [&](QIODevice* d) { return TarnExport::writeCsv(rows, QStringLiteral(";"), d); }},
        {"html", [&](QIODevice* d) { return TarnExport::writeHtml(rows, d); }},
    };
    for (const auto& [name, write] : reports) {
        qint64 bytes = 0;
        const double ms = medianMs(3, [&] {
            NullDevice device;
            write(&device);
            bytes = device.bytes;
        });
        std::printf("report %-5s in process: %.0f ms for %.1f MB (%.0f MB/s)\n", name, ms,
                    double(bytes) / 1e6, double(bytes) / 1e3 / ms);
    }
}

// One whole process, its output and errors to /dev/null: wall time, CPU time
// (all threads) and peak resident memory (the kernel's counts for the child).
struct ProcessRun {
    double ms = 0;
    double cpuMs = 0;
    long peakKiB = 0;
    bool ok = false;
};

ProcessRun runProcess(const std::vector<std::string>& argv) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    std::vector<char*> args;
    for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    ProcessRun run;
    pid_t pid = 0;
    const auto start = Clock::now();
    if (::posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ) == 0) {
        int status = 0;
        rusage usage{};
        if (::wait4(pid, &status, 0, &usage) == pid) {
            run.ms = msSince(start);
            run.cpuMs = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
                        double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
            run.peakKiB = usage.ru_maxrss;
            run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        }
    }
    posix_spawn_file_actions_destroy(&actions);
    return run;
}

// `tarn scan --volume ROOT` writing each report to /dev/null, in rounds that
// alternate with the bare walk, so a load that comes and goes falls on both.
// Ratios are taken within a round; the medians are printed.
//
// Runs in a small process of its own: a child starts with its parent's peak
// memory as its own, and the benchmark's parent holds a scanned database.
int wholeProcess(const QString& root, qsizetype items, int rounds) {
    const std::string volume = QFile::encodeName(root).toStdString();
    const std::vector<std::string> find = {"find", volume, "-type", "f", "-printf", "%s %C@\\n"};
    struct Command {
        const char* name;
        std::vector<std::string> argv;
        std::vector<double> ratios, ms, cpuMs;
        std::vector<long> peaks;
    };
    std::vector<Command> commands;
    for (const char* format : {"json", "csv", "html"}) {
        commands.push_back(
            {format,
             {TARN_CLI_PATH, "scan", "--volume", volume, "--format", format, "-o", "/dev/null"},
             {},
             {},
             {}});
    }
    commands.push_back(
        {"summary", {TARN_CLI_PATH, "scan", "--volume", volume, "--summary"}, {}, {}, {}});
    // The preferences at their defaults, whatever the user has set.
    const QTemporaryDir settings;
    qputenv("TARN_SETTINGS", QFile::encodeName(settings.filePath(QStringLiteral("settings.ini"))));
    std::vector<double> findMs, findCpuMs;
    for (int round = 0; round < rounds; ++round) {
        for (Command& command : commands) {
            const ProcessRun walk = runProcess(find);
            const ProcessRun run = runProcess(command.argv);
            if (!walk.ok || !run.ok) {
                std::printf("whole process: %s failed\n", command.name);
                return 1;
            }
            findMs.push_back(walk.ms);
            findCpuMs.push_back(walk.cpuMs);
            command.ms.push_back(run.ms);
            command.cpuMs.push_back(run.cpuMs);
            command.ratios.push_back(run.ms / walk.ms);
            command.peaks.push_back(run.peakKiB);
        }
    }
    std::printf(
        "whole process, tarn scan --volume ROOT (medians of %d rounds against find, %.0f ms, "
        "cpu %.0f ms):\n",
        rounds, median(findMs), median(findCpuMs));
    for (const Command& command : commands) {
        std::vector<double> peaks(command.peaks.begin(), command.peaks.end());
        const double peak = median(peaks);
        std::printf(
            "  %-8s %5.0f ms, ratio %.2f (target <= 2), cpu %4.0f ms, peak %.0f MiB, %.2f KiB/item "
            "(target <= 1.5)\n",
            command.name, median(command.ms), median(command.ratios), median(command.cpuMs),
            peak / 1024, peak / double(items));
    }
    // Renaming a finished file over /dev/null would replace the device.
    struct stat st {};
    if (::stat("/dev/null", &st) != 0 || !S_ISCHR(st.st_mode))
        std::printf("/dev/null is no longer a device!\n");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], "--memory") == 0)
        return memoryChild(QString::fromLocal8Bit(argv[2]));
    if (argc == 4 && std::strcmp(argv[1], "--whole-process") == 0)
        return wholeProcess(QString::fromLocal8Bit(argv[2]), std::atoll(argv[3]), 5);

    const QString root = argc > 1 ? QString::fromLocal8Bit(argv[1])
                                  : QDir::tempPath() + QStringLiteral("/tarn-bench-volume");
    if (!makeVolume(root)) {
        std::fprintf(stderr, "cannot make the volume in %s\n", qPrintable(root));
        return 1;
    }
    const int runs = 3;

    // Warm cache: one walk and one scan before measuring.
    const QByteArray find =
        "find '" + QFile::encodeName(root) + "' -type f -printf '%s %C@\\n' > /dev/null";
    if (std::system(find.constData()) != 0) return 1;
    TarnCore core;
    TarnScanner scanner(&core);
    scanner.run(TarnScanner::Kind::SingleFolder, {root});

    const double findCpu0 = cpuSeconds(RUSAGE_CHILDREN);
    const double findMs = medianMs(runs, [&] { (void)std::system(find.constData()); });
    const double findCpu = (cpuSeconds(RUSAGE_CHILDREN) - findCpu0) / runs;
    const double scanCpu0 = cpuSeconds(RUSAGE_SELF);
    const double scanMs = medianMs(runs, [&] {
        core.clear();
        scanner.run(TarnScanner::Kind::SingleFolder, {root});
    });
    const double scanCpu = (cpuSeconds(RUSAGE_SELF) - scanCpu0) / runs;
    const qsizetype items = core.getAllItemsCount();
    std::printf("items: %lld\n", (long long)items);
    std::printf("scan: %.0f ms, find: %.0f ms, ratio %.2f (target <= 2)\n", scanMs, findMs,
                scanMs / findMs);
    std::printf("cpu time (all threads): scan %.2f s, find %.2f s, ratio %.2f\n", scanCpu, findCpu,
                scanCpu / findCpu);

    // Memory, in a process of its own.
    const QByteArray child = "'" + QFile::encodeName(QCoreApplication::applicationFilePath()) +
                             "' --memory '" + QFile::encodeName(root) + "'";
    if (FILE* pipe = ::popen(child.constData(), "r")) {
        long long count = 0;
        long before = 0, after = 0;
        if (std::fscanf(pipe, "%lld %ld %ld", &count, &before, &after) == 3 && count > 0) {
            std::printf(
                "memory: peak growth %ld KiB for %lld items: %.2f KiB/item (target <= 1.5)\n",
                after - before, count, double(after - before) / double(count));
        }
        ::pclose(pipe);
    }

    reportsInProcess(core);
    std::fflush(stdout);
    const QByteArray whole = "'" + QFile::encodeName(QCoreApplication::applicationFilePath()) +
                             "' --whole-process '" + QFile::encodeName(root) + "' " +
                             QByteArray::number(items);
    if (std::system(whole.constData()) != 0) std::printf("whole process: not measured\n");

    // The view on 100,000 items.
    auto* filter = TarnFilter::sharedFilter();
    const double filterMs = medianMs(5, [&] { core.applyFilter(); });
    std::printf("applyFilter: %.1f ms (target 20)\n", filterMs);
    const double searchMs = medianMs(5, [&] {
        filter->setFilterString(QStringLiteral("clip 17"));
        core.applyFilter();
    });
    std::printf("search keystroke: %.1f ms (target 50), %lld rows\n", searchMs,
                (long long)core.getItemsCount());
    filter->ResetFilter();
    core.applyFilter();
    double worstSort = 0;
    for (const char* key :
         {"filename", "clipname", "project", "filesize", "path", "fileUID", "materialUID", "hash",
          "filedate", "compression", "samplerate", "framerate", "bits"}) {
        const double ms = medianMs(3, [&] {
            core.sortUsingDescriptors({{QString::fromLatin1(key), true}});
        });
        worstSort = std::max(worstSort, ms);
        std::printf("sort %-12s %.1f ms\n", key, ms);
    }
    std::printf("sort, slowest key: %.1f ms (target 250)\n", worstSort);
    const double uniqueMs = medianMs(3, [&] { core.makeUnique(); });
    std::printf("makeUnique: %.1f ms (target 150)\n", uniqueMs);
    core.LoadDefaults();

    QList<quint64> references;
    for (int i = 0; i < 10000; ++i)
        references << uidOf(i % kFolders, kUnlistedPerFolder + (i * 7) % 450);
    const QString bin = root + QStringLiteral("/bench.avb");
    fixtures::writeFile(bin, fixtures::writeBin(references));
    const double intersectMs = medianMs(3, [&] { core.AVBArray_IntersectWith({bin}); });
    std::printf("intersect with a bin of 10,000 references: %.1f ms (target 100), %lld rows\n",
                intersectMs, (long long)core.getItemsCount());
    return 0;
}
