#pragma once

#include <QHash>
#include <QMainWindow>

class DatabaseTableModel;
class DatabaseTableView;
class QAction;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class StatusStrip;
class SummaryTableModel;
class TarnStatusViewController;

// The main window, laid out: the buttons and the search field along the top,
// the database table with its one-row summary under it, and along the bottom
// the status strip ("ServiceView"), the item count and the version. Its menu
// bar holds the window's commands as named actions. It holds no behaviour:
// the application controller connects the controls to its commands.
class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    MainWindow(DatabaseTableModel* database, SummaryTableModel* summary,
               TarnStatusViewController* status);

    DatabaseTableView* databaseTable() const { return table_; }
    QTableView* summaryTable() const { return summary_; }
    QLineEdit* searchField() const { return search_; }
    QLabel* itemsCountText() const { return itemsCount_; }
    QLabel* versionLabel() const { return version_; }
    QPushButton* bigRedButton() const { return bigRed_; }
    QPushButton* smallRedButton() const { return smallRed_; }
    QPushButton* filterButton() const { return filter_; }
    QPushButton* toolsButton() const { return tools_; }
    StatusStrip* statusStrip() const { return strip_; }
    // The widget around the database table, where a drop target may lie over it.
    QWidget* databaseArea() const { return area_; }
    // The row of buttons along the top, for commands added later.
    QHBoxLayout* buttonRow() const { return buttons_; }

    // A command of the menu bar by its name ("beginAllScan", "ShowFilter", ...).
    QAction* command(const QString& name) const;

    // True while a sheet (a window-modal dialog) is shown on the window.
    bool showsSheet() const;

  private:
    void buildMenus();
    QAction* addCommand(class QMenu* menu, const QString& name, const QString& title,
                        const QKeySequence& shortcut = QKeySequence());
    QWidget* buildTopRow();
    QWidget* buildBottomRow(TarnStatusViewController* status);

    DatabaseTableView* table_ = nullptr;
    QTableView* summary_ = nullptr;
    QLineEdit* search_ = nullptr;
    QLabel* itemsCount_ = nullptr;
    QLabel* version_ = nullptr;
    QPushButton* bigRed_ = nullptr;
    QPushButton* smallRed_ = nullptr;
    QPushButton* filter_ = nullptr;
    QPushButton* tools_ = nullptr;
    StatusStrip* strip_ = nullptr;
    QWidget* area_ = nullptr;
    QHBoxLayout* buttons_ = nullptr;
    QHash<QString, QAction*> commands_;
};
