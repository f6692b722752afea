// Identity, the look-up on disk and the texts of an item.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "FixtureFiles.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"

namespace {

// An item whose short identifier words are a (bytes 16..19) and b (20..23).
TarnItemPtr itemWithWords(quint32 a, quint32 b, quint8 outside = 0) {
    auto item = std::make_shared<TarnDatabaseItem>();
    std::memset(item->filePackageUID, outside, 32);
    std::memcpy(item->filePackageUID + 16, &a, 4);
    std::memcpy(item->filePackageUID + 20, &b, 4);
    item->DB_SizeofUID = 8;
    return item;
}

QString portableWarning(const QString& name) {
    return QStringLiteral("**** Warning **** %1 This filename contains non-Portable characters")
        .arg(name);
}

}  // namespace

TEST(ItemIdentity, OnlyBytes16To23Count) {
    auto a = itemWithWords(0x11223344, 0x55667788, 0x00);
    auto b = itemWithWords(0x11223344, 0x55667788, 0xEE);
    EXPECT_EQ(a->hash(), 0x11223344u ^ 0x55667788u);
    EXPECT_EQ(a->hash(), b->hash());
    EXPECT_TRUE(a->isEqualByUUID(b.get()));
    EXPECT_TRUE(b->isEqualByUUID(a.get()));
    EXPECT_FALSE(a->isEqualByUUID(nullptr));

    // Same hash, different words: not equal.
    auto swapped = itemWithWords(0x55667788, 0x11223344);
    EXPECT_EQ(a->hash(), swapped->hash());
    EXPECT_FALSE(a->isEqualByUUID(swapped.get()));
}

TEST(ItemIdentity, IsEqualNeedsTwoEqualPaths) {
    auto a = itemWithWords(1, 2), b = itemWithWords(1, 2, 0x33);
    EXPECT_FALSE(a->isEqual(b.get()));
    a->DB_itemPath = QStringLiteral("/Volumes/M/Avid MediaFiles/MXF/1/x.mxf");
    EXPECT_FALSE(a->isEqual(b.get()));
    EXPECT_FALSE(b->isEqual(a.get()));
    b->DB_itemPath = QStringLiteral("/Volumes/M/Avid MediaFiles/MXF/2/x.mxf");
    EXPECT_FALSE(a->isEqual(b.get()));
    b->DB_itemPath = a->DB_itemPath;
    EXPECT_TRUE(a->isEqual(b.get()));
    auto c = itemWithWords(1, 3);
    c->DB_itemPath = a->DB_itemPath;
    EXPECT_FALSE(a->isEqual(c.get()));
    EXPECT_FALSE(a->isEqual(nullptr));
}

TEST(ItemIdentity, OrderComparesWordAThenWordBUnsigned) {
    auto low = itemWithWords(1, 0xFFFFFFFF);
    auto high = itemWithWords(0x80000000, 0);  // negative if compared signed
    EXPECT_TRUE(low->isLessByUUID(high.get()));
    EXPECT_FALSE(high->isLessByUUID(low.get()));

    auto b1 = itemWithWords(7, 1), b2 = itemWithWords(7, 0x90000000);
    EXPECT_TRUE(b1->isLessByUUID(b2.get()));
    EXPECT_FALSE(b2->isLessByUUID(b1.get()));

    auto same = itemWithWords(7, 1, 0x44);
    EXPECT_FALSE(b1->isLessByUUID(same.get()));
    EXPECT_FALSE(same->isLessByUUID(b1.get()));
    EXPECT_FALSE(b1->isLessByUUID(nullptr));
}

TEST(ItemIdentity, IdentifiersFromReaders) {
    TarnDatabaseItem item;
    QByteArray shortId("\x01\x02\x03\x04\x05\x06\x07\x08", 8);
    item.setFileUIDWithNSData(shortId);
    EXPECT_EQ(item.DB_SizeofUID, 2u);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(item.filePackageUID + 16), 8), shortId);
    EXPECT_EQ(item.hash(), 0x04030201u ^ 0x08070605u);

    QByteArray full(32, '\x5A');
    item.setMaterialUIDWithNSData(full);
    EXPECT_EQ(item.DB_SizeofUID, 8u);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(item.materialPackageUID), 32), full);

    TarnDatabaseItem odd;
    odd.setFileUIDWithNSData(QByteArray(16, '\x7F'));
    EXPECT_EQ(odd.DB_SizeofUID, 4u);
    EXPECT_EQ(odd.hash(), 0u);
    for (quint8 byte : odd.filePackageUID) EXPECT_EQ(byte, 0);
}

