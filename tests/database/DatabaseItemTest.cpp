// An item: its entry of a media index file, identity, look-up on disk and
// texts.
#include <gtest/gtest.h>

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "FixtureFiles.h"
#include "PmrWriter.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"

namespace {

// An item whose short identifier words are a (bytes 16..19) and b (20..23).
TarnItemPtr itemWithWords(quint32 a, quint32 b, quint8 outside = 0,
                          const QString& path = QString()) {
    auto item = std::make_shared<TarnDatabaseItem>();
    std::memset(item->filePackageUID, outside, 32);
    std::memcpy(item->filePackageUID + 16, &a, 4);
    std::memcpy(item->filePackageUID + 20, &b, 4);
    item->DB_SizeofUID = 8;
    item->DB_itemPath = path;
    return item;
}

// The bytes of one index entry; `unlabelled` 0 or 1 takes the SMPTE label off
// the file or the material UMID. Offsets for "clip.mxf"/"Proj": file UID
// 0..31, name count 32, name 34..41, project count 42, project 44..47,
// material UID 48..79, trailer 80..83.
QByteArray entry(const QString& name = "clip.mxf", const QString& project = "Proj",
                 bool bigEndian = false, int unlabelled = -1) {
    fixtures::PmrEntry e = fixtures::makePmrEntry(1, name, project);
    if (unlabelled >= 0) (unlabelled == 0 ? e.fileUID : e.materialUID)[0] = 0x07;
    return fixtures::pmrEntryBytes(e, 8, bigEndian);
}

struct Parsed {
    TarnDatabaseItem item;
    explicit Parsed(const QByteArray& bytes, quint32 uidSize = 8) {
        item.setupWithPmrBytes(bytes.constData(), bytes.size(), uidSize, false);
    }
    static bool set(const quint8* p) {
        return std::any_of(p, p + 32, [](quint8 b) { return b != 0; });
    }
    bool fileUID() const { return set(item.filePackageUID); }
    bool materialUID() const { return set(item.materialPackageUID); }
};

}  // namespace

