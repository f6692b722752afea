#include <gtest/gtest.h>

#include "AvbWriter.h"
#include "CliRun.h"
#include "FixtureFiles.h"
#include "MdbWriter.h"
#include "MxfWriter.h"
#include "PmrWriter.h"
#include "readers/TarnMXF.h"

namespace {

class FileReportCommandTest : public ::testing::Test {
  protected:
    CliResult inspect(const QStringList& args) const { return cli_(QStringList{"inspect"} + args); }
    static QJsonArray filesOf(const CliResult& r) { return r.json().value("files").toArray(); }

    QString write(const QString& name, const QByteArray& bytes) {
        const QString path = cli_.tempPath(name);
        EXPECT_TRUE(fixtures::writeFile(path, bytes));
        return path;
    }

    static QList<fixtures::PmrEntry> entries() {
        return {fixtures::makePmrEntry(0x0123456789abcdefull, "A001C001_V01.mxf", "Feature"),
                fixtures::makePmrEntry(0x42, "A001C001_A01.wav", QString()),
                fixtures::makePmrEntry(0x77, "title.mxf", "Promo")};
    }

    CliRun cli_;
};

TEST_F(FileReportCommandTest, JsonGivesTheFactsOfEveryKindOfFile) {
    auto damaged = entries();
    damaged[1].projectLength = 65;
    // Indexes and bins are known by their first bytes, whatever their names.
    const QString pmr = write("index.dat", fixtures::writePmr(damaged, 2, true));

    fixtures::AvbReference linked{0x99, 0x0202, "AMA Card"};
    const QString bin =
        write("reel-copy", fixtures::writeBinReferences({{0x42}, linked, {0x42}, {0x5, 0x0203}}));

    const QString mdb = write("msmMMOB.mdb", fixtures::writeMdb({{}, {}}, true));
    fixtures::MxfClip mxfClip;
    mxfClip.clipName = "Interview";
    const QString mxf = write("clip.mxf", fixtures::writeMxf(mxfClip));

    const CliResult run = inspect({"--json", pmr, bin, mdb, mxf});
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.err);
    const QJsonArray files = filesOf(run);
    ASSERT_EQ(files.size(), 4) << qPrintable(run.out);

    const QJsonObject p = files[0].toObject();
    const QJsonObject pmrFacts{{"path", pmr},   {"kind", "pmr"},        {"byte_order", "big"},
                               {"uid_size", 2}, {"entries_claimed", 3}, {"entries_read", 1}};
    EXPECT_EQ(fieldsOf(p, pmrFacts), pmrFacts);
    const QJsonObject entry{{"name", "A001C001_V01.mxf"},
                            {"project", "Feature"},
                            {"file_package_uid", "efcdab8967452301"},
                            {"material_package_uid", "f0cdab8967452301"}};
    EXPECT_EQ(fieldsOf(p["entries"].toArray().at(0).toObject(), entry), entry);

    const QJsonObject binFacts{{"kind", "bin"},
                               {"references", 2},
                               {"short_uids", QJsonArray{"4200000000000000", "9900000000000000"}}};
    EXPECT_EQ(fieldsOf(files[1].toObject(), binFacts), binFacts);

    const QJsonObject mdbFacts{{"kind", "mdb"}, {"byte_order", "big"}, {"compositions", 2}};
    EXPECT_EQ(fieldsOf(files[2].toObject(), mdbFacts), mdbFacts);
    const QJsonObject mxfFacts{
        {"kind", "mxf"},
        {"status_text", "OK"},
        {"clip_name", "Interview"},
        {"file_package_uid",
         QString::fromLatin1(TarnMXF::swapUUIDfromMXFtoTarn(fixtures::umidFor(2)).toHex())}};
    EXPECT_EQ(fieldsOf(files[3].toObject(), mxfFacts), mxfFacts);
}

TEST_F(FileReportCommandTest, AnUntakenFileGetsOneLineAndStatusOneWhileOthersAreShown) {
    const QString text = write("notes.txt", QByteArray("not media\n"));
    const QString shortPmr = write("amaFMID.pmr", fixtures::writePmr(entries()).left(29));
    const QString bin = write("Reel.avb", fixtures::writeBin({0x42}));
    const QString missing = cli_.tempPath("gone.mdb");
    const QString pmr = write("msmFMID.pmr", fixtures::writePmr(entries()));

    const CliResult human = inspect({text, bin, shortPmr, missing, pmr});
    EXPECT_EQ(human.exitCode, 1);
    EXPECT_TRUE(human.out.contains("{ 4200000000000000 }"));
    EXPECT_TRUE(human.out.contains("little-endian"));
    EXPECT_TRUE(human.out.contains("3 claimed, 3 read"));
    EXPECT_TRUE(human.out.contains("#1 A001C001_V01.mxf\n     project:      Feature\n"));
    EXPECT_TRUE(human.out.contains("#2 A001C001_A01.wav\n     project:      (none)\n"));
    // The identifier as the item shows it: eight groups of eight hex digits.
    EXPECT_TRUE(human.out.contains(
        "file UID:     { 060a2b34-01010105-01010f20-13000000-efcdab89-67452301-060e2b34-7f7f2a80 "
        "}"))
        << qPrintable(human.out);
    const QStringList errors = human.err.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(errors.size(), 3) << qPrintable(human.err);
    EXPECT_TRUE(errors[0].startsWith("tarn inspect: " + text + ": "));
    EXPECT_TRUE(errors[1].contains(shortPmr) && errors[1].contains("media file index"));
    EXPECT_TRUE(errors[2].contains(missing) && errors[2].contains("no such file"));

    const CliResult json = inspect({"--json", text, bin});
    EXPECT_EQ(json.exitCode, 1);
    const QJsonArray files = filesOf(json);
    ASSERT_EQ(files.size(), 2);
    EXPECT_TRUE(files[0].toObject().contains("error"));
    EXPECT_FALSE(files[1].toObject().contains("error"));

    EXPECT_EQ(inspect({}).exitCode, 2);
    const CliResult unknown = inspect({"--nope", "x.pmr"});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_TRUE(unknown.err.contains("unknown option"));
}

}  // namespace
