// Reading one entry of a media index file into an item.
#include <gtest/gtest.h>

#include <cstring>

#include "FixtureFiles.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"

namespace {

QByteArray umid(quint8 seed) {
    QByteArray u(32, '\0');
    const char label[4] = {0x06, 0x0A, 0x2B, 0x34};
    std::memcpy(u.data(), label, 4);
    for (int i = 4; i < 32; ++i) u[i] = char(seed + i);
    return u;
}

QByteArray shortUid(quint8 seed) {
    QByteArray u(8, '\0');
    for (int i = 0; i < 8; ++i) u[i] = char(seed + i);
    return u;
}

// One index entry: file identifier, name count + name, project count +
// project, material identifier. Counts in big-endian order when `bigEndian`.
QByteArray entry(const QByteArray& fileUid, const QByteArray& name, const QByteArray& project,
                 const QByteArray& materialUid, bool bigEndian = false) {
    QByteArray out = fileUid;
    fixtures::putU16(out, quint16(name.size()), bigEndian);
    out += name;
    fixtures::putU16(out, quint16(project.size()), bigEndian);
    out += project;
    out += materialUid;
    return out;
}

// The standard entry used below: 32-byte identifiers, "clip.mxf" (8) and "Proj" (4).
// Offsets: file UID 0..31, name count 32, name 34..41, project count 42,
// project 44..47, material UID 48..79.
QByteArray standardEntry(bool bigEndian = false) {
    return entry(umid(1), "clip.mxf", "Proj", umid(101), bigEndian);
}

bool isZero(const quint8* p, int n) {
    for (int i = 0; i < n; ++i)
        if (p[i]) return false;
    return true;
}

struct Parsed {
    TarnDatabaseItem item;
    Parsed(const QByteArray& bytes, quint32 uidSize, bool swap = false) {
        item.setupWithPmrBytes(bytes.constData(), bytes.size(), uidSize, swap);
    }
    bool hasFileUID() const { return !isZero(item.filePackageUID, 32); }
    bool hasMaterialUID() const { return !isZero(item.materialPackageUID, 32); }
};

}  // namespace

TEST(ItemFromIndex, ReadsACompleteEntryInHostOrderAndSwapped) {
    for (bool swapped : {false, true}) {
        // A trailing byte: a field counts only when something follows it.
        QByteArray bytes = standardEntry(swapped) + QByteArray(1, '\0');
        Parsed p(bytes, 8, swapped);
        EXPECT_EQ(p.item.DB_SizeofUID, 8u);
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(p.item.filePackageUID), 32), umid(1));
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(p.item.materialPackageUID), 32),
                  umid(101));
        EXPECT_EQ(p.item.DB_ClipName, "clip.mxf");
        EXPECT_EQ(p.item.DB_ProjectName, "Proj");
        EXPECT_TRUE(p.item.DB_isReferenced);
        EXPECT_TRUE(p.item.DB_isGoodUUID);
        // The copy keeps the entry, its counts turned to host order where swapped.
        ASSERT_EQ(p.item.DB_pmrField.size(), bytes.size());
        EXPECT_EQ(quint8(p.item.DB_pmrField[32]), 8);
        EXPECT_EQ(quint8(p.item.DB_pmrField[33]), 0);
        EXPECT_EQ(quint8(p.item.DB_pmrField[42]), 4);
        EXPECT_EQ(quint8(p.item.DB_pmrField[43]), 0);
    }
}

TEST(ItemFromIndex, SwappedCountsReadWithoutTheFlagAreRejected) {
    // 0x0800 = 2048 is above 255: no name, and the parse stops there.
    Parsed p(standardEntry(true) + QByteArray(1, '\0'), 8, false);
    EXPECT_TRUE(p.hasFileUID());
    EXPECT_TRUE(p.item.DB_ClipName.isNull());
    EXPECT_TRUE(p.item.DB_ProjectName.isNull());
    EXPECT_FALSE(p.hasMaterialUID());
}