TEST(ItemTime, CanonicalConversionWrapsAround) {
    quint32 t = 0;
    TarnDatabaseItem::ConvertTimeFromCanonical(&t);
    EXPECT_EQ(t, 2082826800u);
    TarnDatabaseItem::ConvertTimeToCanonical(&t);
    EXPECT_EQ(t, 0u);
    TarnDatabaseItem::ConvertTimeToCanonical(&t);
    EXPECT_EQ(t, 4294967296ull - 2082826800u);
    t = 0xFFFFFFFFu;
    TarnDatabaseItem::ConvertTimeFromCanonical(&t);
    EXPECT_EQ(t, 2082826799u);
    TarnDatabaseItem::ConvertTimeFromCanonical(nullptr);
}

TEST(ItemPath, ExistingFileGetsSizeDateAndValidFlags) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("clip.mxf"));
    ASSERT_TRUE(fixtures::writeFile(path, QByteArray(1234, 'x')));
    TarnDatabaseItem item;
    item.DB_itemPath = path;
    item.DB_ClipName = QStringLiteral("clip.mxf");
    item.validatePath();
    EXPECT_TRUE(item.DB_FileExists);
    EXPECT_TRUE(item.DB_isValid);
    EXPECT_TRUE(item.DB_isValid_initial);
    EXPECT_FALSE(item.DB_isAMA);
    ASSERT_TRUE(item.DB_filesize.has_value());
    EXPECT_EQ(*item.DB_filesize, 1234u);
    EXPECT_TRUE(item.DB_Date.isValid());
    EXPECT_LE(qAbs(item.DB_Date.secsTo(QDateTime::currentDateTime())), 24 * 3600);
    EXPECT_EQ(item.DB_itemPath, path);
    EXPECT_TRUE(item.DB_isPortableFilename);
}

TEST(ItemPath, MissingFileFallsBackToTheAAFLink) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("linked.mov"));
    ASSERT_TRUE(fixtures::writeFile(path + QStringLiteral(".aaf"), QByteArray(777, 'a')));
    TarnDatabaseItem item;
    item.DB_itemPath = path;
    item.DB_ClipName = QStringLiteral("linked.mov");
    item.validatePath();
    EXPECT_TRUE(item.DB_isAMA);
    EXPECT_TRUE(item.DB_FileExists);
    EXPECT_TRUE(item.DB_isValid);
    EXPECT_TRUE(item.DB_isValid_initial);
    EXPECT_EQ(item.DB_itemPath, path + QStringLiteral(".aaf"));
    ASSERT_TRUE(item.DB_filesize.has_value());
    EXPECT_EQ(*item.DB_filesize, 777u);
}

TEST(ItemPath, NothingOnDiskLeavesTheFlagsFalse) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    TarnDatabaseItem item;
    item.DB_itemPath = dir.filePath(QStringLiteral("gone.mxf"));
    item.DB_ClipName = QStringLiteral("gone.mxf");
    item.validatePath();
    EXPECT_FALSE(item.DB_FileExists);
    EXPECT_FALSE(item.DB_isValid);
    EXPECT_FALSE(item.DB_isValid_initial);
    EXPECT_FALSE(item.DB_isAMA);
    EXPECT_EQ(item.DB_filesize.value_or(99), 0u);
    EXPECT_FALSE(item.DB_Date.isValid());

    // Without a path only the valid flags change.
    TarnDatabaseItem noPath;
    noPath.DB_ClipName = QStringLiteral("bad?name");
    testsupport::LogCapture log;
    noPath.validatePath();
    EXPECT_FALSE(noPath.DB_isValid);
    EXPECT_FALSE(noPath.DB_isValid_initial);
    EXPECT_FALSE(noPath.DB_filesize.has_value());
    EXPECT_TRUE(noPath.DB_isPortableFilename);
    EXPECT_TRUE(log.text().isEmpty());
}

