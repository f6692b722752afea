#pragma once

#include <QMenu>

class QTableView;

// The database table's header menu: one checkable item per column that may
// be hidden (every column but the file name and the clip name), in column
// order, titled by the column's header. Showing or hiding a column stores
// every column's state under "kUserDefaultsKeyVisisbleColumns" (identifier to
// 1 or 0), and a new table starts from what is stored there: a column the
// stored dictionary lacks starts hidden.
class ColumnMenu : public QMenu {
    Q_OBJECT
  public:
    // The identifiers and titles of the table's columns come from the
    // model's header data in `identifierRole` and `titleRole`.
    ColumnMenu(QTableView* table, int identifierRole, int titleRole = Qt::DisplayRole);

    void setupHeaderMenu();
    // The menu item of a column, or null (the two columns that are always shown).
    QAction* actionFor(const QString& identifier) const;

  public slots:
    void toggleColumn(QAction* item);
    void menuWillOpen();

  private:
    QString identifierOf(int section) const;
    void storeVisibility() const;

    QTableView* table_;
    int identifierRole_;
    int titleRole_;
};