TEST(ItemIdentity, OnlyBytes16To23CountAndTheOrderIsUnsigned) {
    const QString p1 = QStringLiteral("/V/1/x.mxf"), p2 = QStringLiteral("/V/2/x.mxf");
    struct Case {
        const char* label;
        TarnItemPtr a, b;
        // "same": same identifier and path; "other": same identifier, other
        // file; "<" or ">": a orders before or after b.
        const char* relation;
    };
    const Case cases[] = {
        {"other bytes differ", itemWithWords(1, 2, 0), itemWithWords(1, 2, 0xEE), "other"},
        {"same path", itemWithWords(1, 2, 0, p1), itemWithWords(1, 2, 0x33, p1), "same"},
        {"other path", itemWithWords(1, 2, 0, p1), itemWithWords(1, 2, 0, p2), "other"},
        {"same hash, words swapped", itemWithWords(5, 9, 0, p1), itemWithWords(9, 5, 0, p1), "<"},
        {"word a above 2^31", itemWithWords(1, 0xFFFFFFFF), itemWithWords(0x80000000, 0), "<"},
        {"word b above 2^31", itemWithWords(7, 0x90000000), itemWithWords(7, 1), ">"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        const QString relation = QString::fromLatin1(c.relation);
        const bool sameId = relation == "same" || relation == "other";
        EXPECT_EQ(c.a->isEqualByUUID(c.b.get()), sameId);
        EXPECT_EQ(c.b->isEqualByUUID(c.a.get()), sameId);
        EXPECT_EQ(c.a->isEqual(c.b.get()), relation == "same");
        EXPECT_EQ(c.a->isLessByUUID(c.b.get()), relation == "<");
        EXPECT_EQ(c.b->isLessByUUID(c.a.get()), relation == ">");
    }
    auto a = itemWithWords(1, 2);
    EXPECT_EQ(a->hash(), itemWithWords(1, 2, 0xEE)->hash());
    EXPECT_FALSE(a->isEqualByUUID(nullptr) || a->isEqual(nullptr) || a->isLessByUUID(nullptr));
}

// A file, an AMA link beside a missing file, nothing, a sub-path and the names
// a look-up in an open folder must not take relative to it (empty, absolute):
// by path and by name in the open folder alike.
TEST(ItemPath, LookupByPathAndInAnOpenFolderAgree) {
    testsupport::TempDir dir;
    ASSERT_TRUE(fixtures::writeFile(dir.filePath("clip.mxf"), QByteArray(321, 'x')));
    ASSERT_TRUE(fixtures::writeFile(dir.filePath("linked.mov.aaf"), QByteArray(55, 'a')));
    ASSERT_TRUE(fixtures::writeFile(dir.filePath("sub/deep.mxf"), QByteArray(9, 'd')));
    // What a look-up found: the size ("-": nothing), "AMA" for a link, the path
    // below the folder, whether valid, and the date.
    auto facts = [&](const TarnDatabaseItem& i) {
        return QStringList({i.DB_FileExists ? QString::number(i.DB_filesize.value_or(0)) : "-",
                            i.DB_isAMA ? "AMA" : "", i.DB_itemPath.mid(dir.path().size() + 1),
                            i.DB_isValid && i.DB_isValid_initial ? "valid" : "invalid",
                            i.DB_Date.toString(Qt::ISODateWithMs)})
            .join(' ');
    };
    const QPair<QString, const char*> cases[] = {
        {"clip.mxf", "321  clip.mxf valid "},
        {"linked.mov", "55 AMA linked.mov.aaf valid "},
        {"gone.mxf", "-  gone.mxf invalid "},
        {"sub/deep.mxf", "9  sub/deep.mxf valid "},
        {QString(), nullptr},  // only agreement counts
        {dir.filePath("sub/deep.mxf"), nullptr},
    };
    const int fd = ::open(QFile::encodeName(dir.path()).constData(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(fd, 0);
    for (const auto& [name, expected] : cases) {
        SCOPED_TRACE(name.toStdString());
        TarnDatabaseItem byPath, byName, noFolder;
        for (TarnDatabaseItem* item : {&byPath, &byName, &noFolder}) {
            item->DB_ClipName = name;
            item->DB_itemPath = dir.path() + QLatin1Char('/') + name;
        }
        byPath.validatePath();
        byName.validatePathAt(fd, name);
        noFolder.validatePathAt(-1, name);
        EXPECT_EQ(facts(byName), facts(byPath));
        EXPECT_EQ(facts(noFolder), facts(byPath));
        if (expected) {
            EXPECT_TRUE(facts(byPath).startsWith(expected)) << facts(byPath).toStdString();
        }
    }
    ::close(fd);

    // Without a path only the valid flags change, and nothing is logged.
    TarnDatabaseItem noPath;
    noPath.DB_ClipName = QStringLiteral("bad?name");
    testsupport::LogCapture log;
    noPath.validatePath();
    EXPECT_FALSE(noPath.DB_isValid);
    EXPECT_FALSE(noPath.DB_filesize.has_value());
    EXPECT_TRUE(log.text().isEmpty());
}

// Codes below 0x14 or above 0x91 and the characters other systems refuse in
// names are not portable; each name with one is logged once.
TEST(ItemPath, PortableNameBoundaries) {
    testsupport::TempDir dir;
    const QString notPortable = QString::fromUtf16(u"\u0013\u0092\u00e9/\\?%*|\"<>");
    for (QChar code : notPortable + QString::fromUtf16(u"\u0014\u0091#&(]~':")) {
        TarnDatabaseItem item;
        item.DB_ClipName = QStringLiteral("a") + code + "b.mxf";
        item.DB_itemPath = dir.filePath(QStringLiteral("x.mxf"));
        testsupport::LogCapture log;
        item.validatePath();
        const bool portable = !notPortable.contains(code);
        EXPECT_EQ(item.DB_isPortableFilename, portable) << int(code.unicode());
        EXPECT_EQ(log.count("**** Warning **** " + item.DB_ClipName +
                            " This filename contains non-Portable characters"),
                  portable ? 0 : 1);
    }
}

TEST(ItemText, ProjectFallbacksAndDescription) {
    TarnDatabaseItem item;
    EXPECT_EQ(item.get_DB_ProjectName(), "_00_TRN_NULL_PROJECT_NAME");
    item.DB_ProjectName = QLatin1String("");
    EXPECT_EQ(item.get_DB_ProjectName(), "_00_TRN_EMPTY_PROJECT_NAME");

    item.setFileUIDWithNSData(QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    item.DB_itemPath = QStringLiteral("/V/clip.wav");
    item.DB_ClipName = QStringLiteral("clip.wav");
    item.DB_NameInBin = QStringLiteral("Clip 1");
    item.DB_filesize = 1001;
    item.checkForAudioTypeByExtension();
    EXPECT_EQ(item.description(),
              "TarnDatabaseItem"
              "\n        Path:/V/clip.wav"
              "\n        File:clip.wav"
              "\n Name in Bin:Clip 1"
              "\n     Project:"
              "\n   File Size:1.00 kB"
              "\n    File UID:{ 0102030405060708 }"
              "\nMaterial UID:{ 0000000000000000 }"
              "\n Compression:Audio");
}

// Fields are read up to a cut or to the first count out of bounds: a name of
// 1..255 bytes, a project of 0..64 (the index reader's tests refuse longer
// ones). Each field needs at least one byte after it.
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
        {"81 bytes", full.left(81), true, 8, 4, true},
        {"empty name", entry(""), true, -1, -1, false},
        {"name of 255", entry(QString(255, 'n')), true, 255, 4, true},
        {"project of 64", entry("clip.mxf", QString(64, 'p')), true, 8, 64, true},
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
    for (int unlabelled : {0, 1, -1}) {
        SCOPED_TRACE(unlabelled);
        testsupport::LogCapture log;
        Parsed p(entry("bad.mxf", "P", false, unlabelled));
        EXPECT_EQ(p.item.DB_isGoodUUID, unlabelled < 0);
        const QString line =
            QStringLiteral("UMID: %1 :: File: bad.mxf \n").arg(p.item.getFileUIDString());
        EXPECT_EQ(log.count(line), unlabelled < 0 ? 0 : 1) << log.text().toStdString();
    }
    EXPECT_EQ(Parsed(entry()).item.getFileUIDString(),
              "{ 060a2b34-01010105-01010f20-13000000-01000000-00000000-060e2b34-7f7f2a80 }");
}
