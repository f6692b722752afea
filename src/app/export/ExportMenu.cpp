#include "export/ExportMenu.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QSaveFile>
#include <QTableView>
#include <QUrl>

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

QString windowTitle(const QTableView* view) {
    return view ? view->window()->windowTitle() : QString();
}

// The table as it is shown now. The header's visual order is the order the
// user arranged; hidden sections keep their place in it.
TarnExportTable shownTable(const QTableView* view, const ExportMenu::StringSource& source) {
    if (!view || !view->model()) return TarnExportTable(windowTitle(view), {});
    const QAbstractItemModel* model = view->model();
    const QHeaderView* header = view->horizontalHeader();
    QList<int> columns;
    QStringList titles;
    for (int visual = 0; visual < header->count(); ++visual) {
        const int logical = header->logicalIndex(visual);
        columns.append(logical);
        titles.append(model->headerData(logical, Qt::Horizontal, Qt::DisplayRole).toString());
    }
    TarnExportTable table(windowTitle(view), titles);
    const int rows = model->rowCount();
    for (int row = 0; row < rows; ++row) {
        QStringList cells;
        cells.reserve(columns.size());
        for (int column : std::as_const(columns))
            cells.append(source ? source(row, column) : QString());
        table.addRow(cells);
    }
    return table;
}

// The one place that turns a table into a file.
bool writeTable(int tag, const TarnExportTable& table, const QString& path) {
    QString text;
    switch (tag) {
        case ExportMenu::MacCsv:
            text = TarnExport::genCsv(table, QStringLiteral(";"));
            break;
        case ExportMenu::WindowsCsv:
            text = TarnExport::genCsv(table, QStringLiteral(","));
            break;
        case ExportMenu::SaveHtml:
        case ExportMenu::ViewAsHtml:
            text = TarnExport::genHtml(table);
            break;
        default:
            return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(text.toUtf8());
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
    return shownTable(tableView_, stringSource_);
}

bool ExportMenu::writeExport(int tag, const QString& path) const {
    return writeTable(tag, exportTable(), path);
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
        writeTable(tag, shownTable(view, source), path);  // a failed write is not reported
    });
    panel->open();
}

void ExportMenu::viewAsHtml() {
    const QString path =
        QDir(QDir::tempPath()).filePath(viewFileName(QDateTime::currentDateTime()));
    if (!writeExport(ViewAsHtml, path)) return;
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}
