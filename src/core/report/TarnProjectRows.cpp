#include "report/TarnProjectRows.h"

#include "database/TarnCore.h"
#include "report/TarnColumns.h"

TarnProjectRows::TarnProjectRows(const TarnCore& core, const QString& title)
    : core_(core), title_(title) {}

QStringList TarnProjectRows::headers() const {
    QStringList titles;
    for (TarnProjectColumn c : TarnColumns::projectColumns()) titles.append(TarnColumns::title(c));
    return titles;
}

qsizetype TarnProjectRows::rowCount() const {
    return core_.getProjectsCount();
}

void TarnProjectRows::cells(qsizetype row, QStringList& cells) const {
    const TarnProjectPtr project = core_.projectAtIndex(row);
    for (TarnProjectColumn c : TarnColumns::projectColumns()) {
        cells.append(project ? TarnColumns::projectCellText(c, project->name, project->SizeValue,
                                                            project->FilesCount)
                             : QString());
    }
}
