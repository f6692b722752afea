#include "sheets/OpenPanel.h"

#include <QAbstractItemView>
#include <QFileInfo>

#include "sheets/SheetSupport.h"

OpenPanel::OpenPanel(QWidget* parent, const QString& title) : QFileDialog(parent, title) {
    SheetSupport::name(this, QStringLiteral("OpenPanel"));
    setWindowModality(Qt::WindowModal);
    setOption(QFileDialog::DontUseNativeDialog, true);
    setFileMode(QFileDialog::ExistingFiles);
    setAcceptMode(QFileDialog::AcceptOpen);
    setLabelText(QFileDialog::Accept, QStringLiteral("Open"));
    // The dialog's file list and file tree.
    for (const char* name : {"listView", "treeView"}) {
        if (auto* view = findChild<QAbstractItemView*>(QLatin1String(name))) {
            view->setSelectionMode(QAbstractItemView::ExtendedSelection);
        }
    }
}

void OpenPanel::accept() {
    const QStringList picked = selectedFiles();
    if (picked.isEmpty()) return;
    for (const QString& path : picked) {
        if (!QFileInfo::exists(path)) return;
    }
    // The selection is taken as it stands, folders included.
    QDialog::accept();
}
