#include "shell/TarnSheets.h"

#include <QApplication>
#include <QDialog>

QDialog* TarnSheets::openSheet(const QWidget* window) {
    if (!window) return nullptr;
    const auto dialogs = window->findChildren<QDialog*>(Qt::FindDirectChildrenOnly);
    for (QDialog* dialog : dialogs)
        if (dialog->isVisible() && dialog->windowModality() == Qt::WindowModal) return dialog;
    return nullptr;
}

bool TarnSheets::refuse(const QWidget* window) {
    if (!openSheet(window)) return false;
    QApplication::beep();
    return true;
}

void TarnSheets::begin(QDialog* dialog, QWidget* window) {
    if (window && dialog->parentWidget() != window)
        dialog->setParent(window, dialog->windowFlags() | Qt::Dialog);
    dialog->setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}
