#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "DatabaseTestSupport.h"
#include "MdbWriter.h"
#include "MxfWriter.h"
#include "support/TarnFileName.h"

using fixtures::makePmrEntry;

// What the walk and the folder scan make of unusual names and folder trees:
// names with "%", names that are not UTF-8, links and folders that cannot be
// read.
namespace {

class ScanNamesTest : public dbtest::ScanFixture {
  protected:
    static bool link(const QString& target, const QString& at) {
        return ::symlink(TarnFileName::encode(target).constData(),
                         TarnFileName::encode(at).constData()) == 0;
    }
};

TEST_F(ScanNamesTest, NamesWithPercentSignsAreEachAccountedForOnce) {
    // Listed names (100 bytes each) and, beside them, the files their
    // percent-decoded forms would name (10 bytes each), which the index does
    // not list.
    const QStringList listed{"Mix 100%.wav", "a%41b.wav", "Clip%20One.wav", "two%%.wav", "end%"};
    const QStringList unlisted{"aAb.wav", "Clip One.wav"};
    QList<fixtures::PmrEntry> entries;
    quint64 uid = 1;
    for (const QString& name : listed) entries << makePmrEntry(uid++, name, "P");
    dbtest::writeMediaFolder(root + "/1", entries, unlisted);

    ASSERT_TRUE(scanFolder(root));
    EXPECT_EQ(itemLines(), QStringList({"1/Clip One.wav (10)", "1/Clip%20One.wav (100)",
                                        "1/Mix 100%.wav (100)", "1/a%41b.wav (100)",
                                        "1/aAb.wav (10)", "1/end% (100)", "1/two%%.wav (100)"}));
    for (const auto& item : core.ItemsUnsorted()) {
        const bool isListed = listed.contains(item->DB_ClipName);
        EXPECT_EQ(item->DB_ProjectName == TarnDatabaseItem::GetProjectNameUnmanaged(), !isListed)
            << qPrintable(item->DB_ClipName);
    }
    EXPECT_EQ(core.FilteredItemsSize(), 5u * 100 + 2u * 10);
}

struct LinkCase {
    const char* label;
    // Links made in the media tree: target (as written in the link) and where.
    QList<QPair<QString, QString>> links;
    QStringList expected;
};

TEST_F(ScanNamesTest, LinksToFoldersAreNotFollowedAndLinksToFilesAreFiles) {
    const LinkCase cases[] = {
        {"a link to a sibling folder", {{"1", "media/2"}}, {"media/1/a.mxf (100)"}},
        {"a link cycle",
         {{"..", "media/1/up"}, {"../../media", "media/1/loop"}},
         {"media/1/a.mxf (100)"}},
        {"two links to the folder itself",
         {{".", "media/1/here"}, {".", "media/1/again"}},
         {"media/1/a.mxf (100)"}},
        {"a link to the root of the system",
         {{"/", "media/1/everything"}},
         {"media/1/a.mxf (100)"}},
        {"a link to a file",
         {{"../../elsewhere/real.wav", "media/1/b.wav"}},
         {"media/1/a.mxf (100)", "media/1/b.wav (77)"}},
    };
    for (const LinkCase& c : cases) {
        SCOPED_TRACE(c.label);
        testsupport::TempDir caseDir;
        root = caseDir.path();
        dbtest::writeMediaFolder(root + "/media/1", {makePmrEntry(1, "a.mxf", "P")});
        fixtures::writeFile(root + "/elsewhere/real.wav", QByteArray(77, 'w'));
        for (const auto& [target, at] : c.links) ASSERT_TRUE(link(target, root + '/' + at));
        core.clear();
        ASSERT_TRUE(scanFolder(root + "/media"));
        EXPECT_EQ(itemLines(), c.expected);
    }
}

// A chain of folders whose full path is longer than the system takes.
class DeepFolders {
  public:
    explicit DeepFolders(const QString& top) : top_(TarnFileName::encode(top)) {
        QDir().mkpath(top);
        int fd = ::open(top_.constData(), O_RDONLY | O_DIRECTORY);
        for (int i = 0; i < kDepth && fd >= 0; ++i) {
            ::mkdirat(fd, name().constData(), 0755);
            const int next = ::openat(fd, name().constData(), O_RDONLY | O_DIRECTORY);
            ::close(fd);
            fd = next;
        }
        if (fd >= 0) ::close(fd);
    }
    ~DeepFolders() { remove(::open(top_.constData(), O_RDONLY | O_DIRECTORY), 0); }

