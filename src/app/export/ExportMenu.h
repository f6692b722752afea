#pragma once

#include <QDateTime>
#include <QMenu>
#include <QPointer>
#include <QString>

#include <functional>

#include "export/TableViewRows.h"
#include "report/TarnExportTable.h"

class QTableView;

// The export menu of a shown table: CSV with ";" or ",", an HTML page saved
// through a save panel, or an HTML page opened at once in the browser.
//
// Built on a table view and a cell-text source. The export takes the view's
// columns in the header's current order (hidden ones too, titles from the
// model's header) and the model's rows in its current, sorted and filtered
// order; each cell's text comes from the source (a null text, or no source at
// all, is an empty cell). The window's title is the page title.
class ExportMenu : public QMenu {
    Q_OBJECT
  public:
    // The text of the model's (logical) column `column` in row `row`.
    using StringSource = TableViewRows::StringSource;

    // The items' tags, in menu order: 1, 2, 3, 0.
    enum Tag { ViewAsHtml = 0, MacCsv = 1, WindowsCsv = 2, SaveHtml = 3 };

    ExportMenu(QTableView* tableView, StringSource stringSource, QWidget* parent = nullptr);

    // A source that reads the model's display texts (for tables whose
    // shown texts are the exported ones, like the projects summary).
    static StringSource displayTexts(const QTableView* tableView);

    // The table as the export writes it, held whole (for a look at it; the
    // export itself reads the rows as it writes them).
    TarnExportTable exportTable() const;
    // Writes the export of tag 0 to 3 to `path`, whole or not at all, as UTF-8.
    bool writeExport(int tag, const QString& path) const;
    // "yyyyMMdd-HHmmss" of `time` followed by "export.html".
    static QString viewFileName(const QDateTime& time);

  public slots:
    // Acts by the tag: 1..3 open the save panel, 0 writes the page to the
    // temporary folder and opens it; other tags do nothing.
    void onMenuClick(int tag);

  private:
    void saveFile(int tag, const QString& extension);
    void viewAsHtml();

    QPointer<QTableView> tableView_;
    StringSource stringSource_;
};
