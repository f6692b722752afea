#pragma once

class QDialog;
class QWidget;

// Sheets: dialogs shown window-modal on the main window, one at a time. A
// command that would open a second one plays the beep ("Pop") instead.
class TarnSheets {
  public:
    // The sheet `window` shows now, or null.
    static QDialog* openSheet(const QWidget* window);
    // True, after the beep, when `window` already shows a sheet.
    static bool refuse(const QWidget* window);
    // Shows `dialog` window-modal on `window`.
    static void begin(QDialog* dialog, QWidget* window);
};
