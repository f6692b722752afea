// Time to read the identity (clip name, project, both UMIDs) of an MXF media
// file, against reading the first 64 KiB of the same file: the floor any
// reader pays to look at a file at all.
#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>
#include <vector>

#include "MxfWriter.h"
#include "items/TarnDatabaseItem.h"
#include "log/xConsole.h"
#include "readers/TarnMXF.h"

namespace {

using Clock = std::chrono::steady_clock;

double microsecondsPerFile(const std::vector<QString>& paths, int rounds, auto&& readOne) {
    const auto start = Clock::now();
    for (int r = 0; r < rounds; ++r)
        for (const QString& path : paths) readOne(path);
    const std::chrono::duration<double, std::micro> spent = Clock::now() - start;
    return spent.count() / double(rounds * paths.size());
}

}  // namespace

int main() {
    constexpr int kFiles = 100;
    constexpr int kRounds = 10;
    QTemporaryDir dir;
    std::vector<QString> paths;
    for (int i = 0; i < kFiles; ++i) {
        fixtures::MxfClip mxfClip;
        mxfClip.clipName = QStringLiteral("Clip %1").arg(i);
        mxfClip.projectName = QStringLiteral("Bench");
        mxfClip.materialUMID = fixtures::umidFor(quint32(2 * i + 1));
        mxfClip.fileUMID = fixtures::umidFor(quint32(2 * i + 2));
        mxfClip.essenceBytes = 1 << 20;  // a second of 48 kHz stereo-sized essence
        paths.push_back(dir.filePath(QStringLiteral("clip%1.mxf").arg(i)));
        if (!fixtures::writeMxfFile(paths.back(), mxfClip)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(paths.back()));
            return 1;
        }
    }

    unsigned named = 0;
    auto readIdentity = [&](const QString& path) {
        TarnMXF reader;
        reader.openFile(path, nullptr);
        TarnDatabaseItem item;
        reader.addInfoToItem(&item);
        named += item.DB_NameInBin.isEmpty() ? 0 : 1;
    };
    qint64 bytes = 0;
    auto readHead = [&](const QString& path) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly)) bytes += file.read(64 * 1024).size();
    };

    // Warm the page cache and the library once, then measure.
    microsecondsPerFile(paths, 1, readIdentity);
    microsecondsPerFile(paths, 1, readHead);
    xConsole::sharedInstance()->Reset();
    named = 0;
    bytes = 0;

    const double head = microsecondsPerFile(paths, kRounds, readHead);
    const double identity = microsecondsPerFile(paths, kRounds, readIdentity);
    xConsole::sharedInstance()->Reset();

    std::printf("bench_mxf: %d files of %lld bytes, %d rounds\n", kFiles,
                static_cast<long long>(QFile(paths.front()).size()), kRounds);
    std::printf("  read first 64 KiB       %9.1f us/file  (baseline)\n", head);
    std::printf("  read MXF identity       %9.1f us/file\n", identity);
    std::printf("  ratio identity/baseline %9.2f\n", identity / head);
    if (named != unsigned(kFiles * kRounds) || bytes != qint64(kFiles) * kRounds * 64 * 1024) {
        std::fprintf(stderr, "bench_mxf: unexpected results (%u named, %lld bytes)\n", named,
                     static_cast<long long>(bytes));
        return 1;
    }
    return 0;
}
