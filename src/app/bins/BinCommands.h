#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>

class QWidget;
class TarnCore;
class TarnStatusViewController;

// The bin commands of the main window: intersect, subtract or add the media
// that Avid bins reference, from a drop or an open panel, and read the bins'
// AMA links. Each runs on the GUI thread behind the status strip's big wheel
// and logs its execution time; the database does the work.
//
// While a scan runs (the status controller's busy flag) the database belongs
// to the scan: a command then only beeps.
class BinCommands : public QObject {
    Q_OBJECT
  public:
    BinCommands(TarnCore* core, TarnStatusViewController* status, QObject* parent = nullptr);

    // The window the open panels are attached to (none: a free-standing panel).
    void setPanelParent(QWidget* window);

  public slots:
    // An open panel for bins; on confirmation tag 1 intersects, 2 subtracts,
    // 3 adds; any other tag does nothing.
    void OpenAVB(int tag);
    void DoAVBIntersect(const QStringList& binPaths);
    void DoAVBSubtract(const QStringList& binPaths);
    void DoAVBAdd(const QStringList& binPaths);
    // An open panel for bins whose AMA links are read (the tables stay).
    void parseAmaLinksinBin();

  signals:
    // A set operation changed the shown rows: reload every table.
    void AllTablesReload();

  private:
    enum class Operation { Intersect, Subtract, Add };
    void run(Operation operation, const QStringList& binPaths);
    void readAmaLinks(const QStringList& binPaths);
    bool refuseWhileBusy() const;
    // Runs `work` behind the big wheel and logs how long it took.
    void behindBigWheel(const std::function<void()>& work, bool reloadTables);
    // The panel; `confirmed` gets the chosen files when the user confirms.
    void openPanel(const std::function<void(const QStringList&)>& confirmed);

    TarnCore* core_;
    TarnStatusViewController* status_;
    QPointer<QWidget> panelParent_;
};
