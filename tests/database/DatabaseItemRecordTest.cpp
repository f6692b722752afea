// Reading one entry of a media index file into an item: the field rules that
// the index reader's own tests do not reach.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "FixtureFiles.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"

namespace {

QByteArray umid(quint8 seed) {
    QByteArray u(32, '\0');
    std::memcpy(u.data(), "\x06\x0A\x2B\x34", 4);
    for (int i = 4; i < 32; ++i) u[i] = char(seed + i);
    return u;
}

// One entry: file identifier, name count + name, project count + project,
// material identifier, and one trailing byte (a field counts only when
// something follows it). Offsets for "clip.mxf"/"Proj": file UID 0..31, name
// count 32, name 34..41, project count 42, project 44..47, material UID 48..79.
QByteArray entry(const QByteArray& name = "clip.mxf", const QByteArray& project = "Proj",
                 bool bigEndian = false, const QByteArray& file = umid(1),
                 const QByteArray& material = umid(101)) {
    QByteArray out = file;
    fixtures::putU16(out, quint16(name.size()), bigEndian);
    out += name;
    fixtures::putU16(out, quint16(project.size()), bigEndian);
    out += project + material + QByteArray(1, '\0');
    return out;
}

bool isZero(const quint8* p, int n) {
    return std::all_of(p, p + n, [](quint8 b) { return b == 0; });
}

struct Parsed {
    TarnDatabaseItem item;
    explicit Parsed(const QByteArray& bytes, quint32 uidSize = 8, bool swap = false) {
        item.setupWithPmrBytes(bytes.constData(), bytes.size(), uidSize, swap);
    }
    bool fileUID() const { return !isZero(item.filePackageUID, 32); }
    bool materialUID() const { return !isZero(item.materialPackageUID, 32); }
};

}  // namespace

TEST(ItemFromIndex, TruncationKeepsWhatWasReadBeforeTheCut) {
    const QByteArray full = entry();
    struct Cut {
        int length;
        bool fileUid, name, project, materialUid;
    };
    // Each field needs at least one byte after it.
    const Cut cuts[] = {
        {1, false, false, false, false}, {32, false, false, false, false},
        {33, true, false, false, false}, {42, true, false, false, false},
        {43, true, true, false, false},  {48, true, true, false, false},
        {49, true, true, true, false},   {80, true, true, true, false},
        {81, true, true, true, true},
    };
    for (const Cut& cut : cuts) {
        SCOPED_TRACE(cut.length);
        Parsed p(full.left(cut.length));
        EXPECT_EQ(p.fileUID(), cut.fileUid);
        EXPECT_EQ(!p.item.DB_ClipName.isNull(), cut.name);
        EXPECT_EQ(!p.item.DB_ProjectName.isNull(), cut.project);
        EXPECT_EQ(p.materialUID(), cut.materialUid);
        EXPECT_TRUE(p.item.DB_isReferenced);
    }
}

TEST(ItemFromIndex, NameAndProjectLengthLimits) {
    struct Case {
        const char* label;
        QByteArray bytes;
        int nameSize;  // -1: no name
        int projectSize;
        bool materialUid;
    };
    const Case cases[] = {
        {"empty name", entry(""), -1, -1, false},
        {"name of 256", entry(QByteArray(256, 'n')), -1, -1, false},
        {"name of 255", entry(QByteArray(255, 'n')), 255, 4, true},
        {"project of 65", entry("clip.mxf", QByteArray(65, 'p')), 8, -1, false},
        {"project of 64", entry("clip.mxf", QByteArray(64, 'p')), 8, 64, true},
        {"no project", entry("clip.mxf", ""), 8, -1, true},
        // 0x0800 = 2048 read unswapped is above 255: the parse stops at the name.
        {"swapped counts read without the flag", entry("clip.mxf", "Proj", true), -1, -1, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        Parsed p(c.bytes);
        EXPECT_TRUE(p.fileUID());
        EXPECT_EQ(p.item.DB_ClipName.isNull() ? -1 : p.item.DB_ClipName.size(), c.nameSize);
        EXPECT_EQ(p.item.DB_ProjectName.isNull() ? -1 : p.item.DB_ProjectName.size(),
                  c.projectSize);
        EXPECT_EQ(p.materialUID(), c.materialUid);
    }
}

TEST(ItemFromIndex, ALaterEntryOverwritesWhatItGotTo) {
    Parsed whole(entry().chopped(1) + entry("second.wav", "Other", false, umid(50), umid(150)));
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(whole.item.materialPackageUID), 32),
              umid(150));
    EXPECT_EQ(whole.item.DB_ClipName, "second.wav");
    EXPECT_EQ(whole.item.DB_ProjectName, "Other");
    EXPECT_EQ(whole.item.DB_CompressionString, "Audio");

    // A broken second entry replaces the identifier it got to, nothing else.
    Parsed broken(entry().chopped(1) + entry("", "Other", false, umid(50), umid(150)));
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(broken.item.filePackageUID), 32), umid(50));
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(broken.item.materialPackageUID), 32),
              umid(101));
    EXPECT_EQ(broken.item.DB_ClipName, "clip.mxf");
}

TEST(ItemFromIndex, RejectsAWrongUIDSizeOrNoBytes) {
    for (quint32 size : {0u, 1u, 4u, 32u}) {
        SCOPED_TRACE(size);
        Parsed p(entry(), size);
        EXPECT_EQ(p.item.DB_SizeofUID, 0u);
        EXPECT_FALSE(p.item.DB_isReferenced);
    }
    TarnDatabaseItem item;
    item.setupWithPmrBytes(nullptr, 100, 8, false);
    item.setupWithPmrBytes(entry().constData(), 0, 8, false);
    EXPECT_FALSE(item.DB_isReferenced);
}

TEST(ItemFromIndex, AudioExtensionsMarkTheCompression) {
    for (const char* name : {"a.aif", "b.WAV", "c.Sd2", "d.lrc", "v.mxf"}) {
        SCOPED_TRACE(name);
        const bool audio = !QByteArray(name).endsWith(".mxf");
        Parsed p(entry(name));
        EXPECT_EQ(QByteArray(p.item.CompressionFourCC, 4),
                  audio ? QByteArray("_AUD") : QByteArray(4, '\0'));
        EXPECT_EQ(p.item.DB_CompressionString, audio ? "Audio" : QString());
    }
}

TEST(ItemFromIndex, UMIDWithoutTheSMPTELabelIsLoggedOnce) {
    for (int which = 0; which < 3; ++which) {
        SCOPED_TRACE(which);
        QByteArray file = umid(1), material = umid(101);
        if (which < 2) (which == 0 ? file : material)[0] = 0x07;
        testsupport::LogCapture log;
        Parsed p(entry("bad.mxf", "P", false, file, material));
        EXPECT_EQ(p.item.DB_isGoodUUID, which == 2);
        const QString line =
            QStringLiteral("UMID: %1 :: File: bad.mxf \n").arg(p.item.getFileUIDString());
        EXPECT_EQ(log.count(line), which == 2 ? 0 : 1) << log.text().toStdString();
    }
    Parsed p(entry());
    EXPECT_EQ(p.item.getFileUIDString(),
              "{ 060a2b34-05060708-090a0b0c-0d0e0f10-11121314-15161718-191a1b1c-1d1e1f20 }");
}
