#pragma once

#include <QList>
#include <QPair>
#include <QTableView>

#include "database/TarnSortDescriptor.h"
#include "items/TarnDatabaseItem.h"

class ColumnMenu;
class DatabaseTableModel;
class PreviewPopover;

// The database table ("DatabaseTable"): whole-row multiple selection, the
// header menu that shows and hides columns, the space bar preview of the
// last selected item ("no item selected" without one), dragging rows out as
// files, and sorting by a click on a sortable column's header.
//
// A header click does not sort here: the click joins the table's sort
// descriptors (the clicked column first, the earlier ones after it, a second
// click on the first column flips its direction) and sortDescriptorsDidChange
// asks the database to sort.
class DatabaseTableView : public QTableView {
    Q_OBJECT
  public:
    DatabaseTableView(DatabaseTableModel* model, QWidget* parent);

    DatabaseTableModel* databaseModel() const { return model_; }
    ColumnMenu* headerMenu() const { return headerMenu_; }
    PreviewPopover* previewPanel() const { return preview_; }

    const TarnItemPtr& lastitem() const { return lastitem_; }
    void setLastitem(TarnItemPtr item) { lastitem_ = std::move(item); }
    // Refreshes a shown preview with the item (or "no item selected").
    void updatePreviewWith(const TarnItemPtr& item);

    // The selected rows as merged spans of first and last row, in order.
    QList<QPair<int, int>> selectedRowSpans() const;
    // The items of the selected rows in order (none without a selection).
    QList<TarnItemPtr> getSelectedItemsArray() const;
    // The recorded size of the selected rows' items, missing files included.
    quint64 calculateSelectedSize() const;
    // The row the user selected last, or -1 without a selection.
    int lastSelectedRow() const;

    const QList<TarnSortDescriptor>& sortDescriptors() const { return descriptors_; }
    // Back to the database's own order: no descriptors, no indicator.
    void resetSortDescriptors();
    // The descriptors as shown, e.g. after a refused sort.
    void showSortDescriptors(const QList<TarnSortDescriptor>& descriptors);
    // What a click on the header of `section` makes of the descriptors.
    void headerClicked(int section);

  signals:
    void sortDescriptorsDidChange(const QList<TarnSortDescriptor>& descriptors);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void setInitialWidths();
    QString previewText(const TarnItemPtr& item) const;
    int previewWidth() const;

    DatabaseTableModel* model_;
    ColumnMenu* headerMenu_;
    PreviewPopover* preview_;
    TarnItemPtr lastitem_;
    QList<TarnSortDescriptor> descriptors_;
};
