#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>

#include "database/TarnScanner.h"
#include "sheets/VolumeSelectorSheet.h"

class CommandGuard;
class CoreAccess;
class FilterCommands;
class MainWindow;
class TarnStatusViewController;

// The scan commands of the window. Each starts like this: nothing while a
// scan runs; "Pop" while a sheet is shown; then the busy flag, "Working" and
// the big wheel, and for the all-volumes scan and the single-folder scan the
// sheet that picks what to scan (answered with anything but OK: "Cancelled").
// The scan itself runs on its own thread (TarnScanner); the window stays
// responsive and shows the last published view until the scan publishes its
// own at the end.
class ScanCommands : public QObject {
    Q_OBJECT
  public:
    ScanCommands(CoreAccess* access, CommandGuard* guard, FilterCommands* filters,
                 MainWindow* window, TarnStatusViewController* status, QObject* parent);
    ~ScanCommands() override;

    // The volumes the selector offers (mounted volumes by default).
    void setVolumeLister(std::function<QStringList()> lister) { lister_ = std::move(lister); }
    // The selector while it is shown.
    VolumeSelectorSheet* volumeSelector() const { return selector_; }
    // Blocks until a running scan has ended (its end is still announced on
    // the GUI thread's next turns).
    void waitForFinished();

  public slots:
    void beginAllScan();
    // The media folder roots of the volumes.
    void continueAllScan(const QStringList& volumes);
    void scanSingleFolder();
    // The files and folders, added to what is in the database.
    void scanPaths(const QStringList& paths);
    void scanAMAManagementFolder();

  signals:
    // On the GUI thread once a scan has ended and its view is shown.
    void scanEnded(double seconds);
    // The all-volumes scan's end asks for the projects summary.
    void projectsSummaryRequested();

  private:
    // Marks the work as running while a sheet picks what to scan.
    bool holdForSheet();
    void releaseHold(bool cancelled);
    void startScan(TarnScanner::Kind kind, const QStringList& inputs);
    void scanFinished(double seconds);

    CoreAccess* access_;
    CommandGuard* guard_;
    FilterCommands* filters_;
    MainWindow* window_;
    TarnStatusViewController* status_;
    std::unique_ptr<TarnScanner> scanner_;
    std::function<QStringList()> lister_;
    QPointer<VolumeSelectorSheet> selector_;
    bool holding_ = false;
    bool summaryWanted_ = false;
};
