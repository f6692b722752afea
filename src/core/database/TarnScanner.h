#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

class TarnCore;
class TarnScannerQueue;
class TarnStatusViewController;

// The three scan commands without their windows.
//
//   AllVolumes           the media folder roots of the chosen volumes; clears first
//   SingleFolder         the picked files and folders; adds to what is there
//   AMAManagementFolder  the AMA management folder; clears first
//
// A scan runs either in the caller's thread (`run`, for the command-line tool
// and tests) or on a thread of its own (`start`, for the desktop program,
// which learns of the end through `scanFinished`). Neither needs an event loop.
// A scan started while another runs (the status controller's busy flag) does
// nothing and returns false.
class TarnScanner : public QObject {
    Q_OBJECT
  public:
    enum class Kind { AllVolumes, SingleFolder, AMAManagementFolder };

    explicit TarnScanner(TarnCore* core = nullptr, TarnStatusViewController* status = nullptr);
    ~TarnScanner() override;

    // The six media folder roots of a volume, in the order they are scanned.
    static QStringList mediaFolderRoots(const QString& volumeRoot);
    // The three UME roots of a volume: formed, but the all-volumes scan leaves
    // them out on purpose.
    static QStringList umeFolderRoots(const QString& volumeRoot);
    // "/Users/Shared/AvidMediaComposer/AMA Management/"
    static QString AMAManagementFolder();
    // The roots of the mounted volumes that a user would be offered (hidden
    // and pseudo file systems left out).
    static QStringList mountedVolumes();
    // What a scan of that kind walks: the roots of each volume for AllVolumes,
    // the picked paths for SingleFolder, the AMA folder for the third.
    static QStringList rootsFor(Kind kind, const QStringList& inputs);

    // Scans in this thread; false (and nothing done) while a scan runs.
    bool run(Kind kind, const QStringList& inputs = {});
    // Scans on a thread of its own; false while a scan runs.
    bool start(Kind kind, const QStringList& inputs = {});
    // Waits for a scan begun with start().
    void waitForFinished();

    double lastExecutionTime() const;

  signals:
    // From the scanning thread, at the end of every scan.
    void scanFinished(double seconds);
    void searchFieldCleared();
    void allTablesReload();
    void itemCountChanged(qsizetype count);
    // The all-volumes scan asks for the project summary when it had roots.
    void projectsSummaryRequested();

  private:
    bool begin(Kind kind);
    void backgroundBlock(Kind kind, const QStringList& roots);

    TarnCore* core_;
    TarnStatusViewController* status_;
    std::mutex lock_;  // guards the threads
    std::thread worker_;
    // Threads of scans whose scanFinished handler started the next scan.
    std::vector<std::thread> retired_;
    std::atomic<double> lastSeconds_{0};
};
