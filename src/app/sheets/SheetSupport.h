#pragma once

#include <QString>

class QAbstractItemModel;
class QCheckBox;
class QDialog;
class QLabel;
class QPushButton;
class QTableView;
class QWidget;

// The small pieces every sheet and window builds the same way. A control
// carries its name as object name and as accessible name, so that screen
// readers and UI tests find it by the name the program uses.
class SheetSupport {
  public:
    static void name(QWidget* widget, const QString& name);
    // A window-modal dialog over its parent window.
    static void makeSheet(QDialog* dialog, const QString& name, const QString& title);
    static QPushButton* button(QWidget* parent, const QString& name, const QString& text);
    static QCheckBox* checkBox(QWidget* parent, const QString& name, const QString& text);
    // The bold line at the top of a sheet (a sheet has no title bar of its own).
    static QLabel* heading(QWidget* parent, const QString& text);
    // A table of whole-row selection without row numbers.
    static QTableView* makeTable(QWidget* parent, const QString& name, QAbstractItemModel* model);
};
