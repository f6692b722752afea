#include <gtest/gtest.h>

#include <QFileInfo>

#include "BentoWriter.h"
#include "OmfTestFile.h"

namespace {

// A source entries list that repeats one identifier, leading to an attribute
// list as long: the work of completing items stays linear in the lists'
// length, and items mapped to the same objects are answered from memory (or
// worked out again when that is cheap: a few entries).
TEST(OmfWork, LongSourceListsCostWorkLinearInTheirLength) {
    fixtures::MdbClip clip = fixtures::omfSeedClips()[0];
    clip.project = "Long Way";
    for (int entries : {1024, 16384, 65535}) {
        SCOPED_TRACE(entries);
        OmfTestFile f;
        ASSERT_TRUE(f.open(fixtures::writeMdbWithLongSourceList(clip, entries)));
        EXPECT_TRUE(f.complete(clip).startsWith("Clip 0 | Long Way |"));
        const quint64 firstWork = f.reader->workDone();
        EXPECT_LE(firstWork, 3u * quint64(entries) + 100);
        for (int i = 0; i < 100; ++i) EXPECT_TRUE(f.complete(clip).contains("| Long Way |"));
        EXPECT_LE(f.reader->workDone(), firstWork + 100 * 64);
    }
}

// Many attribute lists whose entries all point at one long stretch of
// records: remembering answers per object does not help, the allowances do.
TEST(OmfWork, SharedListValuesCannotOutgrowTheAllowances) {
    constexpr int kFiles = 512;
    fixtures::BentoWriter w;
    QByteArray fileTable = w.u16(kFiles);
    for (quint32 k = 0; k < kFiles; ++k) fileTable += w.tableRecord(0xF000 + k, 0x30000 + 2 * k);
    w.addValue(1, 0x101E9, w.u16(0));
    w.addValue(1, 0x10216, fileTable);
    // The project attribute first, then one missing object over and over.
    QList<quint32> records(65535, 0x7FFFFFFF);
    records[0] = 0x20000;
    const QByteArray list = w.objectList(records);
    const quint32 listAt = w.appendData(list);
    w.addValue(0x20000, 66135, QByteArray("_PJNAME\0", 8));
    w.addValue(0x20000, 66200, QByteArray("Shared\0", 7));
    for (quint32 k = 0; k < kFiles; ++k) {
        w.addImmediate(0x30000 + 2 * k, 66190, w.objectRef(0x30001 + 2 * k));
        w.addEntry(0x30001 + 2 * k, 66155, 26, listAt, quint32(list.size()), 1);
    }
    OmfTestFile f;
    ASSERT_TRUE(f.open(w.finish()));
    EXPECT_GE(f.reader->databaseWorkAllowance(), quint64(QFileInfo(f.path).size()));

    int withProject = 0;
    for (quint32 k = 0; k < kFiles; ++k) {
        const quint64 before = f.reader->workDone();
        if (f.complete(0xF000 + k, 0).contains("| Shared |")) ++withProject;
        EXPECT_LE(f.reader->workDone() - before, f.reader->itemWorkAllowance());
    }
    EXPECT_LE(f.reader->workDone(), f.reader->databaseWorkAllowance());
    // The first items are answered in full, the rest once the allowance is spent.
    EXPECT_GT(withProject, 0);
    EXPECT_LT(withProject, kFiles);
}

}  // namespace