// Looking a file up by name in an open folder gives what the full path gives:
// a file, an AMA link, nothing, a sub-path, and the names it must not take
// relative to the folder (empty, absolute).
TEST(ItemPath, LookupInAnOpenFolderMatchesTheFullPath) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    ASSERT_TRUE(
        fixtures::writeFile(dir.filePath(QStringLiteral("clip.mxf")), QByteArray(321, 'x')));
    ASSERT_TRUE(
        fixtures::writeFile(dir.filePath(QStringLiteral("linked.mov.aaf")), QByteArray(55, 'a')));
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("sub")));
    ASSERT_TRUE(
        fixtures::writeFile(dir.filePath(QStringLiteral("sub/deep.mxf")), QByteArray(9, 'd')));
    const QString outside = dir.filePath(QStringLiteral("sub/deep.mxf"));
    const int fd = ::open(QFile::encodeName(dir.path()).constData(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(fd, 0);
    for (const QString& name :
         {QStringLiteral("clip.mxf"), QStringLiteral("linked.mov"), QStringLiteral("gone.mxf"),
          QStringLiteral("sub/deep.mxf"), QString(), outside}) {
        TarnDatabaseItem byPath, byName;
        for (TarnDatabaseItem* item : {&byPath, &byName}) {
            item->DB_ClipName = name;
            item->DB_itemPath = dir.path() + QLatin1Char('/') + name;
        }
        byPath.validatePath();
        byName.validatePathAt(fd, name);
        EXPECT_EQ(byName.DB_FileExists, byPath.DB_FileExists) << name.toStdString();
        EXPECT_EQ(byName.DB_isValid, byPath.DB_isValid) << name.toStdString();
        EXPECT_EQ(byName.DB_isValid_initial, byPath.DB_isValid_initial) << name.toStdString();
        EXPECT_EQ(byName.DB_isAMA, byPath.DB_isAMA) << name.toStdString();
        EXPECT_EQ(byName.DB_filesize, byPath.DB_filesize) << name.toStdString();
        EXPECT_EQ(byName.DB_Date, byPath.DB_Date) << name.toStdString();
        EXPECT_EQ(byName.DB_itemPath, byPath.DB_itemPath) << name.toStdString();
    }
    // Spot checks that the cases above really differ.
    TarnDatabaseItem ama;
    ama.DB_ClipName = QStringLiteral("linked.mov");
    ama.DB_itemPath = dir.filePath(ama.DB_ClipName);
    ama.validatePathAt(fd, ama.DB_ClipName);
    EXPECT_TRUE(ama.DB_isAMA);
    EXPECT_EQ(ama.DB_filesize.value_or(0), 55u);
    TarnDatabaseItem deep;
    deep.DB_ClipName = QStringLiteral("sub/deep.mxf");
    deep.DB_itemPath = dir.filePath(deep.DB_ClipName);
    deep.validatePathAt(fd, deep.DB_ClipName);
    EXPECT_EQ(deep.DB_filesize.value_or(0), 9u);
    ::close(fd);

    // Without an open folder the full path is used.
    TarnDatabaseItem noFolder;
    noFolder.DB_ClipName = QStringLiteral("clip.mxf");
    noFolder.DB_itemPath = dir.filePath(noFolder.DB_ClipName);
    noFolder.validatePathAt(-1, noFolder.DB_ClipName);
    EXPECT_EQ(noFolder.DB_filesize.value_or(0), 321u);
}

// A damaged index can name anything; only a plain name becomes a path in
// the media folder. Every other name keeps the item as the index describes
// it, as a missing file without a path.
TEST(ItemPath, IndexNamesThatLeaveTheFolderGetNoPath) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString media = dir.filePath(QStringLiteral("vol/Avid MediaFiles/MXF/1"));
    ASSERT_TRUE(fixtures::writeFile(media + QStringLiteral("/A.mxf"), QByteArray(64, 'a')));
    ASSERT_TRUE(fixtures::writeFile(dir.filePath(QStringLiteral("vol/Keep.mxf")), "keep"));
    ASSERT_TRUE(QDir().mkpath(dir.filePath(QStringLiteral("vol/Avid Projects"))));
    const int fd = ::open(QFile::encodeName(media).constData(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(fd, 0);
    const struct Case {
        QString name;
        bool plain;
    } cases[] = {
        {"A.mxf", true},
        {"..", false},
        {"../../..", false},
        {"../../../Avid Projects", false},
        {"../../../Keep.mxf", false},
        {".", false},
        {"", false},
        {"1/A.mxf", false},
        {"/etc/passwd", false},
        {"..\\..\\Keep.mxf", false},
        {QStringLiteral("A.mxf") + QChar(0) + QStringLiteral("/.."), false},
        {"...", true},
        {".hidden.mxf", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name.toStdString());
        testsupport::LogCapture log;
        TarnDatabaseItem item;
        item.DB_ClipName = c.name;
        item.DB_ProjectName = QStringLiteral("Doc");
        item.placeInFolder(media, fd);
        EXPECT_EQ(TarnDatabaseItem::isPlainFileName(c.name), c.plain);
        EXPECT_EQ(item.DB_ClipName, c.name);
        EXPECT_EQ(item.DB_ProjectName, QStringLiteral("Doc"));
        if (c.plain) {
            EXPECT_EQ(item.DB_itemPath, media + QLatin1Char('/') + c.name);
            EXPECT_FALSE(log.contains(QStringLiteral("is no file name")));
        } else {
            EXPECT_TRUE(item.DB_itemPath.isNull());
            EXPECT_FALSE(item.DB_FileExists);
            EXPECT_FALSE(item.DB_isValid);
            EXPECT_FALSE(item.DB_isValid_initial);
            EXPECT_FALSE(item.DB_isPortableFilename);
            EXPECT_EQ(item.DB_filesize.value_or(1), 0u);
            EXPECT_EQ(log.count(QStringLiteral("is no file name: the item has no path")), 1);
        }
    }
    ::close(fd);
    TarnDatabaseItem unlisted;
    unlisted.setupWithUnrefFile(media, QStringLiteral(".."));
    EXPECT_TRUE(unlisted.DB_itemPath.isNull());
}

TEST(ItemPath, PortableNameBoundaries) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    auto check = [&](const QString& name) {
        TarnDatabaseItem item;
        item.DB_ClipName = name;
        item.DB_itemPath = dir.filePath(QStringLiteral("x.mxf"));
        testsupport::LogCapture log;
        item.validatePath();
        EXPECT_EQ(log.count(portableWarning(name)), item.DB_isPortableFilename ? 0 : 1);
        return item.DB_isPortableFilename;
    };
    auto withCode = [](char16_t code) {
        return QStringLiteral("a") + QChar(code) + QStringLiteral("b.mxf");
    };
    EXPECT_FALSE(check(withCode(19)));
    EXPECT_TRUE(check(withCode(20)));
    EXPECT_TRUE(check(withCode(145)));
    EXPECT_FALSE(check(withCode(146)));
    EXPECT_FALSE(check(withCode(233)));
    EXPECT_TRUE(check(QStringLiteral("Plain_Name-01 take.2.mxf")));
    for (char c : {'/', '\\', '?', '%', '*', '|', '"', '<', '>'})
        EXPECT_FALSE(check(withCode(char16_t(c)))) << c;
    for (char c : {'#', '&', '(', ']', '~', '\'', ':'})
        EXPECT_TRUE(check(withCode(char16_t(c)))) << c;
}

TEST(ItemPath, IndexNamesKeepTheirHighBytes) {
    // An index stores one byte per character; 0xE9 (e acute) must stay visible to
    // the portable-name check.
    QByteArray bytes(8, '\x01');
    fixtures::putU16(bytes, 9);
    bytes += QByteArray("caf\xE9.mxf ", 9);
    fixtures::putU16(bytes, 1);
    bytes += "P";
    bytes += QByteArray(9, '\x02');
    TarnDatabaseItem item;
    item.setupWithPmrBytes(bytes.constData(), bytes.size(), 2, false);
    ASSERT_FALSE(item.DB_ClipName.isNull());
    EXPECT_EQ(item.DB_ClipName.at(3).unicode(), 0xE9);
    QTemporaryDir dir;
    item.DB_itemPath = dir.filePath(item.DB_ClipName);
    item.validatePath();
    EXPECT_FALSE(item.DB_isPortableFilename);
}

TEST(ItemUnreferenced, FileFoundOnlyOnDisk) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    ASSERT_TRUE(fixtures::writeFile(dir.filePath(QStringLiteral("tone.WAV")), QByteArray(10, 0)));
    TarnDatabaseItem item;
    item.setupWithUnrefFile(dir.path(), QStringLiteral("tone.WAV"));
    EXPECT_EQ(QDir::cleanPath(item.DB_itemPath), QDir::cleanPath(dir.filePath("tone.WAV")));
    EXPECT_EQ(item.DB_ClipName, "tone.WAV");
    EXPECT_EQ(item.DB_ProjectName, "_00_TRN_UNMANAGED_FILES");
    EXPECT_EQ(item.DB_CompressionString, "Audio");
    EXPECT_FALSE(item.DB_isReferenced);
    EXPECT_TRUE(item.DB_isGoodUUID);
    item.validatePath();
    EXPECT_TRUE(item.DB_FileExists);

    // A project set beforehand is kept.
    TarnDatabaseItem named;
    named.DB_ProjectName = QStringLiteral("Mine");
    named.setupWithUnrefFile(dir.path() + QStringLiteral("/"), QStringLiteral("x.omf"));
    EXPECT_EQ(named.DB_ProjectName, "Mine");
    EXPECT_EQ(QDir::cleanPath(named.DB_itemPath), QDir::cleanPath(dir.filePath("x.omf")));

    // An index record whose file exists counts as unreferenced once completed.
    item.DB_isReferenced = true;
    item.addinfoToItemFromCorrespondingFile();
    EXPECT_FALSE(item.DB_isReferenced);
    TarnDatabaseItem missing;
    missing.DB_isReferenced = true;
    missing.addinfoToItemFromCorrespondingFile();
    EXPECT_TRUE(missing.DB_isReferenced);
}

