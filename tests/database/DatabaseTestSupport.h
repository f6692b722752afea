#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstring>
#include <memory>

#include "FixtureFiles.h"
#include "PmrWriter.h"
#include "TestSupport.h"
#include "database/TarnCore.h"
#include "database/TarnFilter.h"
#include "database/TarnScanner.h"
#include "items/TarnDatabaseItem.h"
#include "status/TarnStatusViewController.h"
#include "support/TarnPreferences.h"

#include "QtPrinters.h"

namespace dbtest {

// A hand-made item: short identifier, file name, project and size.
inline TarnItemPtr makeItem(quint64 shortUID, const QString& name, const QString& project = {},
                            quint64 size = 0) {
    auto item = std::make_shared<TarnDatabaseItem>();
    std::memcpy(item->filePackageUID + 16, &shortUID, 8);
    item->DB_SizeofUID = 2;
    item->DB_ClipName = name;
    if (!project.isNull()) item->DB_ProjectName = project;
    item->DB_itemPath = QStringLiteral("/vol/media/") + name;
    item->DB_filesize = size;
    item->DB_isReferenced = true;
    return item;
}

// An item as a bin lists it: only the short identifier.
inline TarnItemPtr binItem(quint64 shortUID) {
    auto item = std::make_shared<TarnDatabaseItem>();
    std::memcpy(item->filePackageUID + 16, &shortUID, 8);
    return item;
}

// Writes a media folder: its index listing `entries`, a file of 100 bytes for
// each listed entry (unless `listedOnDisk` is false) and the `unlisted` files
// of 10 bytes.
inline void writeMediaFolder(const QString& folder, const QList<fixtures::PmrEntry>& entries,
                             const QStringList& unlisted = {}, bool listedOnDisk = true) {
    QDir().mkpath(folder);
    fixtures::writeFile(folder + QStringLiteral("/msmFMID.pmr"), fixtures::writePmr(entries));
    for (const auto& entry : entries)
        if (listedOnDisk) fixtures::writeFile(folder + '/' + entry.name, QByteArray(100, 'm'));
    for (const auto& name : unlisted) fixtures::writeFile(folder + '/' + name, QByteArray(10, 'u'));
}

// Resets the shared state the database uses; preferences at their defaults.
class DatabaseTest {
  public:
    DatabaseTest() {
        TarnPreferences::shared()->clearRunOverrides();
        TarnFilter::sharedFilter()->ResetFilter();
        TarnStatusViewController::getTheController()->setIsRunning(false);
        TarnStatusViewController::getTheController()->StopAllWheels();
    }
    ~DatabaseTest() {
        TarnPreferences::shared()->clearRunOverrides();
        TarnFilter::sharedFilter()->ResetFilter();
    }
    static void setPreference(const char* key, int value) {
        TarnPreferences::shared()->setRunOverride(QLatin1String(key), value);
    }
};

// The names of the database's items in sort order, or in shown order.
inline QStringList sortedNames(const TarnCore& core) {
    QStringList names;
    for (quint32 i : core.IndexesSorted()) names << core.ItemsUnsorted().at(i)->DB_ClipName;
    return names;
}
inline QStringList shownNames(const TarnCore& core) {
    QStringList names;
    for (qsizetype row = 0; row < core.getItemsCount(); ++row)
        names << core.ObjectAtIndexFiltered(row)->DB_ClipName;
    return names;
}

// A volume in a temporary folder, a database and its scanner.
class ScanFixture : public ::testing::Test, public DatabaseTest {
  protected:
    bool scan(TarnScanner::Kind kind, const QStringList& inputs) {
        return scanner.run(kind, inputs);
    }
    bool scanFolder(const QString& folder) {
        return scan(TarnScanner::Kind::SingleFolder, {folder});
    }
    TarnItemPtr itemNamed(const QString& name) const {
        for (const auto& item : core.ItemsUnsorted())
            if (item->DB_ClipName == name) return item;
        return nullptr;
    }
    QStringList allNames() const {
        QStringList names;
        for (const auto& item : core.ItemsUnsorted()) names << item->DB_ClipName;
        names.sort();
        return names;
    }
    // Every item as "path below the root (size)", -1 for a missing file; sorted.
    QStringList itemLines() const {
        QStringList lines;
        for (const auto& item : core.ItemsUnsorted())
            lines << QStringLiteral("%1 (%2)")
                         .arg(item->DB_itemPath.mid(root.size() + 1))
                         .arg(item->DB_FileExists ? qint64(item->DB_filesize.value_or(0)) : -1);
        lines.sort();
        return lines;
    }

    testsupport::TempDir dir;
    QString root = dir.path();
    TarnCore core;
    TarnScanner scanner{&core};
};

}  // namespace dbtest
