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
        bool equalByUUID, equal, less, greater;
    };
    const Case cases[] = {
        {"other bytes differ", itemWithWords(1, 2, 0), itemWithWords(1, 2, 0xEE), true, false,
         false, false},
        {"same path", itemWithWords(1, 2, 0, p1), itemWithWords(1, 2, 0x33, p1), true, true, false,
         false},
        {"other path", itemWithWords(1, 2, 0, p1), itemWithWords(1, 2, 0, p2), true, false, false,
         false},
        {"same hash, words swapped", itemWithWords(5, 9, 0, p1), itemWithWords(9, 5, 0, p1), false,
         false, true, false},
        {"word a above 2^31", itemWithWords(1, 0xFFFFFFFF), itemWithWords(0x80000000, 0), false,
         false, true, false},
        {"word b above 2^31", itemWithWords(7, 0x90000000), itemWithWords(7, 1), false, false,
         false, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        EXPECT_EQ(c.a->isEqualByUUID(c.b.get()), c.equalByUUID);
        EXPECT_EQ(c.b->isEqualByUUID(c.a.get()), c.equalByUUID);
        EXPECT_EQ(c.a->isEqual(c.b.get()), c.equal);
        EXPECT_EQ(c.a->isLessByUUID(c.b.get()), c.less);
        EXPECT_EQ(c.b->isLessByUUID(c.a.get()), c.greater);
    }
    auto a = itemWithWords(1, 2);
    EXPECT_EQ(a->hash(), itemWithWords(1, 2, 0xEE)->hash());
    EXPECT_FALSE(a->isEqualByUUID(nullptr) || a->isEqual(nullptr) || a->isLessByUUID(nullptr));
}

TEST(ItemIdentity, IdentifiersFromReadersSetTheSize) {
    TarnDatabaseItem item;
    const QByteArray shortId("\x01\x02\x03\x04\x05\x06\x07\x08", 8);
    item.setFileUIDWithNSData(shortId);
    EXPECT_EQ(item.DB_SizeofUID, 2u);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(item.filePackageUID + 16), 8), shortId);
    EXPECT_EQ(item.getFileUIDString(), "{ 0102030405060708 }");

    const QByteArray full(32, '\x5A');
    item.setMaterialUIDWithNSData(full);
    EXPECT_EQ(item.DB_SizeofUID, 8u);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(item.materialPackageUID), 32), full);

    TarnDatabaseItem odd;
    odd.setFileUIDWithNSData(QByteArray(16, '\x7F'));
    EXPECT_EQ(odd.DB_SizeofUID, 4u);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(odd.filePackageUID), 32),
              QByteArray(32, '\0'));
}

// A file, an AMA link beside a missing file, nothing, a sub-path and the names
// a look-up in an open folder must not take relative to it (empty, absolute):
// by path and by name in the open folder alike.
TEST(ItemPath, LookupByPathAndInAnOpenFolderAgree) {
    testsupport::TempDir dir;
    ASSERT_TRUE(fixtures::writeFile(dir.filePath("clip.mxf"), QByteArray(321, 'x')));
    ASSERT_TRUE(fixtures::writeFile(dir.filePath("linked.mov.aaf"), QByteArray(55, 'a')));
    ASSERT_TRUE(fixtures::writeFile(dir.filePath("sub/deep.mxf"), QByteArray(9, 'd')));
    struct Case {
        QString name;
        bool exists, ama;
        quint64 size;
        QString pathSuffix;
    };
    const Case cases[] = {
        {"clip.mxf", true, false, 321, ""}, {"linked.mov", true, true, 55, ".aaf"},
        {"gone.mxf", false, false, 0, ""},  {"sub/deep.mxf", true, false, 9, ""},
        {QString(), false, false, 0, ""},   {dir.filePath("sub/deep.mxf"), false, false, 0, ""},
    };
    const int fd = ::open(QFile::encodeName(dir.path()).constData(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(fd, 0);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name.toStdString());
        TarnDatabaseItem byPath, byName, noFolder;
        for (TarnDatabaseItem* item : {&byPath, &byName, &noFolder}) {
            item->DB_ClipName = c.name;
            item->DB_itemPath = dir.path() + QLatin1Char('/') + c.name;
        }
        byPath.validatePath();
        byName.validatePathAt(fd, c.name);
        noFolder.validatePathAt(-1, c.name);
        for (const TarnDatabaseItem* item : {&byName, &noFolder}) {
            EXPECT_EQ(item->DB_FileExists, byPath.DB_FileExists);
            EXPECT_EQ(item->DB_isValid_initial, byPath.DB_isValid_initial);
            EXPECT_EQ(item->DB_isAMA, byPath.DB_isAMA);
            EXPECT_EQ(item->DB_filesize, byPath.DB_filesize);
            EXPECT_EQ(item->DB_Date, byPath.DB_Date);
            EXPECT_EQ(item->DB_itemPath, byPath.DB_itemPath);
        }
        if (c.name.isEmpty() || c.name.startsWith('/')) continue;  // only agreement counts
        EXPECT_EQ(byPath.DB_FileExists, c.exists);
        EXPECT_EQ(byPath.DB_isValid, c.exists);
        EXPECT_EQ(byPath.DB_isAMA, c.ama);
        EXPECT_EQ(byPath.DB_filesize.value_or(99), c.size);
        EXPECT_EQ(byPath.DB_itemPath, dir.path() + '/' + c.name + c.pathSuffix);
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
    EXPECT_EQ(item.DB_CompressionString, "Audio");
    EXPECT_FALSE(item.DB_isReferenced);
    EXPECT_TRUE(item.DB_isGoodUUID);

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