TEST(ItemFromIndex, ShortIdentifiersFillBytes16To23) {
    QByteArray bytes = entry(shortUid(0x40), "a.mxf", "P", shortUid(0x80)) + QByteArray(1, '\0');
    Parsed p(bytes, 2);
    EXPECT_EQ(p.item.DB_SizeofUID, 2u);
    EXPECT_TRUE(isZero(p.item.filePackageUID, 16));
    EXPECT_TRUE(isZero(p.item.filePackageUID + 24, 8));
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(p.item.filePackageUID + 16), 8),
              shortUid(0x40));
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(p.item.materialPackageUID + 16), 8),
              shortUid(0x80));
    EXPECT_EQ(p.item.getFileUIDString(), "{ 4041424344454647 }");
    EXPECT_EQ(p.item.DB_ClipName, "a.mxf");
    // Short identifiers carry no UMID label and are always good.
    EXPECT_TRUE(p.item.DB_isGoodUUID);
}

TEST(ItemFromIndex, TruncationKeepsWhatWasReadBeforeTheCut) {
    const QByteArray full = standardEntry() + QByteArray(1, '\0');
    struct Cut {
        int length;
        bool fileUid, name, project, materialUid;
    };
    // Each field needs at least one byte after it.
    const Cut cuts[] = {
        {1, false, false, false, false}, {32, false, false, false, false},
        {33, true, false, false, false}, {34, true, false, false, false},
        {35, true, false, false, false}, {42, true, false, false, false},
        {43, true, true, false, false},  {44, true, true, false, false},
        {45, true, true, false, false},  {48, true, true, false, false},
        {49, true, true, true, false},   {80, true, true, true, false},
        {81, true, true, true, true},
    };
    for (const Cut& cut : cuts) {
        Parsed p(full.left(cut.length), 8);
        SCOPED_TRACE(cut.length);
        EXPECT_EQ(p.hasFileUID(), cut.fileUid);
        EXPECT_EQ(!p.item.DB_ClipName.isNull(), cut.name);
        EXPECT_EQ(!p.item.DB_ProjectName.isNull(), cut.project);
        EXPECT_EQ(p.hasMaterialUID(), cut.materialUid);
        EXPECT_EQ(p.item.DB_pmrField.size(), cut.length);
        EXPECT_TRUE(p.item.DB_isReferenced);
    }
}

TEST(ItemFromIndex, NameAndProjectLengthLimits) {
    const QByteArray pad(1, '\0');
    {
        Parsed p(entry(umid(1), "", "Proj", umid(2)) + pad, 8);
        EXPECT_TRUE(p.item.DB_ClipName.isNull());
        EXPECT_TRUE(p.item.DB_ProjectName.isNull());
        EXPECT_FALSE(p.hasMaterialUID());
    }
    {
        Parsed p(entry(umid(1), QByteArray(256, 'n'), "Proj", umid(2)) + pad, 8);
        EXPECT_TRUE(p.item.DB_ClipName.isNull());
        EXPECT_TRUE(p.item.DB_ProjectName.isNull());
    }
    {
        Parsed p(entry(umid(1), QByteArray(255, 'n'), "Proj", umid(2)) + pad, 8);
        EXPECT_EQ(p.item.DB_ClipName.size(), 255);
        EXPECT_EQ(p.item.DB_ProjectName, "Proj");
    }
    {
        Parsed p(entry(umid(1), "clip.mxf", QByteArray(65, 'p'), umid(2)) + pad, 8);
        EXPECT_EQ(p.item.DB_ClipName, "clip.mxf");
        EXPECT_TRUE(p.item.DB_ProjectName.isNull());
        EXPECT_FALSE(p.hasMaterialUID());
    }
    {
        Parsed p(entry(umid(1), "clip.mxf", QByteArray(64, 'p'), umid(2)) + pad, 8);
        EXPECT_EQ(p.item.DB_ProjectName, QString(64, QLatin1Char('p')));
        EXPECT_TRUE(p.hasMaterialUID());
    }
    {
        // No project: the name stays unset and the material identifier is still read.
        Parsed p(entry(umid(1), "clip.mxf", "", umid(2)) + pad, 8);
        EXPECT_TRUE(p.item.DB_ProjectName.isNull());
        EXPECT_EQ(p.item.get_DB_ProjectName(), "_00_TRN_NULL_PROJECT_NAME");
        EXPECT_TRUE(p.hasMaterialUID());
    }
}

