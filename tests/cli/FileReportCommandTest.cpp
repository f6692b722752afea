#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "AvbWriter.h"
#include "FixtureFiles.h"
#include "MdbWriter.h"
#include "MxfWriter.h"
#include "PmrWriter.h"
#include "TestSupport.h"
#include "Umid.h"
#include "readers/TarnMXF.h"

namespace {

struct InspectRun {
    int exitCode = -1;
    QString out;
    QString err;
    QJsonArray files() const {
        return QJsonDocument::fromJson(out.toUtf8())
            .object()
            .value(QStringLiteral("files"))
            .toArray();
    }
};

class FileReportCommandTest : public ::testing::Test {
  protected:
    InspectRun inspect(const QStringList& args) {
        const testsupport::ProcessRun run = testsupport::runProcess(
            QStringLiteral(TARN_CLI_PATH), QStringList{QStringLiteral("inspect")} + args,
            {{QStringLiteral("TARN_SETTINGS"), dir.filePath(QStringLiteral("settings.ini"))}});
        return {run.exitCode, QString::fromUtf8(run.out), QString::fromUtf8(run.err)};
    }

    QString write(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(fixtures::writeFile(path, bytes));
        return path;
    }

    static QList<fixtures::PmrEntry> entries() {
        return {fixtures::makePmrEntry(0x0123456789abcdefull, QStringLiteral("A001C001_V01.mxf"),
                                       QStringLiteral("Feature")),
                fixtures::makePmrEntry(0x42, QStringLiteral("A001C001_A01.wav"), QString()),
                fixtures::makePmrEntry(0x77, QStringLiteral("title.mxf"), QStringLiteral("Promo"))};
    }

    QTemporaryDir dir;
};

TEST_F(FileReportCommandTest, ShowsTheHeaderAndEveryEntryOfAnIndex) {
    const InspectRun run =
        inspect({write(QStringLiteral("msmFMID.pmr"), fixtures::writePmr(entries()))});
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.err);
    EXPECT_TRUE(run.out.contains(QStringLiteral("little-endian")));
    EXPECT_TRUE(run.out.contains(QStringLiteral("3 claimed, 3 read")));
    EXPECT_TRUE(
        run.out.contains(QStringLiteral("#1 A001C001_V01.mxf\n     project:      Feature\n")));
    EXPECT_TRUE(
        run.out.contains(QStringLiteral("#2 A001C001_A01.wav\n     project:      (none)\n")));
    // The identifier as the item shows it: eight groups of eight hex digits.
    EXPECT_TRUE(run.out.contains(QStringLiteral(
        "file UID:     { 060a2b34-01010105-01010f20-13000000-efcdab89-67452301-060e2b34-7f7f2a80 "
        "}")))
        << qPrintable(run.out);
}

TEST_F(FileReportCommandTest, JsonGivesTheFactsOfEveryKindOfFile) {
    auto damaged = entries();
    damaged[1].projectLength = 65;
    const QString pmr = write(QStringLiteral("msmFMID.pmr"), fixtures::writePmr(damaged, 2, true));

    fixtures::AvbReference linked{0x99, 0x0202, QStringLiteral("AMA Card")};
    const QString bin =
        write(QStringLiteral("Reel 1.avb"),
              fixtures::writeBinReferences({{0x42}, linked, {0x42}, {0x5, 0x0203}}));

    fixtures::MdbClip clip;
    clip.fileShortUID = 0x42;
    clip.materialShortUID = 0x43;
    clip.clipName = QStringLiteral("A001C001");
    clip.project = QStringLiteral("Feature");
    const QString mdb =
        write(QStringLiteral("msmMMOB.mdb"), fixtures::writeMdb({clip, clip}, true));

    fixtures::MxfSpec mxfClip;
    mxfClip.clipName = QStringLiteral("Interview");
    mxfClip.projectName = QStringLiteral("Documentary");
    mxfClip.fileUMID = fixtures::umidFor(7);
    mxfClip.materialUMID = fixtures::umidFor(8);
    const QString mxf = write(QStringLiteral("clip.mxf"), fixtures::writeMxf(mxfClip));

    const InspectRun run = inspect({QStringLiteral("--json"), pmr, bin, mdb, mxf});
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.err);
    const QJsonArray files = run.files();
    ASSERT_EQ(files.size(), 4) << qPrintable(run.out);

    const QJsonObject p = files[0].toObject();
    EXPECT_EQ(p[QStringLiteral("path")].toString(), pmr);
    EXPECT_EQ(p[QStringLiteral("kind")].toString(), QStringLiteral("pmr"));
    EXPECT_EQ(p[QStringLiteral("byte_order")].toString(), QStringLiteral("big"));
    EXPECT_EQ(p[QStringLiteral("uid_size")].toInt(), 2);
    EXPECT_EQ(p[QStringLiteral("entries_claimed")].toInt(), 3);
    EXPECT_EQ(p[QStringLiteral("entries_read")].toInt(), 1);
    EXPECT_GT(p[QStringLiteral("stopped_at")].toInt(), 12);
    const QJsonObject e = p[QStringLiteral("entries")].toArray().at(0).toObject();
    EXPECT_EQ(e[QStringLiteral("name")].toString(), QStringLiteral("A001C001_V01.mxf"));
    EXPECT_EQ(e[QStringLiteral("project")].toString(), QStringLiteral("Feature"));
    EXPECT_EQ(e[QStringLiteral("file_package_uid")].toString(), QStringLiteral("efcdab8967452301"));
    EXPECT_EQ(e[QStringLiteral("material_package_uid")].toString(),
              QStringLiteral("f0cdab8967452301"));

    const QJsonObject b = files[1].toObject();
    EXPECT_EQ(b[QStringLiteral("kind")].toString(), QStringLiteral("bin"));
    EXPECT_EQ(b[QStringLiteral("references")].toInt(), 2);
    EXPECT_EQ(b[QStringLiteral("short_uids")].toArray(),
              (QJsonArray{QStringLiteral("4200000000000000"), QStringLiteral("9900000000000000")}));

    const QJsonObject m = files[2].toObject();
    EXPECT_EQ(m[QStringLiteral("kind")].toString(), QStringLiteral("mdb"));
    EXPECT_EQ(m[QStringLiteral("byte_order")].toString(), QStringLiteral("big"));
    EXPECT_EQ(m[QStringLiteral("major_version")].toInt(), 1);
    EXPECT_EQ(m[QStringLiteral("compositions")].toInt(), 2);
    EXPECT_EQ(m[QStringLiteral("objects")].toInt(), fixtures::mdbObjectCount({clip, clip}));
    EXPECT_EQ(m[QStringLiteral("toc_entries")].toInt() * 24, m[QStringLiteral("toc_size")].toInt());
    EXPECT_GT(m[QStringLiteral("toc_offset")].toInt(), 0);

    const QJsonObject x = files[3].toObject();
    EXPECT_EQ(x[QStringLiteral("kind")].toString(), QStringLiteral("mxf"));
    EXPECT_EQ(x[QStringLiteral("status")].toInt(), 0);
    EXPECT_EQ(x[QStringLiteral("status_text")].toString(), QStringLiteral("OK"));
    EXPECT_EQ(x[QStringLiteral("clip_name")].toString(), QStringLiteral("Interview"));
    EXPECT_EQ(x[QStringLiteral("project")].toString(), QStringLiteral("Documentary"));
    EXPECT_EQ(x[QStringLiteral("file_package_uid")].toString(),
              QString::fromLatin1(TarnMXF::swapUUIDfromMXFtoTarn(mxfClip.fileUMID).toHex()));
    EXPECT_EQ(x[QStringLiteral("material_package_uid")].toString(),
              QString::fromLatin1(TarnMXF::swapUUIDfromMXFtoTarn(mxfClip.materialUMID).toHex()));
}

