#pragma once

#include <QDialog>
#include <QStringList>

class QCheckBox;
class QTableView;
class VolumeListModel;

// The sheet before an all-volumes scan: the mounted volumes, each with a
// check box (all ticked at first), a select-all box, "Go" (result 1) and
// "Cancel" (result 0).
class VolumeSelectorSheet : public QDialog {
    Q_OBJECT
  public:
    VolumeSelectorSheet(const QStringList& volumes, QWidget* parent);

    // The ticked volumes, in the order offered.
    QStringList createResultingArray() const;
    QTableView* volumesTable() const { return table_; }
    VolumeListModel* model() const { return model_; }

  public slots:
    void delectDeselectAll(bool state);
    void pushGo();
    void pushCancel();

  private:
    VolumeListModel* model_;
    QTableView* table_;
    QCheckBox* selectAll_;
};
