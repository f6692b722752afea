#pragma once

#include <QObject>

#include <functional>

#include "sheets/FilterSheet.h"

class CommandGuard;
class CoreAccess;
class MainWindow;
class ProjectsModel;
class TarnCore;

// The commands of the filter: the filter sheet and its controls, the search
// field (filtering as the user types) and the reload of every table.
class FilterCommands : public QObject {
    Q_OBJECT
  public:
    FilterCommands(CoreAccess* access, CommandGuard* guard, MainWindow* window,
                   ProjectsModel* projectFilterList, QObject* parent);

    FilterSheet* filterSheet() const { return sheet_; }

    // Empties the search field without filtering (the database is reset next).
    void clearSearchField();

  public slots:
    void ShowFilter();
    void CloseFilter();
    void pushFilterSelectAllButton(bool state);
    void ChangeFilterState(FilterSheet::Flag flag, bool state);
    void ResetFilterState();
    // The search field's text, as the user types it.
    void updateFilter(const QString& text);
    // The six boxes from the filter, then every table from a fresh summary.
    void AllTablesReload();
    // A project's box in the filter list.
    void setCheckStateProject(int row, bool shown);
    // After a scan: filters by what was typed into the search field meanwhile.
    void scanEnded();

  private:
    // AllTablesReload with a change of the database made first, published once.
    void reload(const std::function<void(TarnCore&)>& before);

    CoreAccess* access_;
    CommandGuard* guard_;
    MainWindow* window_;
    FilterSheet* sheet_;
};
