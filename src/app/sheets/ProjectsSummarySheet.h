#pragma once

#include <QDialog>

class QAbstractItemModel;
class QPushButton;
class QTableView;

// The projects summary sheet: one row per project with its size and number
// of files, an export button and "Close".
class ProjectsSummarySheet : public QDialog {
    Q_OBJECT
  public:
    ProjectsSummarySheet(QAbstractItemModel* projects, QWidget* parent);

    QTableView* projectSumaryTable() const { return table_; }
    QPushButton* exportButton() const { return export_; }

  signals:
    void exportClicked(QPushButton* sender);
    void closeClicked();

  private:
    QTableView* table_;
    QPushButton* export_;
};
