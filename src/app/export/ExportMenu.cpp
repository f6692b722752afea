#include "export/ExportMenu.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QTableView>
#include <QUrl>

#include "export/TableViewRows.h"
#include "log/xConsole.h"
#include "report/TarnExport.h"

namespace {

struct MenuItem {
    const char* title;
    int tag;
};

const MenuItem kItems[] = {
    {"Export as Mac CSV / Semicolon-Separated", ExportMenu::MacCsv},
    {"Export as Windows CSV / Comma-Separated", ExportMenu::WindowsCsv},
    {"Export as Html", ExportMenu::SaveHtml},
    {"View as Html", ExportMenu::ViewAsHtml},
};

QString extensionFor(int tag) {
    return tag == ExportMenu::MacCsv || tag == ExportMenu::WindowsCsv ? QStringLiteral("csv")
                                                                      : QStringLiteral("html");
}

// The one place that turns a table into a file: written row by row into a
// file beside the target, renamed into place when complete.
bool writeTable(int tag, const TarnReportRows& rows, const QString& path) {
    if (tag < ExportMenu::ViewAsHtml || tag > ExportMenu::SaveHtml) return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    bool written = false;
    switch (tag) {
        case ExportMenu::MacCsv:
            written = TarnExport::writeCsv(rows, QStringLiteral(";"), &file);
            break;
        case ExportMenu::WindowsCsv:
            written = TarnExport::writeCsv(rows, QStringLiteral(","), &file);
            break;
        case ExportMenu::SaveHtml:
        case ExportMenu::ViewAsHtml:
            written = TarnExport::writeHtml(rows, &file);
            break;
        default:
            break;
    }
    if (!written) {
        file.cancelWriting();
        file.commit();
        return false;
    }
    return file.commit();
}

}  // namespace

ExportMenu::ExportMenu(QTableView* tableView, StringSource stringSource, QWidget* parent)
    : QMenu(parent), tableView_(tableView), stringSource_(std::move(stringSource)) {
    setObjectName(QStringLiteral("ExportMenu"));
    setAccessibleName(QStringLiteral("ExportMenu"));
    for (const MenuItem& item : kItems) {
        QAction* action = addAction(QString::fromLatin1(item.title));
        const int tag = item.tag;
        action->setData(tag);
        connect(action, &QAction::triggered, this, [this, tag] { onMenuClick(tag); });
    }
}

ExportMenu::StringSource ExportMenu::displayTexts(const QTableView* tableView) {
    QPointer<const QTableView> view(tableView);
    return [view](int row, int column) {
        if (!view || !view->model()) return QString();
        return view->model()->index(row, column).data(Qt::DisplayRole).toString();
    };
}

TarnExportTable ExportMenu::exportTable() const {
    const TableViewRows rows(tableView_, stringSource_);
    TarnExportTable table(rows.title(), rows.headers());
    QStringList cells;
    for (qsizetype row = 0; row < rows.rowCount(); ++row) {
        cells.clear();
        rows.cells(row, cells);
        table.addRow(cells);
    }
    return table;
}

bool ExportMenu::writeExport(int tag, const QString& path) const {
    return writeTable(tag, TableViewRows(tableView_, stringSource_), path);
}

QString ExportMenu::viewFileName(const QDateTime& time) {
    return time.toString(QStringLiteral("yyyyMMdd-HHmmss")) + QStringLiteral("export.html");
}

void ExportMenu::onMenuClick(int tag) {
    TARN_LOG(QStringLiteral("click: %1").arg(tag));
    if (tag == ViewAsHtml) {
        viewAsHtml();
    } else if (tag >= MacCsv && tag <= SaveHtml) {
        saveFile(tag, extensionFor(tag));
    }
}

void ExportMenu::saveFile(int tag, const QString& extension) {
    QWidget* window = tableView_ ? tableView_->window() : nullptr;
    auto* panel = new QFileDialog(window, QStringLiteral("Choose the path to save"));
    panel->setObjectName(QStringLiteral("ExportSavePanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setNameFilter(extension.toUpper() + QStringLiteral(" (*.") + extension +
                         QLatin1Char(')'));
    panel->setDefaultSuffix(extension);
    panel->selectFile(QStringLiteral("export.") + extension);
    panel->setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);
    // The table is read when the user confirms, as it is then. The menu
    // itself may be gone by then (a popped-up menu usually is).
    QPointer<QTableView> view = tableView_;
    StringSource source = stringSource_;
    connect(panel, &QFileDialog::fileSelected, panel, [view, source, tag, extension](QString path) {
        // Only the one extension: another one typed gets it appended.
        if (QFileInfo(path).suffix().compare(extension, Qt::CaseInsensitive) != 0) {
            path += QLatin1Char('.') + extension;
        }
        writeTable(tag, TableViewRows(view, source), path);  // a failed write is not reported
    });
    panel->open();
}

void ExportMenu::viewAsHtml() {
    const QString path =
        QDir(QDir::tempPath()).filePath(viewFileName(QDateTime::currentDateTime()));
    if (!writeExport(ViewAsHtml, path)) return;
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}
