// Replays inputs through a fuzz target without libFuzzer: every file named on
// the command line, and every file in each folder named, is handed to the
// target once. The suite runs it over the seed corpus and over the inputs that
// once crashed or hung under fuzzing (fuzz/regressions/<target>/), so a parser
// change that brings one of them back fails `make test` (and, in the
// sanitizer builds, shows where).
#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

int replayFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return 1;
    }
    const QByteArray bytes = file.readAll();
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()),
                           size_t(bytes.size()));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    int failures = 0;
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const QString arg = QString::fromLocal8Bit(argv[i]);
        if (!QFileInfo(arg).isDir()) {
            failures += replayFile(arg);
            ++replayed;
            continue;
        }
        QDirIterator it(arg, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            if (path.endsWith(QLatin1String("README.md"))) continue;
            failures += replayFile(path);
            ++replayed;
        }
    }
    std::printf("replayed %d inputs\n", replayed);
    return failures == 0 && replayed > 0 ? 0 : 1;
}
