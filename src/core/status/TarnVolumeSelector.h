#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The volumes offered before an all-volumes scan, each with its check mark
// (all checked at first), without the sheet that shows them.
class TarnVolumeSelector {
  public:
    explicit TarnVolumeSelector(const QStringList& volumes);

    int numberOfRows() const { return int(volumes_.size()); }
    QString volumeAt(int row) const;
    bool checkAt(int row) const;
    void setCheck(int row, bool checked);
    // The select-all box: sets every check to `state` and returns the box's
    // new title, "Deselect all" when on, "Select all" when off.
    QString delectDeselectAll(bool state);
    // The title of a select-all box in that state (the project filter has one too).
    static QString selectAllTitle(bool state);
    // The checked volumes, in the order given at creation.
    QStringList createResultingArray() const;

  private:
    QStringList volumes_;
    QList<bool> checks_;
};