TEST(ItemFromIndex, ALaterEntryOverwritesAnEarlierOne) {
    const QByteArray pad(1, '\0');
    {
        Parsed p(standardEntry() + entry(umid(50), "second.wav", "Other", umid(150)) + pad, 8);
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(p.item.filePackageUID), 32), umid(50));
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(p.item.materialPackageUID), 32),
                  umid(150));
        EXPECT_EQ(p.item.DB_ClipName, "second.wav");
        EXPECT_EQ(p.item.DB_ProjectName, "Other");
        EXPECT_EQ(p.item.DB_CompressionString, "Audio");
    }
    {
        // A broken second entry replaces the identifier it got to, nothing else.
        Parsed p(standardEntry() + entry(umid(50), "", "Other", umid(150)) + pad, 8);
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(p.item.filePackageUID), 32), umid(50));
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(p.item.materialPackageUID), 32),
                  umid(101));
        EXPECT_EQ(p.item.DB_ClipName, "clip.mxf");
        EXPECT_EQ(p.item.DB_ProjectName, "Proj");
    }
}

TEST(ItemFromIndex, RejectsAWrongUIDSizeOrNoBytes) {
    const QByteArray bytes = standardEntry() + QByteArray(1, '\0');
    for (quint32 size : {0u, 1u, 4u, 32u}) {
        Parsed p(bytes, size);
        EXPECT_EQ(p.item.DB_SizeofUID, 0u);
        EXPECT_TRUE(p.item.DB_pmrField.isEmpty());
        EXPECT_TRUE(p.item.DB_ClipName.isNull());
        EXPECT_FALSE(p.item.DB_isReferenced);
    }
    TarnDatabaseItem item;
    item.setupWithPmrBytes(nullptr, 100, 8, false);
    item.setupWithPmrBytes(bytes.constData(), 0, 8, false);
    EXPECT_EQ(item.DB_SizeofUID, 0u);
    EXPECT_FALSE(item.DB_isReferenced);
}

TEST(ItemFromIndex, AudioExtensionsMarkTheCompression) {
    for (const char* name : {"a.aif", "b.WAV", "c.Sd2", "d.lrc"}) {
        Parsed p(entry(shortUid(1), name, "P", shortUid(2)) + QByteArray(1, '\0'), 2);
        EXPECT_EQ(QByteArray(p.item.CompressionFourCC, 4), "_AUD") << name;
        EXPECT_EQ(p.item.DB_CompressionString, "Audio") << name;
    }
    Parsed video(entry(shortUid(1), "v.mxf", "P", shortUid(2)) + QByteArray(1, '\0'), 2);
    EXPECT_TRUE(video.item.DB_CompressionString.isNull());
    EXPECT_TRUE(isZero(reinterpret_cast<const quint8*>(video.item.CompressionFourCC), 4));
}

TEST(ItemFromIndex, UMIDWithoutTheSMPTELabelIsLoggedOnce) {
    for (int which = 0; which < 2; ++which) {
        QByteArray file = umid(1), material = umid(101);
        (which == 0 ? file : material)[0] = 0x07;
        testsupport::LogCapture log;
        Parsed p(entry(file, "bad.mxf", "P", material) + QByteArray(1, '\0'), 8);
        EXPECT_FALSE(p.item.DB_isGoodUUID);
        const QString line =
            QStringLiteral("UMID: %1 :: File: bad.mxf \n").arg(p.item.getFileUIDString());
        EXPECT_EQ(log.count(line), 1) << log.text().toStdString();
        EXPECT_TRUE(
            log.contains(QStringLiteral("(TarnDatabaseItem::checkUUID) (TarnDatabaseItem.cpp:")));
    }
    testsupport::LogCapture log;
    Parsed good(standardEntry() + QByteArray(1, '\0'), 8);
    EXPECT_TRUE(good.item.DB_isGoodUUID);
    EXPECT_FALSE(log.contains(QStringLiteral("UMID:")));
}

TEST(ItemFromIndex, UMIDTextGroupsEightHexDigits) {
    Parsed p(standardEntry() + QByteArray(1, '\0'), 8);
    EXPECT_EQ(p.item.getFileUIDString(),
              "{ 060a2b34-05060708-090a0b0c-0d0e0f10-11121314-15161718-191a1b1c-1d1e1f20 }");
    EXPECT_TRUE(p.item.getStringForUID(nullptr).isNull());
    // The layout follows the item's identifier size, whichever buffer is given.
    p.item.DB_SizeofUID = 2;
    EXPECT_EQ(p.item.getMaterialUIDString(), "{ 75767778797a7b7c }");
}
