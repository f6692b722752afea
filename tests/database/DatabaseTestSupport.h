#pragma once

#include <QString>
#include <QStringList>

#include <cstring>
#include <memory>

#include "TestSupport.h"
#include "database/TarnCore.h"
#include "database/TarnFilter.h"
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

// The names of the items the database shows, in their order.
inline QStringList shownNames(const TarnCore& core) {
    QStringList names;
    for (qsizetype row = 0; row < core.getItemsCount(); ++row)
        names << core.ObjectAtIndexFiltered(row)->DB_ClipName;
    return names;
}

}  // namespace dbtest
