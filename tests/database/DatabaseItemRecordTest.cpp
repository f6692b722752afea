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

// Fields are read up to a cut or to the first count out of bounds: a name of
// 1..255 bytes, a project of 0..64. Each field needs at least one byte after it.
TEST(ItemFromIndex, FieldsReadUpToTheCutOrTheFirstBadCount) {
    const QByteArray full = entry();
    struct Case {
        const char* label;
        QByteArray bytes;
        bool fileUid;
        int nameSize, projectSize;  // -1: none read
        bool materialUid;
    };
    const Case cases[] = {
        {"1 byte", full.left(1), false, -1, -1, false},
        {"32 bytes", full.left(32), false, -1, -1, false},
        {"33 bytes", full.left(33), true, -1, -1, false},
        {"42 bytes", full.left(42), true, -1, -1, false},
        {"43 bytes", full.left(43), true, 8, -1, false},
        {"48 bytes", full.left(48), true, 8, -1, false},
        {"49 bytes", full.left(49), true, 8, 4, false},
        {"80 bytes", full.left(80), true, 8, 4, false},
        {"whole", full, true, 8, 4, true},
        {"empty name", entry(""), true, -1, -1, false},
        {"name of 256", entry(QByteArray(256, 'n')), true, -1, -1, false},
        {"name of 255", entry(QByteArray(255, 'n')), true, 255, 4, true},
        {"project of 65", entry("clip.mxf", QByteArray(65, 'p')), true, 8, -1, false},
        {"project of 64", entry("clip.mxf", QByteArray(64, 'p')), true, 8, 64, true},
        {"no project", entry("clip.mxf", ""), true, 8, -1, true},
        // 0x0800 = 2048 read unswapped is above 255: the parse stops at the name.
        {"swapped counts read without the flag", entry("clip.mxf", "Proj", true), true, -1, -1,
         false},
    };
    auto size = [](const QString& text) { return text.isNull() ? -1 : int(text.size()); };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        Parsed p(c.bytes);
        EXPECT_EQ(p.fileUID(), c.fileUid);
        EXPECT_EQ(size(p.item.DB_ClipName), c.nameSize);
        EXPECT_EQ(size(p.item.DB_ProjectName), c.projectSize);
        EXPECT_EQ(p.materialUID(), c.materialUid);
        EXPECT_TRUE(p.item.DB_isReferenced);
    }
    // A wrong identifier size or no bytes: nothing is read.
    for (quint32 uidSize : {0u, 1u, 4u, 32u})
        EXPECT_FALSE(Parsed(entry(), uidSize).item.DB_isReferenced);
    TarnDatabaseItem item;
    item.setupWithPmrBytes(nullptr, 100, 8, false);
    item.setupWithPmrBytes(full.constData(), 0, 8, false);
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
