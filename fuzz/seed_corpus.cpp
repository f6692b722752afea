// Writes the seed corpus of every fuzz target: <root>/<target>/<seed files>,
// made with the fixture writers.
#include <QDir>
#include <QString>

#include <cstdio>

#include "AvbWriter.h"
#include "FixtureFiles.h"
#include "MxfWriter.h"
#include "OmfSeeds.h"
#include "PmrWriter.h"
#include "Umid.h"

namespace {

bool mxfSeeds(const QString& dir) {
    fixtures::MxfClip named;
    named.clipName = QStringLiteral("Interview A01");
    named.projectName = QStringLiteral("Documentary");
    fixtures::MxfClip unnamed;
    unnamed.essenceBytes = 1200;
    fixtures::MxfClip op1a = named;
    op1a.opAtom = false;
    const QByteArray whole = fixtures::writeMxf(named);
    return fixtures::writeFile(dir + QStringLiteral("/opatom.mxf"), whole) &&
           fixtures::writeFile(dir + QStringLiteral("/unnamed.mxf"), fixtures::writeMxf(unnamed)) &&
           fixtures::writeFile(dir + QStringLiteral("/op1a.mxf"), fixtures::writeMxf(op1a)) &&
           fixtures::writeFile(dir + QStringLiteral("/header-only.mxf"), whole.left(1500));
}

bool pmrSeeds(const QString& dir) {
    QList<fixtures::PmrEntry> entries = {
        fixtures::makePmrEntry(0x1001, QStringLiteral("A001C001_V01.mxf"),
                               QStringLiteral("Feature")),
        fixtures::makePmrEntry(0x1003, QStringLiteral("A001C001_A01.wav"), QString()),
        fixtures::makePmrEntry(0x1005, QStringLiteral("title.mxf"), QStringLiteral("Promo")),
    };
    QList<fixtures::PmrEntry> damaged = entries;
    damaged[1].nameLength = 256;
    const QByteArray little = fixtures::writePmr(entries);
    bool ok = true;
    ok &= fixtures::writeFile(dir + QStringLiteral("/little-umid.pmr"), little);
    ok &= fixtures::writeFile(dir + QStringLiteral("/big-umid.pmr"),
                              fixtures::writePmr(entries, 8, true));
    ok &= fixtures::writeFile(dir + QStringLiteral("/little-short.pmr"),
                              fixtures::writePmr(entries, 2));
    ok &= fixtures::writeFile(dir + QStringLiteral("/big-short.pmr"),
                              fixtures::writePmr(entries, 2, true));
    ok &= fixtures::writeFile(dir + QStringLiteral("/damaged.pmr"), fixtures::writePmr(damaged));
    ok &= fixtures::writeFile(dir + QStringLiteral("/truncated.pmr"),
                              little.left(little.size() - 40));
    return ok;
}

bool avbSeeds(const QString& dir) {
    const QList<fixtures::AvbReference> references = {
        {0x1001, 0x0202, QStringLiteral("Avid MediaFiles"), {}},
        {0x1003, 0x0202, QStringLiteral("AMA Card 01"), {}},
        {0x1005, 0x0203, QString(), {}},
        {0x1001, 0x0202, QString(), {}},
    };
    bool ok = true;
    ok &= fixtures::writeFile(dir + QStringLiteral("/references.avb"),
                              fixtures::writeBinReferences(references));
    ok &= fixtures::writeFile(dir + QStringLiteral("/plain.avb"),
                              fixtures::writeBin({0x2001, 0x2002}));
    ok &= fixtures::writeFile(dir + QStringLiteral("/empty.avb"), fixtures::writeBin({}));
    return ok;
}

// The OMF reader's own seed set: media databases in both byte orders, an
// OMF 2 label, a truncated table of contents.
bool omfSeeds(const QString& dir) {
    const QList<QByteArray> seeds = fixtures::omfSeeds();
    bool ok = !seeds.isEmpty();
    for (qsizetype i = 0; i < seeds.size(); ++i)
        ok &= fixtures::writeFile(dir + QStringLiteral("/seed_%1").arg(i), seeds[i]);
    return ok;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 2) {
        std::fprintf(stderr, "usage: seed_corpus [folder]\n");
        return 2;
    }
    const QString root = QString::fromLocal8Bit(argc > 1 ? argv[1] : "fuzz-corpus");
    struct Target {
        const char* name;
        bool (*write)(const QString& dir);
    };
    const Target targets[] = {
        {"fuzz_mxf", mxfSeeds},
        {"fuzz_omf", omfSeeds},
        {"fuzz_pmr", pmrSeeds},
        {"fuzz_avb", avbSeeds},
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
