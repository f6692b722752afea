#include <gtest/gtest.h>

#include <QtEndian>

#include "BentoWriter.h"
#include "OmfTestFile.h"
#include "TestSupport.h"
#include "readers/TarnMediafile.h"
#include "status/TarnStatusViewController.h"

namespace {

QByteArray smallContainer(quint16 version = 1) {
    fixtures::BentoWriter w;
    w.addImmediate(0x30000, 66365, w.u32(1));
    return w.finish(version);
}

// Rewrites the label's TOC size.
QByteArray withTocSize(QByteArray file, quint32 size) {
    qToLittleEndian<quint32>(size, file.data() + file.size() - 4);
    return file;
}

// 128 bytes is the smallest container; a wrong magic, a TOC larger than the
// file, an empty or partial TOC are refused.
TEST(OmfLabel, LabelAndTocDecideWhatOpens) {
    const QByteArray file = smallContainer();
    ASSERT_EQ(file.size(), 128);
    // The same container one byte shorter: the TOC moves with it.
    QByteArray shorter = file.mid(1);
    const quint32 tocOffset = qFromLittleEndian<quint32>(shorter.constData() + 127 - 8);
    qToLittleEndian<quint32>(tocOffset - 1, shorter.data() + 127 - 8);
    QByteArray badMagic = file;
    badMagic[badMagic.size() - 24 + 3] = 'x';
    const std::pair<const char*, QByteArray> cases[] = {
        {"128 bytes", file},
        {"127 bytes", shorter},
        {"wrong magic", badMagic},
        {"TOC larger than the file", withTocSize(file, quint32(file.size()) + 1)},
        {"empty TOC", withTocSize(file, 0)},
        {"partial TOC entry", withTocSize(file, 23)},
    };
    for (const auto& [label, bytes] : cases) {
        SCOPED_TRACE(label);
        OmfTestFile f;
        EXPECT_EQ(f.open(bytes, "clip.omf"), bytes == file);
    }

    testsupport::LogCapture log;
    OmfTestFile omf2;
    EXPECT_FALSE(omf2.open(smallContainer(2), "clip.omf"));
    EXPECT_TRUE(log.contains("OMF 2 found at " + omf2.path));
    EXPECT_TRUE(log.contains("OMF 2 not supported"));
}

TEST(OmfLabel, TocRunningPastTheEndKeepsOnlyWholeEntries) {
    // A size within the file length whose entries would run into and past the
    // label: only the entries that lie inside the file are read.
    fixtures::BentoWriter w;
    w.addValue(0x30000, 66145, QByteArray(100, 'a'));
    for (quint32 i = 1; i < 4; ++i) w.addImmediate(0x30000 + i, 66365, w.u32(i));
    const QByteArray file = w.finish();
    ASSERT_EQ(file.size(), 236);
    OmfTestFile f;
    EXPECT_TRUE(f.open(withTocSize(file, 200), "clip.omf"));
    EXPECT_EQ(f.reader->tocEntryCount(), 5u);  // 4 entries and the label read as one
}

// A media database opens only with its clip table; an OMF media file needs
// none. The front counts the database's compositions.
TEST(OmfLabel, DatabasesNeedAClipTableAndTheFrontCountsItsCompositions) {
    fixtures::BentoWriter w;
    w.addValue(1, 0x10216, w.u16(0));
    w.addImmediate(0x30000, 66365, w.u32(1));
    const QByteArray noClips = w.finish();
    OmfTestFile mdb, omf, good;
    EXPECT_FALSE(mdb.open(noClips));
    EXPECT_TRUE(omf.open(noClips, "clip.omf"));
    ASSERT_TRUE(good.open(fixtures::writeMdb(fixtures::omfSeedClips().mid(0, 3))));

    TarnMediafile front;
    EXPECT_FALSE(front.openFile(mdb.path, nullptr));
    EXPECT_EQ(front.getMDBCompositionsCount(), 0u);
    ASSERT_TRUE(front.openFile(good.path, nullptr));
    EXPECT_EQ(front.getMDBCompositionsCount(), 3u);
}

TEST(OmfLabel, ProgressIsShownOnlyWhileTheStatusDisplayRuns) {
    struct Recorder : TarnProgressIndicator {
        void setIndeterminate(bool v) override { calls << QString("indeterminate %1").arg(v); }
        void setMinValue(double v) override { calls << QString("min %1").arg(v); }
        void setMaxValue(double v) override { calls << QString("max %1").arg(v); }
        void setDoubleValue(double v) override { calls << QString("value %1").arg(v); }
        void startAnimation() override { calls << "start"; }
        void stopAnimation() override { calls << "stop"; }
        QStringList calls;
    } running, idle;
    // 7 objects a clip: 2 steps of 256.
    const QByteArray file =
        fixtures::writeMdb(QList<fixtures::MdbClip>(80, fixtures::omfSeedClips()[0]));
    auto* status = TarnStatusViewController::getTheController();
    status->setIsRunning(true);
    OmfTestFile a, b;
    EXPECT_TRUE(a.open(file, "msmMMOB.mdb", &running));
    status->setIsRunning(false);
    EXPECT_EQ(running.calls, (QStringList{"indeterminate 0", "min 0", "max 2", "value 0", "value 1",
                                          "value 2", "value 2"}));
    EXPECT_TRUE(b.open(file, "msmMMOB.mdb", &idle));
    EXPECT_EQ(idle.calls, QStringList{"value 2"});
}

}  // namespace
