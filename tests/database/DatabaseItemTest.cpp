// Identity, the look-up on disk and the texts of an item.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "FixtureFiles.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"
#include "support/TarnFileName.h"

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

TEST(ItemPath, PortableNameBoundaries) {
    testsupport::TempDir dir;
    auto portable = [&](const QString& name) {
        TarnDatabaseItem item;
        item.DB_ClipName = name;
        item.DB_itemPath = dir.filePath(QStringLiteral("x.mxf"));
        testsupport::LogCapture log;
        item.validatePath();
        const QString warning =
            QStringLiteral("**** Warning **** %1 This filename contains non-Portable characters")
                .arg(name);
        EXPECT_EQ(log.count(warning), item.DB_isPortableFilename ? 0 : 1);
        return item.DB_isPortableFilename;
    };
    auto withCode = [](QChar code) { return QStringLiteral("a") + QChar(code) + "b.mxf"; };
    for (QChar code : QString::fromUtf16(u"\u0013\u0092\u00e9/\\?%*|\"<>"))
        EXPECT_FALSE(portable(withCode(code))) << int(code.unicode());
    for (QChar code : QString::fromUtf16(u"\u0014\u0091#&(]~':"))
        EXPECT_TRUE(portable(withCode(code))) << int(code.unicode());
}

TEST(ItemUnreferenced, FileFoundOnlyOnDisk) {
    testsupport::TempDir dir;
    ASSERT_TRUE(fixtures::writeFile(dir.filePath(QStringLiteral("tone.WAV")), QByteArray(10, 0)));
    TarnDatabaseItem item;
    item.setupWithUnrefFile(dir.path() + QStringLiteral("/"), QStringLiteral("tone.WAV"));
    EXPECT_EQ(QDir::cleanPath(item.DB_itemPath), dir.filePath("tone.WAV"));
    EXPECT_EQ(item.DB_ProjectName, "_00_TRN_UNMANAGED_FILES");
    EXPECT_FALSE(item.DB_isReferenced);

    // A project set beforehand is kept.
    TarnDatabaseItem named;
    named.DB_ProjectName = QStringLiteral("Mine");
    named.setupWithUnrefFile(dir.path(), QStringLiteral("x.omf"));
    EXPECT_EQ(named.DB_ProjectName, "Mine");
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