TEST_F(FileReportCommandTest, AnUntakenFileGetsOneLineAndStatusOneWhileOthersAreShown) {
    const QString text = write(QStringLiteral("notes.txt"), QByteArray("not media\n"));
    const QString shortPmr =
        write(QStringLiteral("amaFMID.pmr"), fixtures::writePmr(entries()).left(29));
    const QString bin = write(QStringLiteral("Reel.avb"), fixtures::writeBin({0x42}));
    const QString missing = dir.filePath(QStringLiteral("gone.mdb"));

    const InspectRun human = inspect({text, bin, shortPmr, missing});
    EXPECT_EQ(human.exitCode, 1);
    EXPECT_TRUE(human.out.contains(QStringLiteral("{ 4200000000000000 }")));
    const QStringList errors = human.err.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(errors.size(), 3) << qPrintable(human.err);
    EXPECT_TRUE(errors[0].startsWith(QStringLiteral("tarn inspect: %1: ").arg(text)));
    EXPECT_TRUE(errors[1].contains(shortPmr) &&
                errors[1].contains(QStringLiteral("media file index")));
    EXPECT_TRUE(errors[2].contains(missing) && errors[2].contains(QStringLiteral("no such file")));

    const InspectRun json = inspect({QStringLiteral("--json"), text, bin});
    EXPECT_EQ(json.exitCode, 1);
    const QJsonArray files = json.files();
    ASSERT_EQ(files.size(), 2);
    EXPECT_TRUE(files[0].toObject().contains(QStringLiteral("error")));
    EXPECT_FALSE(files[1].toObject().contains(QStringLiteral("error")));
}

TEST_F(FileReportCommandTest, IndexesAndBinsAreKnownByTheirFirstBytes) {
    const QString pmr = write(QStringLiteral("index.dat"), fixtures::writePmr(entries(), 8, true));
    const QString bin = write(QStringLiteral("reel-copy"), fixtures::writeBin({1, 2}));
    const InspectRun run = inspect({QStringLiteral("--json"), pmr, bin});
    EXPECT_EQ(run.exitCode, 0);
    const QJsonArray files = run.files();
    ASSERT_EQ(files.size(), 2);
    EXPECT_EQ(files[0].toObject()[QStringLiteral("kind")].toString(), QStringLiteral("pmr"));
    EXPECT_EQ(files[0].toObject()[QStringLiteral("entries_read")].toInt(), 3);
    EXPECT_EQ(files[1].toObject()[QStringLiteral("kind")].toString(), QStringLiteral("bin"));
}

TEST_F(FileReportCommandTest, UsageErrors) {
    EXPECT_EQ(inspect({}).exitCode, 2);
    const InspectRun unknown = inspect({QStringLiteral("--nope"), QStringLiteral("x.pmr")});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_TRUE(unknown.err.contains(QStringLiteral("unknown option")));
}

}  // namespace
