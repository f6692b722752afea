#pragma once

#include <QDialog>
#include <QStringList>

#include "actions/TarnDatabaseFiles.h"

class QLabel;
class QPushButton;
class QTableView;
class TarnDatabaseFilesModel;

// The window "Select and delete databases": every media index and media
// database in the media folders of the mounted volumes, one check-box row
// each, none ticked. "Delete" asks for confirmation, moves the ticked files to
// the Trash through the action engine and lists the folders again; "Close"
// (Escape) closes. Shown as a sheet on the main window.
class TarnMDBB_Delete : public QDialog {
    Q_OBJECT
  public:
    explicit TarnMDBB_Delete(QWidget* parent = nullptr);
    ~TarnMDBB_Delete() override;

    // The volumes to list; empty (the default): the mounted volumes a scan offers.
    void setVolumes(const QStringList& volumes);

    // Lists the files and begins the window as a sheet on `mainWindow`;
    // when that window already shows a sheet, beeps and does nothing else.
    // Returns whether the window opened.
    bool showWindow(QWidget* mainWindow);
    void closeWindow();
    // Reads the folders again; every row unticked.
    void refresh();
    // The "Delete" button: confirmation, then the ticked files to the Trash.
    void deleteTicked();

    TarnDatabaseFilesModel* model() const { return model_; }
    QTableView* tableView() const { return table_; }

  signals:
    // After a confirmed delete, with what the engine did.
    void filesDeleted(const TarnDatabaseFiles::Result& result);

  private:
    void updateSummary(const QString& news = QString());

    QStringList volumes_;
    TarnDatabaseFilesModel* model_;
    QTableView* table_;
    QLabel* summary_;
    QPushButton* deleteButton_;
    QPushButton* closeButton_;
};
