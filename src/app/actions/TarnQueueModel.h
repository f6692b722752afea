#pragma once

#include <QAbstractTableModel>
#include <QList>

#include "actions/TarnActionManager.h"

// The queue table's rows over the action manager: one row per action, newest
// on top. Columns: the multi-line description, the status word, the progress
// bar and the row's cancel and info buttons (drawn by TarnActionCellDelegate).
//
// The model lives on the GUI thread and is only read there. It follows the
// manager's row signals (emitted on the GUI thread) and each action's
// signals: the worker's changes arrive queued, the 0.1-second timer's bar
// values directly. Texts are read from the action under its lock, so a row
// never sees a half-written value.
class TarnQueueModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    enum Column { DescriptionColumn, StatusColumn, ProgressColumn, ButtonsColumn, ColumnCount };
    enum Role {
        ProgressValueRole = Qt::UserRole + 1,  // double: bytes done
        ProgressMaximumRole,                   // double: bytes in all
        ProgressBusyRole,                      // bool: indeterminate (the run is over)
    };
    using ActionPtr = TarnActionManager::ActionPtr;

    explicit TarnQueueModel(TarnActionManager* manager, QObject* parent = nullptr);
    ~TarnQueueModel() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    TarnActionManager* manager() const { return manager_; }
    ActionPtr actionAt(int row) const;
    // The row's cancel button: the action is cancelled and its row goes once
    // its worker has stopped.
    void cancelOperation(int row);
    // The folder a double-click reveals; null for a Delete (it has none).
    QString targetFolderAt(int row) const;
    QString actionLogAt(int row) const;
    // Takes the manager's list again (after a clear).
    void reloadData();

  private:
    struct Row {
        ActionPtr action;
        double value = 0;
        bool busy = false;
    };

    void insertAction(int row);
    void removeAction(int row);
    void follow(const ActionPtr& action);
    void rowChanged(const TarnAction* action, int first, int last);
    void progressChanged(const TarnAction* action, double value, bool busy);
    int rowOf(const TarnAction* action) const;
    QVariant displayData(const Row& row, int column) const;
    QVariant accessibleText(const Row& row, int column) const;
    static int percent(const Row& row);

    TarnActionManager* manager_;
    QList<Row> rows_;
};
