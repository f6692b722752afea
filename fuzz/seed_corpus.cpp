// Writes the seed corpus of every fuzz target: <root>/<target>/<seed files>,
// made with the fixture writers.
#include <QDir>
#include <QString>

#include <cstdio>

#include "FixtureFiles.h"
#include "MxfWriter.h"

namespace {

bool mxfSeeds(const QString& dir) {
    fixtures::MxfSpec named;
    named.clipName = QStringLiteral("Interview A01");
    named.projectName = QStringLiteral("Documentary");
    fixtures::MxfSpec unnamed;
    unnamed.essenceBytes = 1200;
    fixtures::MxfSpec op1a = named;
    op1a.opAtom = false;
    const QByteArray whole = fixtures::writeMxf(named);
    return fixtures::writeFile(dir + QStringLiteral("/opatom.mxf"), whole) &&
           fixtures::writeFile(dir + QStringLiteral("/unnamed.mxf"), fixtures::writeMxf(unnamed)) &&
           fixtures::writeFile(dir + QStringLiteral("/op1a.mxf"), fixtures::writeMxf(op1a)) &&
           fixtures::writeFile(dir + QStringLiteral("/header-only.mxf"), whole.left(1500));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: seed_corpus <folder>\n");
        return 2;
    }
    const QString root = QString::fromLocal8Bit(argv[1]);
    struct Target {
        const char* name;
        bool (*write)(const QString& dir);
    };
    const Target targets[] = {
        {"fuzz_mxf", mxfSeeds},
    };
    for (const Target& t : targets) {
        const QString dir = root + QLatin1Char('/') + QLatin1String(t.name);
        if (!QDir().mkpath(dir) || !t.write(dir)) {
            std::fprintf(stderr, "seed_corpus: cannot write %s\n", qPrintable(dir));
            return 1;
        }
    }
    return 0;
}
