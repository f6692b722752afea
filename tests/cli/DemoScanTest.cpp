#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QMap>

#include "CliRun.h"
#include "DemoVolume.h"
#include "items/TarnDatabaseItem.h"
#include "items/TarnVocabulary.h"

namespace {

QString hexOf(const QByteArray& uid, quint32 uidSize) {
    if (uidSize == 8) return QString::fromLatin1(uid.toHex());
    if (uidSize == 2) return QString::fromLatin1(uid.mid(16, 8).toHex());
    return QString();
}

QJsonArray rate(const TarnRate& r) {
    return QJsonArray{qint64(r.numerator), qint64(r.denominator)};
}

class DemoScanTest : public ::testing::Test {
  protected:
    void SetUp() override {
        root_ = run_.tempPath("Demo Volume");
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(root_, &error, &demo_)) << qPrintable(error);
    }
    // The JSON items of a scan of the volume.
    QJsonArray items(const QStringList& more) const {
        return run_(QStringList{"scan", "--volume", root_, "--format", "json"} + more).items();
    }
    QStringList paths(const QStringList& more) const {
        QStringList shown;
        for (const QJsonValue& v : items(more)) shown << v.toObject().value("path").toString();
        return sorted(shown);
    }
    // The index and media database files of the demo volume.
    QStringList databaseFiles() const {
        QStringList files;
        for (const char* folder :
             {"Avid MediaFiles/MXF/1", "Avid MediaFiles/MXF/2", "OMFI MediaFiles"})
            for (const char* name : {"msmFMID.pmr", "msmMMOB.mdb"})
                files << root_ + "/" + folder + "/" + name;
        return sorted(files);
    }

    CliRun run_;
    QString root_;
    fixtures::DemoVolumeDescription demo_;
};

}  // namespace

// Every item the writers put on the volume comes out of the scan with what
// the index, the media database or the file's own header says about it.
TEST_F(DemoScanTest, JsonMatchesWhatTheWritersWrote) {
    const CliResult r = run_({"scan", "--volume", root_, "--format", "json", "--show-missing"});
    ASSERT_EQ(r.exitCode, 0) << qPrintable(r.err);
    QMap<QString, QJsonObject> byPath;
    for (const QJsonValue& v : r.items())
        byPath.insert(v.toObject().value("path").toString(), v.toObject());
    EXPECT_EQ(byPath.size(), demo_.media.size());

    const TarnVocabulary vocabulary;
    for (const fixtures::DemoMedia& m : demo_.media) {
        SCOPED_TRACE(qPrintable(m.fileName));
        ASSERT_TRUE(byPath.contains(m.path)) << qPrintable(m.path);
        const QJsonObject item = byPath.value(m.path);
        EXPECT_EQ(item.value("file_name").toString(), m.fileName);
        EXPECT_EQ(item.value("clip_name").toString(), m.clipName);
        EXPECT_EQ(item.value("project").toString(), m.project);
        EXPECT_EQ(item.value("uid_size").toInt(), int(m.uidSize));
        EXPECT_EQ(item.value("file_package_uid").toString(), hexOf(m.fileUID, m.uidSize));
        EXPECT_EQ(item.value("material_package_uid").toString(), hexOf(m.materialUID, m.uidSize));
        EXPECT_EQ(item.value("exists").toBool(), m.exists);
        EXPECT_EQ(item.value("referenced").toBool(), m.referenced);
        EXPECT_EQ(item.value("good_umid").toBool(), m.goodUmid);
        EXPECT_EQ(item.value("portable_name").toBool(), m.portableName);
        EXPECT_EQ(item.value("ama").toBool(), m.ama);
        EXPECT_EQ(item.value("size").toInteger(), qint64(m.size));
        EXPECT_EQ(item.value("usage_code").toInt(), m.usageCode);
        EXPECT_EQ(item.value("kind").toString(), TarnDatabaseItem::kindForUsageCode(m.usageCode));
        EXPECT_EQ(item.value("frame_rate").toArray(), rate(m.frameRate));
        EXPECT_EQ(item.value("bits").toInt(), int(m.bits));
        EXPECT_EQ(item.value("resolution_id").toInteger(), qint64(m.resolutionID));
        EXPECT_EQ(item.value("fourcc").toString(), QString::fromLatin1(m.fourCC));
        if (m.audio) {
            EXPECT_EQ(item.value("compression").toString(), "Audio");
            EXPECT_EQ(item.value("sample_rate").toArray(), rate(m.sampleRate));
        } else if (m.resolutionID) {
            EXPECT_EQ(item.value("compression").toString(),
                      vocabulary.resolutionIDDictionary().at(m.resolutionID));
        }
    }
    // Projects of the volume, each with its shown files.
    QStringList projects;
    for (const QJsonValue& p : r.json().value("projects").toArray())
        projects << p.toObject().value("name").toString();
    for (const QString& project : demo_.projects) EXPECT_TRUE(projects.contains(project));
}

