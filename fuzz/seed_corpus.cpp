// Writes the seed corpus of every fuzz target: <folder>/<target>/seed_<n>.
#include <QDir>
#include <QList>

#include <cstdio>
#include <utility>

#include "FixtureFiles.h"
#include "OmfSeeds.h"

int main(int argc, char** argv) {
    const QString root = QString::fromLocal8Bit(argc > 1 ? argv[1] : "fuzz-corpus");
    const QList<std::pair<const char*, QList<QByteArray>>> targets{
        {"fuzz_omf", fixtures::omfSeeds()},
    };
    for (const auto& [target, seeds] : targets) {
        for (qsizetype i = 0; i < seeds.size(); ++i) {
            const QString path =
                QDir(root).filePath(QStringLiteral("%1/seed_%2").arg(QLatin1String(target)).arg(i));
            if (!fixtures::writeFile(path, seeds[i])) {
                std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
                return 1;
            }
        }
    }
    return 0;
}
