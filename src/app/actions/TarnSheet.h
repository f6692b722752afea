#pragma once

class QDialog;
class QWidget;

// Sheets are window-modal dialogs attached to the top of their window: a
// window shows at most one at a time, and a command that would open a second
// one plays the alert sound instead (the sheet guard).
class TarnSheet {
  public:
    // Whether the window already shows a sheet (a visible window-modal dialog
    // of its own) or an application-modal dialog is up.
    static bool isSheetOpen(const QWidget* window);
    // Begins the dialog as a sheet on the window, `heightLess` pixels shorter
    // than the window's content when given (else at its own size) and as wide
    // as the content. False, and nothing shown, when a sheet is already open.
    static bool beginSheet(QDialog* sheet, QWidget* window, int heightLess = -1);
};
