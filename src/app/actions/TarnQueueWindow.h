#pragma once

#include <QDialog>

#include <functional>

class QModelIndex;
class QPushButton;
class QTableView;
class TarnActionCellDelegate;
class TarnActionManager;
class TarnLogPopover;
class TarnQueueModel;

// The queue as a sheet 60 points shorter than its window: one row per action,
// newest on top, with its description, status word, progress bar, cancel and
// info buttons; "Clear" asks "Really clear queue?"; a double-click reveals
// the action's target folder (a Delete has none). The rows also answer keys
// and a context menu: Delete cancels, Ctrl+I shows the log, Return reveals.
class TarnQueueWindow : public QDialog {
    Q_OBJECT
  public:
    // What the window is shorter than its parent window.
    static constexpr int kHeightLess = 60;
    // Shows a folder in the file browser; replaceable (tests, other desktops).
    using Revealer = std::function<void(const QString& folder)>;

    explicit TarnQueueWindow(TarnActionManager* manager, QWidget* parent = nullptr);
    ~TarnQueueWindow() override;

    // Begins the sheet on `parent` (the window it was made on when null);
    // nothing happens while that window shows another sheet.
    void showWindow(QWidget* parent = nullptr);
    void closeWindow();
    void reloadData();
    // "Clear": the manager asks "Really clear queue?" and clears on "OK".
    void ClearQueue();
    void doubleClickQueue(const QModelIndex& index);
    void cancelOperation(int row);
    // The row's log in the popover, hanging below `anchor` (global).
    void ShowInfoPopover(int row, const QRect& anchor);

    TarnQueueModel* model() const { return model_; }
    QTableView* QueueTable() const { return table_; }
    TarnActionCellDelegate* delegate() const { return delegate_; }
    TarnLogPopover* popover() const { return popover_; }

    static void setRevealer(Revealer revealer);

  private:
    void buildTable();
    void addRowCommands();
    int currentRow() const;

    TarnActionManager* manager_;
    TarnQueueModel* model_;
    QTableView* table_ = nullptr;
    TarnActionCellDelegate* delegate_ = nullptr;
    TarnLogPopover* popover_ = nullptr;
    QPushButton* clear_ = nullptr;
    QPushButton* close_ = nullptr;
};
