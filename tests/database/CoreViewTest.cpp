#include <gtest/gtest.h>

#include <map>

#include "DatabaseTestSupport.h"

using dbtest::makeItem;
using dbtest::shownNames;

namespace {

// An item as a bin lists it: only the short identifier.
TarnItemPtr binItem(quint64 shortUID) {
    auto item = std::make_shared<TarnDatabaseItem>();
    std::memcpy(item->filePackageUID + 16, &shortUID, 8);
    return item;
}

// The names of the database's items in sort order.
QStringList sortedNames(const TarnCore& core) {
    QStringList names;
    for (quint32 i : core.IndexesSorted()) names << core.ItemsUnsorted().at(i)->DB_ClipName;
    return names;
}

class CoreViewTest : public ::testing::Test, public dbtest::DatabaseTest {
  protected:
    void load(const QList<TarnItemPtr>& items) {
        core.AddItemsFromArray(items);
        core.LoadDefaults();
    }
    TarnCore core;
};

TEST_F(CoreViewTest, UncheckedProjectsHideTheirItemsAndEmptyProjectsStayListed) {
    load({makeItem(1, "a1.mxf", "a", 5), makeItem(2, "a2.mxf", "a", 7),
          makeItem(3, "b1.mxf", "B", 11)});
    auto projects = [&] {
        QStringList out;
        for (int i = 0; core.projectAtIndex(i); ++i) {
            const auto p = core.projectAtIndex(i);
            out << QStringLiteral("%1 %2 %3").arg(p->name).arg(p->FilesCount).arg(p->SizeValue);
        }
        return out;
    };
    EXPECT_EQ(projects(), QStringList({"a 2 12", "B 1 11"}));
    core.projectAtIndex(0)->mustBeShownInList = false;
    core.applyFilter();
    EXPECT_EQ(shownNames(core), QStringList({"b1.mxf"}));

    core.setFilterFlagProjects(true);
    EXPECT_EQ(core.getItemsCount(), 3);

    // Filter away all of "a": it stays in the summary with nothing in it.
    TarnFilter::sharedFilter()->setFilterString(QStringLiteral("b1"));
    core.prepareProjectsSummary();
    EXPECT_EQ(projects(), QStringList({"a 0 0", "B 1 11"}));

    core.setFilterFlagProjects(false);
    EXPECT_EQ(core.getItemsCount(), 0);
}

TEST_F(CoreViewTest, ShowOnlyExistingFilesDecidesWhetherMissingFilesAreShown) {
    // Only exactly 0 shows missing files; only exactly 1 sorts hidden rows last.
    struct Case {
        int value;
        bool missingShown;
        bool hiddenSortLast;
    };
    for (const Case& c : {Case{1, false, true}, Case{0, true, false}, Case{2, false, false},
                          Case{-1, false, false}}) {
        SCOPED_TRACE(c.value);
        setPreference(TarnPreferences::kShowOnlyExistingFiles, c.value);
        core.clear();
        auto missing = makeItem(1, "gone.mxf", "P");
        missing->validatePath();  // no such file: not valid, not existing
        auto here = makeItem(2, "here.mxf", "P");
        here->DB_FileExists = true;
        load({missing, here});
        const QStringList shown =
            c.missingShown ? QStringList({"gone.mxf", "here.mxf"}) : QStringList({"here.mxf"});
        EXPECT_EQ(missing->DB_isValid, c.missingShown);
        EXPECT_EQ(shownNames(core), shown);
        EXPECT_EQ(core.getExistentURLatIndex(shown.size() - 1), here->DB_itemPath);
        EXPECT_TRUE(core.getExistentURLatIndex(7).isNull());

        // The bin operations decide alike.
        core.applyFilter(QList<TarnItemPtr>{binItem(1), binItem(2)});
        EXPECT_EQ(shownNames(core), shown);
        core.applyFilterAdd({binItem(1)});
        EXPECT_EQ(shownNames(core), shown);

        core.sortUsingDescriptors({{"filename", true}});
        EXPECT_EQ(sortedNames(core), c.hiddenSortLast ? QStringList({"here.mxf", "gone.mxf"})
                                                      : QStringList({"gone.mxf", "here.mxf"}));
    }
}

TEST_F(CoreViewTest, MakeUniqueKeepsTheFirstOfItemsEqualInIdentifierAndPath) {
    auto first = makeItem(7, "a.mxf", "first");
    auto again = makeItem(7, "a.mxf", "second");
    auto elsewhere = makeItem(7, "a.mxf", "third");
    elsewhere->DB_itemPath = QStringLiteral("/other/a.mxf");
    core.AddItemsFromArray({first, again, elsewhere, makeItem(3, "b.mxf")});
    core.makeUnique();
    QStringList projects;
    for (const auto& item : core.ItemsUnsorted()) projects << item->get_DB_ProjectName();
    projects.sort();
    EXPECT_EQ(projects, QStringList({"_00_TRN_NULL_PROJECT_NAME", "first", "third"}));
}

// The order that decides which item of an identifier is kept: by path within
// one identifier, but a missing path on the left is never below anything and
// one on the right reads as empty; two items without a path are never equal.
TEST_F(CoreViewTest, UniqueOrderTestsOnlyTheFirstItemsPathForAbsence) {
    auto a = makeItem(7, "a.mxf"), b = makeItem(7, "b.mxf"), none = makeItem(7, "n.mxf");
    none->DB_itemPath = QString();
    EXPECT_TRUE(TarnCore::uniqueLess(a, b));
    EXPECT_FALSE(TarnCore::uniqueLess(b, a));
    EXPECT_FALSE(TarnCore::uniqueLess(none, a));
    EXPECT_FALSE(TarnCore::uniqueLess(a, none));
    EXPECT_TRUE(TarnCore::uniqueLess(none, makeItem(8, "z.mxf")));
    EXPECT_FALSE(TarnCore::uniqueEqual(none, none));
}

// Items ordered by one key: ranks 1..3 valid, rank 0 not valid.
struct SortCase {
    const char* key;
    void (*set)(TarnDatabaseItem&, int rank);
};

const char* const kNames[] = {"alpha", "Bravo", "charlie", "Delta"};

const SortCase kSortCases[] = {
    {"filename", [](TarnDatabaseItem& i, int r) { i.DB_ClipName = kNames[r]; }},
    {"clipname", [](TarnDatabaseItem& i, int r) { i.DB_NameInBin = kNames[r]; }},
    {"project", [](TarnDatabaseItem& i, int r) { i.DB_ProjectName = kNames[r]; }},
    {"filesize", [](TarnDatabaseItem& i, int r) { i.DB_filesize = 900 + 1000 * r; }},
    {"path", [](TarnDatabaseItem& i, int r) { i.DB_itemPath = QStringLiteral("/v/") + kNames[r]; }},
    {"fileUID",
     [](TarnDatabaseItem& i, int r) {
         i.filePackageUID[0] = quint8(r);
         i.filePackageUID[31] = quint8(9 - r);
     }},
    {"materialUID",
     [](TarnDatabaseItem& i, int r) {
         i.materialPackageUID[0] = quint8(0xF0 + r);
         i.materialPackageUID[31] = quint8(9 - r);
     }},
    {"hash",
     [](TarnDatabaseItem& i, int r) {
         std::memset(i.filePackageUID + 16, 0, 8);
         i.filePackageUID[16] = quint8(r + 1);
     }},
    {"filedate", [](TarnDatabaseItem& i,
                    int r) { i.DB_setDate(QDateTime::fromSecsSinceEpoch(1'000'000 + 86400 * r)); }},
    {"compression",
     [](TarnDatabaseItem& i, int r) {
         const quint32 code = quint32(r / 2 + 1);
         std::memcpy(i.CompressionFourCC, &code, 4);
         i.DB_DIDResolutionID = quint32(r % 2);
     }},
    {"samplerate", [](TarnDatabaseItem& i, int r) { i.setSampleRateNumerator(1000 * r, 9 - r); }},
    {"framerate", [](TarnDatabaseItem& i, int r) { i.setFrameRateNumerator(25 * r + 1, 9 - r); }},
    {"bits", [](TarnDatabaseItem& i, int r) { i.DB_bits = quint32(8 * r); }}};

TEST_F(CoreViewTest, EachSortKeyOrdersBothWaysWithInvalidRowsAtTheRightEnd) {
    for (const SortCase& sortCase : kSortCases) {
        SCOPED_TRACE(sortCase.key);
        for (int onlyExisting : {1, 0}) {
            SCOPED_TRACE(onlyExisting);
            setPreference(TarnPreferences::kShowOnlyExistingFiles, onlyExisting);
            core.clear();
            std::map<const TarnDatabaseItem*, int> rankOf;
            QList<TarnItemPtr> items;
            for (int rank : {2, 0, 3, 1}) {
                auto item = makeItem(100 + rank, QStringLiteral("r%1").arg(rank), "P");
                sortCase.set(*item, rank);
                rankOf[item.get()] = rank;
                items << item;
            }
            load(items);
            for (const auto& item : items) item->DB_isValid = rankOf[item.get()] != 0;

            auto ranks = [&] {
                QList<int> out;
                for (quint32 i : core.IndexesSorted()) out << rankOf[core.ItemsUnsorted()[i].get()];
                return out;
            };
            core.sortUsingDescriptors({{QString::fromLatin1(sortCase.key), true}});
            EXPECT_EQ(ranks(), onlyExisting ? QList<int>({1, 2, 3, 0}) : QList<int>({0, 1, 2, 3}));
            core.sortUsingDescriptors({{QString::fromLatin1(sortCase.key), false}});
            EXPECT_EQ(ranks(), onlyExisting ? QList<int>({0, 3, 2, 1}) : QList<int>({3, 2, 1, 0}));
        }
    }
}

// The default order is project then file name by character codes ("Q" <
// "_00_TRN_NULL_PROJECT_NAME" < "b"); descriptors ignore case. Later
// descriptors break ties, but four or more apply only the first; an unknown
// key keeps the order it was given. Items without a date are last in both
// directions.
TEST_F(CoreViewTest, SortDescriptors) {
    auto d = makeItem(4, "d", "Q", 9), e = makeItem(5, "e");
    d->DB_setDate(QDateTime::fromSecsSinceEpoch(2000));
    e->DB_setDate(QDateTime::fromSecsSinceEpoch(1000));
    load({d, e, makeItem(6, "f", "b"), makeItem(3, "c", "P", 2), makeItem(2, "b", "P", 3),
          makeItem(1, "a", "P", 1)});
    EXPECT_EQ(sortedNames(core), QStringList({"a", "b", "c", "d", "e", "f"}));
    EXPECT_EQ(shownNames(core), sortedNames(core));
    const QList<TarnSortDescriptor> three = {
        {"project", false}, {"filesize", false}, {"bits", true}};
    core.sortUsingDescriptors(three);
    EXPECT_EQ(sortedNames(core), QStringList({"d", "b", "c", "a", "f", "e"}));
    core.SortDefault();
    core.sortUsingDescriptors(three + QList<TarnSortDescriptor>{{"filename", false}});
    EXPECT_EQ(sortedNames(core), QStringList({"d", "a", "b", "c", "f", "e"}));
    core.sortUsingDescriptors({{"nonsense", true}});
    EXPECT_EQ(sortedNames(core), QStringList({"d", "a", "b", "c", "f", "e"}));

    for (bool ascending : {true, false}) {
        core.sortUsingDescriptors({{"filedate", ascending}});
        EXPECT_EQ(sortedNames(core).first(2),
                  ascending ? QStringList({"e", "d"}) : QStringList({"d", "e"}));
    }
}

TEST_F(CoreViewTest, IntersectKeepsFilteredAndMissingItemsOutUnlessAsked) {
    auto shown = makeItem(10, "shown", "P");
    shown->DB_FileExists = true;
    auto missing = makeItem(20, "missing", "P");
    missing->DB_isValid_initial = false;  // not found on disk
    auto precompute = makeItem(30, "precompute", "P");
    precompute->DB_usageCode = 1;
    precompute->DB_FileExists = true;
    load({shown, missing, precompute});
    const QList<TarnItemPtr> bin = {binItem(10), binItem(20), binItem(30)};

    setPreference(TarnPreferences::kShowOnlyExistingFiles, 1);
    TarnFilter::sharedFilter()->setFilterString(QStringLiteral("s"));
    core.applyFilter(bin);
    EXPECT_EQ(shownNames(core), QStringList({"shown"}));

    setPreference(TarnPreferences::kShowOnlyExistingFiles, 0);
    core.applyFilter(bin);
    EXPECT_EQ(shownNames(core), QStringList({"missing", "shown"}));
}

}  // namespace
