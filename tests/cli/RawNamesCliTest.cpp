#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "FixtureFiles.h"
#include "PmrWriter.h"
#include "TestSupport.h"
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
    QString volume() const { return tmp.path() + "/vol"; }
    QString folder() const { return volume() + "/Avid MediaFiles/MXF/" + raw("\xFF\xFE_folder"); }
    QString target() const { return tmp.path() + "/copies"; }
    static QString listed() { return raw("caf\xE9.mxf"); }
    static QString unlisted() { return raw("\xE9t\xE9.wav"); }

    struct Result {
        int code = -1;
        QByteArray out;
        QByteArray err;
    };
    Result tarn(QStringList args) const {
        args << QStringLiteral("--volume") << volume();
        const testsupport::ProcessRun run = testsupport::runProcess(
            QStringLiteral(TARN_CLI_PATH), args,
            {{QStringLiteral("TARN_SETTINGS"), tmp.path() + "/settings.ini"},
             {QStringLiteral("XDG_DATA_HOME"), tmp.path() + "/data"}});
        return {run.exitCode, run.out, run.err};
    }

    testsupport::TempDir tmp;
};

TEST_F(RawNamesCliTest, ScannedShownCopiedAndDeletedWithTheirBytes) {
    // Scanned as existing, with their sizes; shown with replacement characters.
    const Result scan = tarn({"scan", "--format", "json"});
    ASSERT_EQ(scan.code, 0) << scan.err.constData();
    const QJsonArray items = QJsonDocument::fromJson(scan.out).object().value("items").toArray();
    ASSERT_EQ(items.size(), 2) << scan.out.constData();
    QMap<QString, qint64> sizes;
    for (const QJsonValue& v : items) {
        const QJsonObject item = v.toObject();
        EXPECT_TRUE(item.value("exists").toBool());
        EXPECT_TRUE(
            item.value("path").toString().contains(QStringLiteral("/\uFFFD\uFFFD_folder/")));
        sizes.insert(item.value("file_name").toString(), item.value("size").toInteger());
    }
    EXPECT_EQ(sizes, (QMap<QString, qint64>{{QStringLiteral("caf\uFFFD.mxf"), 700},
                                            {QStringLiteral("\uFFFDt\uFFFD.wav"), 10}}));

    const Result copy =
        tarn({"copy", "--to", target(), "--no-project-folders", "--no-type-folders", "--sure"});
    ASSERT_EQ(copy.code, 0) << copy.out.constData() << copy.err.constData();
    EXPECT_EQ(contentOf(target() + '/' + listed()), QByteArray(700, 'm'));
    EXPECT_EQ(contentOf(target() + '/' + unlisted()), QByteArray(10, 'u'));
    EXPECT_EQ(contentOf(folder() + '/' + listed()), QByteArray(700, 'm'));

    const Result remove = tarn({"delete", "--sure"});
    ASSERT_EQ(remove.code, 0) << remove.out.constData() << remove.err.constData();
    EXPECT_FALSE(exists(folder() + '/' + listed()));
    EXPECT_FALSE(exists(folder() + '/' + unlisted()));
    EXPECT_TRUE(exists(folder() + "/msmFMID.pmr"));
    const QString trash = tmp.path() + "/data/Trash";
    EXPECT_EQ(contentOf(trash + "/files/" + listed()), QByteArray(700, 'm'));
    const QByteArray info = contentOf(trash + "/info/" + listed() + ".trashinfo");
    EXPECT_TRUE(info.startsWith("[Trash Info]\nPath=/")) << info.constData();
    EXPECT_TRUE(info.contains("/%FF%FE_folder/caf%E9.mxf\n")) << info.constData();
}

TEST_F(RawNamesCliTest, MovedByRenameIntoNewFoldersWithTheIndex) {
    const Result move = tarn({"move", "--to", target(), "--sure"});
    ASSERT_EQ(move.code, 0) << move.out.constData() << move.err.constData();
    EXPECT_FALSE(exists(folder() + '/' + listed()));
    EXPECT_EQ(contentOf(target() + "/Doc/MXF/" + listed()), QByteArray(700, 'm'));
    EXPECT_EQ(contentOf(target() + "/_00_TRN_UNMANAGED_FILES/WAV/" + unlisted()),
              QByteArray(10, 'u'));
    // A new media folder gets the index of the folder its first file came from.
    EXPECT_EQ(contentOf(target() + "/Doc/MXF/msmFMID.pmr"), contentOf(folder() + "/msmFMID.pmr"));
}

}  // namespace
