#pragma once

#include <QDialog>

#include <array>

#include "database/TarnFilter.h"

class QAbstractItemModel;
class QCheckBox;
class QTableView;

// The filter sheet: the six filter flags (types: precomputes, imported media,
// audio; problems: non-portable names, bad UMIDs, unreferenced media), the
// project list with a check box per project and a select-all box, "Reset"
// and "Close". It only shows and reports; the application controller changes
// the filter.
class FilterSheet : public QDialog {
    Q_OBJECT
  public:
    enum class Flag { Precomputes, ImportedMedia, AudioMedia, NonPortable, BadUMID, Unreferenced };
    static constexpr int kFlags = 6;

    FilterSheet(QAbstractItemModel* projects, QWidget* parent);

    // The six boxes from the filter (flag on: ticked).
    void setFlags(const TarnFilter::Snapshot& filter);
    QCheckBox* flagBox(Flag flag) const { return boxes_[size_t(flag)]; }
    // The select-all box and its title ("Deselect all" when ticked).
    void setSelectAllState(bool state);
    QCheckBox* selectAllButton() const { return selectAll_; }
    QTableView* projectFilterTable() const { return projects_; }

  signals:
    void flagClicked(FilterSheet::Flag flag, bool state);
    void selectAllClicked(bool state);
    void resetClicked();
    void closeClicked();

  private:
    std::array<QCheckBox*, kFlags> boxes_{};
    QCheckBox* selectAll_;
    QTableView* projects_;
};