TEST(ItemText, ProjectNameFallbacks) {
    TarnDatabaseItem item;
    EXPECT_EQ(item.get_DB_ProjectName(), "_00_TRN_NULL_PROJECT_NAME");
    item.DB_ProjectName = QLatin1String("");
    EXPECT_EQ(item.get_DB_ProjectName(), "_00_TRN_EMPTY_PROJECT_NAME");
    item.DB_ProjectName = QStringLiteral("Feature");
    EXPECT_EQ(item.get_DB_ProjectName(), "Feature");
}

TEST(ItemText, KindWords) {
    EXPECT_EQ(TarnDatabaseItem::kindForUsageCode(1), "PRECOMP");
    EXPECT_EQ(TarnDatabaseItem::kindForUsageCode(5), "UC_GROUPOOFTER");
    EXPECT_EQ(TarnDatabaseItem::kindForUsageCode(8), "UC_8");
    EXPECT_EQ(TarnDatabaseItem::kindForUsageCode(9), "UC_PRECOMPUTE_FILE");
    EXPECT_EQ(TarnDatabaseItem::kindForUsageCode(15), "IMPORTED");
    for (qint32 none : {0, 7, 10, 14, 16, -1})
        EXPECT_EQ(TarnDatabaseItem::kindForUsageCode(none), "");
}

TEST(ItemText, DescriptionListsTheSetFieldsInOrder) {
    TarnDatabaseItem item;
    item.setFileUIDWithNSData(QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    EXPECT_EQ(item.description(),
              "TarnDatabaseItem"
              "\n    File UID:{ 0102030405060708 }"
              "\nMaterial UID:{ 0000000000000000 }");

    item.DB_itemPath = QStringLiteral("/V/clip.wav");
    item.DB_ClipName = QStringLiteral("clip.wav");
    item.DB_NameInBin = QStringLiteral("Clip 1");
    item.DB_ProjectName = QLatin1String("");
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

TEST(ItemText, DateTextIsMadeOnce) {
    TarnDatabaseItem item;
    item.DB_setDate(QDateTime(QDate(2020, 3, 4), QTime(5, 6)));
    const QString first = item.DB_Date_String();
    EXPECT_FALSE(first.isEmpty());
    EXPECT_TRUE(first.contains(QStringLiteral("20")));
    item.DB_setDate(QDateTime(QDate(1999, 12, 31), QTime(23, 59)));
    EXPECT_EQ(item.DB_Date_String(), first);
}
