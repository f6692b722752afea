#include <gtest/gtest.h>

#include "CliRun.h"
#include "FixtureFiles.h"
#include "PmrWriter.h"
#include "support/TarnFileName.h"

// A volume whose media folder and files have names that are not UTF-8, as a
// volume written by another system may: scanned, shown, copied and deleted
// end to end through the command-line tool.
namespace {

QString raw(const char* bytes) {
    return TarnFileName::decode(QByteArray(bytes));
}

using testsupport::contentOf;
using testsupport::exists;

class RawNamesCliTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QDir().mkpath(target());
        fixtures::writeFile(folder() + "/msmFMID.pmr",
                            fixtures::writePmr({fixtures::makePmrEntry(1, listed(), "Doc")}));
        fixtures::writeFile(folder() + '/' + listed(), QByteArray(700, 'm'));
        fixtures::writeFile(folder() + '/' + unlisted(), QByteArray(10, 'u'));
    }
    QString volume() const { return run_.tempPath("vol"); }
    QString folder() const { return volume() + "/Avid MediaFiles/MXF/" + raw("\xFF\xFE_folder"); }
    QString target() const { return run_.tempPath("copies"); }
    static QString listed() { return raw("caf\xE9.mxf"); }
    static QString unlisted() { return raw("\xE9t\xE9.wav"); }
    CliResult tarn(const QStringList& args) const {
        return run_(args + QStringList{"--volume", volume()});
    }

    CliRun run_;
};

TEST_F(RawNamesCliTest, ScannedShownCopiedAndDeletedWithTheirBytes) {
    // Scanned as existing, with their sizes; shown with replacement characters.
    const CliResult scan = tarn({"scan", "--format", "json"});
    ASSERT_EQ(scan.exitCode, 0) << qPrintable(scan.err);
    ASSERT_EQ(scan.items().size(), 2) << qPrintable(scan.out);
    QMap<QString, qint64> sizes;
    for (const QJsonValue& item : scan.items()) {
        EXPECT_TRUE(item["exists"].toBool());
        EXPECT_TRUE(item["path"].toString().contains(QStringLiteral("/\uFFFD\uFFFD_folder/")));
        sizes.insert(item["file_name"].toString(), item["size"].toInteger());
    }
    EXPECT_EQ(sizes, (QMap<QString, qint64>{{QStringLiteral("caf\uFFFD.mxf"), 700},
                                            {QStringLiteral("\uFFFDt\uFFFD.wav"), 10}}));

    const CliResult copy =
        tarn({"copy", "--to", target(), "--no-project-folders", "--no-type-folders", "--sure"});
    ASSERT_EQ(copy.exitCode, 0) << qPrintable(copy.out) << qPrintable(copy.err);
    EXPECT_EQ(contentOf(target() + '/' + listed()), QByteArray(700, 'm'));
    EXPECT_EQ(contentOf(target() + '/' + unlisted()), QByteArray(10, 'u'));
    EXPECT_EQ(contentOf(folder() + '/' + listed()), QByteArray(700, 'm'));

    const CliResult remove = tarn({"delete", "--sure"});
    ASSERT_EQ(remove.exitCode, 0) << qPrintable(remove.out) << qPrintable(remove.err);
    EXPECT_FALSE(exists(folder() + '/' + listed()));
    EXPECT_FALSE(exists(folder() + '/' + unlisted()));
    EXPECT_TRUE(exists(folder() + "/msmFMID.pmr"));
    // (How the Trash records such a name: the Trash test.)
    EXPECT_EQ(contentOf(run_.dataHome() + "/Trash/files/" + listed()), QByteArray(700, 'm'));
}

TEST_F(RawNamesCliTest, MovedByRenameIntoNewFoldersWithTheIndex) {
    const CliResult move = tarn({"move", "--to", target(), "--sure"});
    ASSERT_EQ(move.exitCode, 0) << qPrintable(move.out) << qPrintable(move.err);
    EXPECT_FALSE(exists(folder() + '/' + listed()));
    EXPECT_EQ(contentOf(target() + "/Doc/MXF/" + listed()), QByteArray(700, 'm'));
    EXPECT_EQ(contentOf(target() + "/_00_TRN_UNMANAGED_FILES/WAV/" + unlisted()),
              QByteArray(10, 'u'));
    // A new media folder gets the index of the folder its first file came from.
    EXPECT_EQ(contentOf(target() + "/Doc/MXF/msmFMID.pmr"), contentOf(folder() + "/msmFMID.pmr"));
}

}  // namespace