TEST_F(DemoScanTest, DefaultViewHidesTheMissingFileAndFlagsProblems) {
    qsizetype missing = 0, nonPortable = 0, badUmid = 0;
    for (const fixtures::DemoMedia& m : demo_.media) {
        missing += m.exists ? 0 : 1;
        nonPortable += m.portableName ? 0 : 1;
        badUmid += m.goodUmid ? 0 : 1;
    }
    ASSERT_GE(missing, 1);
    EXPECT_EQ(items({}).size(), demo_.media.size() - missing);
    EXPECT_EQ(items({"--non-portable"}).size(), nonPortable);
    EXPECT_EQ(items({"--bad-umid"}).size(), badUmid);
}

TEST_F(DemoScanTest, DemoCommandWritesOnceAndShowsTableAndSummary) {
    const QString dir = run_.tempPath("demo-here");
    const CliResult first = run_({"demo", dir});
    ASSERT_EQ(first.exitCode, 0) << qPrintable(first.err);
    for (const QString text : {"Wrote the demo volume", "File Name", "Projects summary"})
        EXPECT_TRUE(first.out.contains(text)) << qPrintable(text);
    for (const QString& project : demo_.projects) EXPECT_TRUE(first.out.contains(project));
    EXPECT_TRUE(QDir(dir + "/Avid MediaFiles/MXF/1").exists());

    const CliResult second = run_({"demo", dir});
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_FALSE(second.out.contains("Wrote the demo volume"));
    // The same scan, so the same report after the first line.
    EXPECT_EQ(second.out, first.out.section('\n', 1));
}

TEST_F(DemoScanTest, BinsNarrowAndWidenTheViewInTheOrderGiven) {
    ASSERT_EQ(demo_.bins.size(), 2);
    const fixtures::DemoBin& harbour = demo_.bins.at(0);
    const fixtures::DemoBin& lighthouse = demo_.bins.at(1);
    const QStringList all = paths({});
    QStringList rest = all;
    for (const QString& p : harbour.referencedPaths) rest.removeAll(p);
    const struct Case {
        QStringList args;
        QStringList shown;
    } cases[] = {
        {{"--intersect", harbour.path}, sorted(harbour.referencedPaths)},
        {{"--intersect", harbour.path, "--add", lighthouse.path},
         sorted(harbour.referencedPaths + lighthouse.referencedPaths)},
        // An intersection starts from the whole database again: the last one decides.
        {{"--intersect", harbour.path, "--intersect", lighthouse.path},
         sorted(lighthouse.referencedPaths)},
        {{"--subtract", harbour.path}, rest},
        {{"--subtract", root_ + "/none.avb"}, all},  // a bin that cannot be read changes nothing
    };
    for (const Case& c : cases) EXPECT_EQ(paths(c.args), c.shown) << qPrintable(c.args.join(' '));
}

TEST_F(DemoScanTest, DatabasesAreListedAndTrashedOnlyWhenSure) {
    const CliResult list = run_({"databases", "--volume", root_});
    EXPECT_EQ(list.exitCode, 0) << qPrintable(list.err);
    EXPECT_TRUE(list.out.startsWith("folder"));
    EXPECT_TRUE(list.out.endsWith("6 database files\n")) << qPrintable(list.out);
    for (const QString& path : databaseFiles()) {
        const QFileInfo info(path);
        EXPECT_TRUE(list.out.contains(QRegularExpression(
            "(?m)^" + QRegularExpression::escape(info.path()) + " +" + info.fileName() + " ")))
            << qPrintable(path);
    }
    const struct {
        QStringList args;
        int exitCode;
    } cases[] = {
        {{"--delete"}, 2},
        {{"--sure"}, 2},  // --sure alone is a mistake
        {{"--bogus"}, 2},
        {{"--delete", "--sure"}, 0},
    };
    for (const auto& c : cases) {
        const CliResult r = run_(QStringList{"databases", "--volume", root_} + c.args);
        EXPECT_EQ(r.exitCode, c.exitCode) << qPrintable(c.args.join(' ')) << qPrintable(r.err);
        for (const QString& path : databaseFiles())
            EXPECT_EQ(QFileInfo::exists(path), c.exitCode != 0) << qPrintable(path);
    }
    EXPECT_EQ(testsupport::trashedPaths(run_.dataHome()), databaseFiles());
    EXPECT_TRUE(run_({"databases", "--volume", root_}).out.endsWith("0 database files\n"));
}
