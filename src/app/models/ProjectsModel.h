#pragma once

#include <QAbstractTableModel>

#include <memory>
#include <optional>

#include "database/TarnViewSnapshot.h"
#include "report/TarnColumns.h"

// The project rows of a snapshot, for the two tables that list them:
//   ProjectSummary ("ProjectSummaryID"): project, size, files
//   ProjectFilter  ("ProjectFilterID"):  check box, project, size
// Ticking a project's box in the filter list asks for it through
// checkStateProject; the list shows the change with the next snapshot.
class ProjectsModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    enum class Table { ProjectSummary, ProjectFilter };
    // The column identifier ("ProjectCellID", "CheckCellID", ...) of a header section.
    static constexpr int IdentifierRole = Qt::UserRole + 1;

    explicit ProjectsModel(Table table, QObject* parent = nullptr);

    void setSnapshot(std::shared_ptr<const TarnViewSnapshot> snapshot);
    // "ProjectSummaryID" or "ProjectFilterID".
    QString tableIdentifier() const;
    QString columnIdentifier(int section) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  signals:
    // The filter list's box of a project row was ticked or cleared.
    void checkStateProject(int row, bool shown);

  private:
    // The column of a section; none for the check box column.
    std::optional<TarnProjectColumn> columnAt(int section) const;

    Table table_;
    std::shared_ptr<const TarnViewSnapshot> snapshot_;
};
