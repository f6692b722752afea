#include "actions/TarnSheet.h"

#include <QApplication>
#include <QDialog>
#include <QWidget>

bool TarnSheet::isSheetOpen(const QWidget* window) {
    if (QApplication::activeModalWidget()) return true;
    if (!window) return false;
    const QList<QDialog*> dialogs = window->findChildren<QDialog*>(Qt::FindDirectChildrenOnly);
    for (const QDialog* dialog : dialogs)
        if (dialog->isVisible() && dialog->windowModality() != Qt::NonModal) return true;
    return false;
}

bool TarnSheet::beginSheet(QDialog* sheet, QWidget* window, int heightLess) {
    if (!sheet || isSheetOpen(window)) return false;
    if (window && sheet->parentWidget() != window) sheet->setParent(window, sheet->windowFlags());
    sheet->setWindowModality(Qt::WindowModal);
    if (window) {
        const QSize content = window->size();
        if (heightLess >= 0)
            sheet->resize(content.width(), qMax(content.height() - heightLess, 120));
        else
            sheet->adjustSize();
        // Hangs from the top edge of the window's content, centred.
        const QPoint top = window->mapToGlobal(QPoint(0, 0));
        sheet->move(top.x() + (content.width() - sheet->width()) / 2, top.y());
    }
    sheet->open();
    return true;
}
