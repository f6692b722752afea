#include "window/FilterCommands.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QSignalBlocker>

#include "database/TarnCore.h"
#include "database/TarnFilter.h"
#include "models/ProjectsModel.h"
#include "window/CommandGuard.h"
#include "window/CoreAccess.h"
#include "window/MainWindow.h"

FilterCommands::FilterCommands(CoreAccess* access, CommandGuard* guard, MainWindow* window,
                               ProjectsModel* projectFilterList, QObject* parent)
    : QObject(parent),
      access_(access),
      guard_(guard),
      window_(window),
      sheet_(new FilterSheet(projectFilterList, window)) {
    connect(sheet_, &FilterSheet::flagClicked, this, &FilterCommands::ChangeFilterState);
    connect(sheet_, &FilterSheet::selectAllClicked, this,
            &FilterCommands::pushFilterSelectAllButton);
    connect(sheet_, &FilterSheet::resetClicked, this, &FilterCommands::ResetFilterState);
    connect(sheet_, &FilterSheet::closeClicked, this, &FilterCommands::CloseFilter);
    connect(projectFilterList, &ProjectsModel::checkStateProject, this,
            &FilterCommands::setCheckStateProject);
    connect(window_->searchField(), &QLineEdit::textChanged, this, &FilterCommands::updateFilter);
}

void FilterCommands::clearSearchField() {
    const QSignalBlocker quiet(window_->searchField());
    window_->searchField()->clear();
}

void FilterCommands::ShowFilter() {
    if (guard_->sheetShown() || guard_->busy()) return;
    sheet_->setFlags(TarnFilter::sharedFilter()->snapshot());
    access_->change([](TarnCore& core) { core.prepareProjectsSummary(); });
    sheet_->open();
}

void FilterCommands::CloseFilter() {
    sheet_->accept();
}

void FilterCommands::pushFilterSelectAllButton(bool state) {
    if (guard_->busy()) return;
    access_->change([state](TarnCore& core) { core.setFilterFlagProjects(state); });
    sheet_->setSelectAllState(state);
}

void FilterCommands::ChangeFilterState(FilterSheet::Flag flag, bool state) {
    if (guard_->busy()) return;
    TarnFilter* filter = TarnFilter::sharedFilter();
    switch (flag) {
        case FilterSheet::Flag::Precomputes:
            filter->setFilterFlagPrecomputes(state);
            break;
        case FilterSheet::Flag::ImportedMedia:
            filter->setFilterFlagImportedMedia(state);
            break;
        case FilterSheet::Flag::AudioMedia:
            filter->setFilterFlagAudioMedia(state);
            break;
        case FilterSheet::Flag::NonPortable:
            filter->setFilterFlagNonPortableFiles(state);
            break;
        case FilterSheet::Flag::BadUMID:
            filter->setFilterFlagBadUMID(state);
            break;
        case FilterSheet::Flag::Unreferenced:
            filter->setFilterFlagUnreferenced(state);
            break;
    }
    reload([](TarnCore& core) { core.applyFilter(); });
}

// No busy guard: during a scan the view is reset by the scan's own end.
void FilterCommands::ResetFilterState() {
    clearSearchField();
    if (!access_->isFree()) TarnFilter::sharedFilter()->ResetFilter();
    reload([](TarnCore& core) { core.LoadDefaults(); });
    sheet_->setSelectAllState(true);
    pushFilterSelectAllButton(true);
}

void FilterCommands::updateFilter(const QString& text) {
    if (text.isNull()) return;
    TarnFilter::sharedFilter()->setFilterString(text);
    access_->change([](TarnCore& core) {
        core.applyFilter();
        core.prepareProjectsSummary();
    });
}

void FilterCommands::AllTablesReload() {
    reload({});
}

void FilterCommands::reload(const std::function<void(TarnCore&)>& before) {
    access_->change([&before](TarnCore& core) {
        if (before) before(core);
        core.prepareProjectsSummary();
    });
    sheet_->setFlags(TarnFilter::sharedFilter()->snapshot());
}

void FilterCommands::setCheckStateProject(int row, bool shown) {
    const TarnViewSnapshot::Project* project = access_->view().projectAt(row);
    if (!project) return;
    const QString name = project->name;
    access_->change([&name, shown](TarnCore& core) {
        for (const TarnProjectPtr& p : core.ProjectsSummaryA()) {
            if (p->name == name) p->mustBeShownInList = shown;
        }
        core.applyFilter();
    });
}

void FilterCommands::scanEnded() {
    const QString typed = window_->searchField()->text();
    if (!typed.isEmpty()) updateFilter(typed);
}