  private:
    static constexpr int kDepth = 24;
    static QByteArray name() { return QByteArray(200, 'd'); }
    // Removed from the bottom up, each relative to its parent.
    static void remove(int fd, int depth) {
        if (fd < 0) return;
        if (depth < kDepth)
            remove(::openat(fd, name().constData(), O_RDONLY | O_DIRECTORY), depth + 1);
        ::unlinkat(fd, name().constData(), AT_REMOVEDIR);
        ::close(fd);
    }
    QByteArray top_;
};

TEST_F(ScanNamesTest, FoldersThatCannotBeReadAreLoggedAndTheWalkGoesOn) {
    struct Case {
        const char* label;
        bool needsPermissions;
        std::function<std::shared_ptr<void>(const QString& folder)> make;
    };
    const Case cases[] = {
        {"no permission to read", true,
         [](const QString& folder) {
             QDir().mkpath(folder);
             ::chmod(TarnFileName::encode(folder).constData(), 0);
             return std::shared_ptr<void>(nullptr, [folder](void*) {
                 ::chmod(TarnFileName::encode(folder).constData(), 0755);
             });
         }},
        {"a path longer than the system takes", false,
         [](const QString& folder) { return std::make_shared<DeepFolders>(folder); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        if (c.needsPermissions && ::geteuid() == 0) continue;  // root reads every folder
        testsupport::TempDir caseDir;
        root = caseDir.path();
        // The unreadable folder comes first in the walk; the media after it.
        const auto blocked = c.make(root + "/media/0");
        dbtest::writeMediaFolder(root + "/media/1", {makePmrEntry(1, "a.mxf", "P")});
        core.clear();
        testsupport::LogCapture log;
        ASSERT_TRUE(scanFolder(root + "/media"));
        EXPECT_TRUE(log.contains("An error occurred: "));
        EXPECT_EQ(itemLines(), QStringList({"media/1/a.mxf (100)"}));
    }
}

TEST_F(ScanNamesTest, NamesThatAreNotUtf8AreScannedAsTheyAreOnDisk) {
    const QString folder = root + "/MXF/" + TarnFileName::decode("\xFF\xFE_folder");
    const QString listed = TarnFileName::decode("caf\xE9.mxf");
    const QString unlisted = TarnFileName::decode("\xE9t\xE9.wav");
    const QString track = TarnFileName::decode("piste \xE9.mxf");
    dbtest::writeMediaFolder(folder, {makePmrEntry(1, listed, "P")}, {unlisted});
    fixtures::writeFile(folder + "/" + track,
                        fixtures::writeMxf({QStringLiteral("From the MXF"), QStringLiteral("P"),
                                            fixtures::umidFor(7), fixtures::umidFor(8)}));
    fixtures::MdbClip clip;
    clip.fileShortUID = 1;
    clip.materialShortUID = 2;
    clip.clipName = QStringLiteral("From the MDB");
    clip.project = QStringLiteral("P");
    fixtures::writeFile(folder + "/msmMMOB.mdb", fixtures::writeMdb({clip}));

    // The scan command tests check the listing, sizes and names; here the
    // readers open the files.
    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(root + "/MXF"));
    ASSERT_TRUE(itemNamed(listed) && itemNamed(unlisted) && itemNamed(track));
    EXPECT_EQ(itemNamed(listed)->DB_NameInBin, "From the MDB");
    EXPECT_EQ(itemNamed(track)->DB_NameInBin, "From the MXF");
    EXPECT_TRUE(itemNamed(unlisted)->DB_FileExists);
    EXPECT_EQ(core.getItemsCount(), 3);
    EXPECT_FALSE(log.contains("can't open"));
}

}  // namespace
