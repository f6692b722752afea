#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
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
        root_ = run_.tempPath(QStringLiteral("Demo Volume"));
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(root_, &error, &demo_)) << qPrintable(error);
    }

    CliRun run_;
    QString root_;
    fixtures::DemoVolumeDescription demo_;
};

}  // namespace

// Every item the writers put on the volume comes out of the scan with what
// the index, the media database or the file's own header says about it.
TEST_F(DemoScanTest, JsonMatchesWhatTheWritersWrote) {
    const CliResult r =
        run_({QStringLiteral("scan"), QStringLiteral("--volume"), root_, QStringLiteral("--format"),
              QStringLiteral("json"), QStringLiteral("--show-missing")});
    ASSERT_EQ(r.exitCode, 0) << qPrintable(r.err);
    QMap<QString, QJsonObject> byPath;
    for (const QJsonValue& v : r.json().value(QStringLiteral("items")).toArray()) {
        byPath.insert(v.toObject().value(QStringLiteral("path")).toString(), v.toObject());
    }
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
            EXPECT_EQ(item.value("compression").toString(), QStringLiteral("Audio"));
            EXPECT_EQ(item.value("sample_rate").toArray(), rate(m.sampleRate));
        } else if (m.resolutionID) {
            EXPECT_EQ(item.value("compression").toString(),
                      vocabulary.resolutionIDDictionary().at(m.resolutionID));
        }
    }

    // Projects of the volume, each with its shown files.
    QStringList projects;
    for (const QJsonValue& p : r.json().value(QStringLiteral("projects")).toArray()) {
        projects.append(p.toObject().value(QStringLiteral("name")).toString());
    }
    for (const QString& project : demo_.projects) EXPECT_TRUE(projects.contains(project));
}

TEST_F(DemoScanTest, DefaultViewHidesTheMissingFileAndFlagsProblems) {
    auto count = [&](const QStringList& more) {
        const CliResult r =
            run_(QStringList{QStringLiteral("scan"), QStringLiteral("--volume"), root_,
                             QStringLiteral("--format"), QStringLiteral("json")} +
                 more);
        return r.json().value(QStringLiteral("items")).toArray().size();
    };
    qsizetype missing = 0, nonPortable = 0, badUmid = 0;
    for (const fixtures::DemoMedia& m : demo_.media) {
        missing += m.exists ? 0 : 1;
        nonPortable += m.portableName ? 0 : 1;
        badUmid += m.goodUmid ? 0 : 1;
    }
    ASSERT_GE(missing, 1);
    EXPECT_EQ(count({}), demo_.media.size() - missing);
    EXPECT_EQ(count({QStringLiteral("--non-portable")}), nonPortable);
    EXPECT_EQ(count({QStringLiteral("--bad-umid")}), badUmid);
}

TEST_F(DemoScanTest, DemoCommandWritesOnceAndShowsTableAndSummary) {
    const QString dir = run_.tempPath(QStringLiteral("demo-here"));
    const CliResult first = run_({QStringLiteral("demo"), dir});
    ASSERT_EQ(first.exitCode, 0) << qPrintable(first.err);
    EXPECT_TRUE(first.out.contains(QLatin1String("Wrote the demo volume")));
    EXPECT_TRUE(first.out.contains(QLatin1String("File Name")));
    EXPECT_TRUE(first.out.contains(QLatin1String("Projects summary")));
    for (const QString& project : demo_.projects) EXPECT_TRUE(first.out.contains(project));
    EXPECT_TRUE(QDir(dir + QStringLiteral("/Avid MediaFiles/MXF/1")).exists());

    const CliResult second = run_({QStringLiteral("demo"), dir});
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_FALSE(second.out.contains(QLatin1String("Wrote the demo volume")));
    // The same scan, so the same report after the first line.
    EXPECT_EQ(second.out, first.out.section(QLatin1Char('\n'), 1));
}

TEST_F(DemoScanTest, BinsNarrowAndWidenTheViewInTheOrderGiven) {
    ASSERT_EQ(demo_.bins.size(), 2);
    const fixtures::DemoBin& harbour = demo_.bins.at(0);
    const fixtures::DemoBin& lighthouse = demo_.bins.at(1);
    auto paths = [&](const QStringList& more) {
        const CliResult r =
            run_(QStringList{QStringLiteral("scan"), QStringLiteral("--volume"), root_,
                             QStringLiteral("--format"), QStringLiteral("json")} +
                 more);
        QStringList shown;
        for (const QJsonValue& v : r.json().value(QStringLiteral("items")).toArray()) {
            shown.append(v.toObject().value(QStringLiteral("path")).toString());
        }
        shown.sort();
        return shown;
    };
    auto sorted = [](QStringList list) {
        list.sort();
        return list;
    };
    const QStringList all = paths({});

    EXPECT_EQ(paths({QStringLiteral("--intersect"), harbour.path}),
              sorted(harbour.referencedPaths));
    EXPECT_EQ(paths({QStringLiteral("--intersect"), harbour.path, QStringLiteral("--add"),
                     lighthouse.path}),
              sorted(harbour.referencedPaths + lighthouse.referencedPaths));
    // An intersection starts from the whole database again: the last one decides.
    EXPECT_EQ(paths({QStringLiteral("--intersect"), harbour.path, QStringLiteral("--intersect"),
                     lighthouse.path}),
              sorted(lighthouse.referencedPaths));
    QStringList rest = all;
    for (const QString& p : harbour.referencedPaths) rest.removeAll(p);
    EXPECT_EQ(paths({QStringLiteral("--subtract"), harbour.path}), rest);
    // A bin that cannot be read changes nothing.
    EXPECT_EQ(paths({QStringLiteral("--subtract"), root_ + QStringLiteral("/none.avb")}), all);
}
