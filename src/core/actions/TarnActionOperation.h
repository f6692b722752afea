#pragma once

#include <QHash>
#include <QLocale>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

#include "actions/TarnActionOptions.h"
#include "actions/TarnFileCopier.h"
#include "actions/TarnMediaFileGuard.h"

class TarnActionOperationDelegate;

// The worker that carries out one action: copies, moves or deletes the listed
// media files one after another on the action queue's worker thread, builds
// each file's target folder from the options, asks the user (through
// TarnAlert) when a target exists or a file cannot be moved or trashed, counts
// bytes for the progress bar, marks items missing after a move or delete, and
// keeps a timestamped action log.
//
// It touches only regular files inside the media folder roots of the scan
// (TarnMediaFileGuard): any other item is logged as an error and skipped.
//
// States follow a queued operation: ready, executing, finished, and a
// cancelled flag that may be set from any thread at any time; the work notices
// it before each file, inside each copy, after each copy and before every
// question.
class TarnActionOperation : public QObject {
    Q_OBJECT
  public:
    explicit TarnActionOperation(const TarnActionOptions& properties);
    ~TarnActionOperation() override;

    // The queue's entry: runs `main` unless cancelled before, then finishes
    // and calls the completion routine.
    void start();
    void main();
    void cancel();

    bool isReady() const { return !executing_ && !finished_; }
    bool isExecuting() const { return executing_; }
    bool isFinished() const { return finished_; }
    bool isCancelled() const { return cancelled_; }
    // Called on the worker thread once the operation has finished.
    void setCompletionBlock(std::function<void()> block);

    void setDelegate(TarnActionOperationDelegate* delegate);
    // Told the bytes copied so far of the current file after every chunk
    // (worker thread); for progress displays and tests.
    void setProgressObserver(std::function<void(std::int64_t)> observer);

    const TarnActionOptions& Action_Properties() const { return properties_; }
    quint64 itemsTotal() const { return itemsTotal_; }
    quint64 itemsDone() const { return itemsDone_; }
    quint64 BytesTotal() const { return bytesTotal_; }
    quint64 BytesDone() const { return bytesDone_; }
    std::int64_t bWritten() const { return bWritten_; }
    QString targetURL() const { return targetURL_; }  // null: none
    QString validPath() const { return validPath_; }
    bool YesToAll() const { return yesToAll_; }
    QString actionLog() const;
    // Files whose copy, move or removal failed (not those skipped by an
    // answer, nor the one a cancellation stopped).
    quint64 filesFailed() const { return filesFailed_; }

    void copyAction();
    void moveAction();
    void deleteAction();

    // The folder one item goes to (null without a destination). Project and
    // folder names that are no plain file names ("..", "a/b") are made
    // harmless ("__", "a_b"): a target never leaves the destination.
    QString targetFolderForItem(const TarnDatabaseItem& item) const;
    bool createTargetDirWithURL(const QString& targetFolder, const QString& itemFile);
    bool areSourceAndTargetEqual(const QString& source, const QString& targetFolder) const;
    bool areURLsOnTheSameVolume(const QString& first, const QString& second);
    bool CheckTargetAndAskToOverwrite(const QString& targetFile);
    // Asked before a file is removed for good.
    bool shouldRemoveItemAtURL(const QString& path);

    // What the program does where the desktop version played the "Pop"
    // sound at the end of every run (the app beeps; default: nothing).
    static void setPopHook(std::function<void()> hook);

    // The copy engine's progress callback: quits once the operation is
    // cancelled, otherwise records the bytes written.
    static int copyFileCallback(TarnFileCopier::Stage stage, std::int64_t copied, void* context);

  signals:
    // Emitted (on the cancelling thread) when the cancelled flag turns on.
    void isCancelledChanged(bool cancelled);

  private:
    // The "Copy?" answers that hold for the rest of a move run.
    struct MoveAnswers {
        bool copyAll = false;
        bool skipAll = false;
    };

    void log(const QString& text);
    QString timestamp() const;
    void sendStatusUpdate();
    void sendWillStart();
    void sendDidFinish();
    void countItemDone(const TarnDatabaseItem& item);
    // The start of a copy or move turn: counts it, reports progress and
    // returns the target folder, or null when the item needs no work (then
    // its bytes are already counted).
    QString beginItemTurn(const TarnDatabaseItem& item, const QString& verb);
    // Makes the target folder (clearing abandoned partial copies from it)
    // and returns the target file; `ok`: the folder is there.
    QString prepareTarget(const TarnDatabaseItem& item, const QString& folder, bool* ok);
    void logStart(const QString& verb, const TarnDatabaseItem& item, const QString& target);
    // Copies (or, with TarnFileCopier::Move, moves) the checked source and
    // logs DONE or the failure; true when done.
    bool copyChecked(const TarnDatabaseItem& item, const TarnMediaFileGuard::Checked& source,
                     const QString& target, unsigned flags, const QString& consoleLine);
    // One copy or move turn: the target folder, the checked source and the
    // target file in its prepared folder.
    struct Turn {
        QString folder;
        TarnMediaFileGuard::Checked source;
        QString target;
        bool folderReady = false;
    };
    // Begins the turn, checks the source and prepares the target; false
    // when the item needs no work or is refused (its turn is counted).
    bool openTurn(const TarnDatabaseItem& item, const QString& verb, Turn& turn);
    // One item's turn in each action.
    void copyItem(TarnDatabaseItem& item);
    void moveItem(TarnDatabaseItem& item, MoveAnswers& answers);
    void deleteItem(TarnDatabaseItem& item);
    // An existing target: "Overwrite?" unless "Yes to All" holds; a dismissed
    // question copies only when the target folder is ready.
    bool mayCopyOnto(const QString& target, bool folderReady);
    // Renames within the volume, else copies and removes the source; a
    // source that can not be moved may be copied (asked); true when done.
    bool moveChecked(const TarnDatabaseItem& item, const TarnMediaFileGuard::Checked& source,
                     const QString& target, bool proceed, bool sameVolume, MoveAnswers& answers);
    // Removal for good once the Trash refused (asked first); true when gone.
    bool removeWithoutTrash(const TarnMediaFileGuard::Checked& file, const QString& path);
    // A rename within the volume; a failure is logged.
    bool fastMove(const TarnMediaFileGuard::Checked& source, const QString& target);
    // "File can not be moved.\nCopy?", unless an "All" answer holds.
    bool copyInsteadOfMove(const TarnDatabaseItem& item, MoveAnswers& answers);
    int askNoYesYesToAll(const QString& message, const QString& detail);
    void showErrorDialog(const QString& message, const QString& detail);
    bool removeItemAtURL(const TarnMediaFileGuard::Checked& file, QString* error);
    static void markMissing(TarnDatabaseItem& item);
    TarnFileCopier::Result runCopy(const QString& source, const QString& target, unsigned flags);
    void countFailure(const TarnFileCopier::Result& result);
    // Logs a failed copy with the system's reason ("No space left on device").
    void logCopyFailure(const TarnFileCopier::Result& result, const QString& consoleLine);
    TarnMediaFileGuard& guard();
    // The item is a regular file inside a media folder root (checked before
    // its turn, and re-checked right before it is touched); otherwise the
    // reason is logged as an error and counted as a failure.
    bool checkSource(const TarnDatabaseItem& item, TarnMediaFileGuard::Checked* checked);
    bool recheckSource(const TarnDatabaseItem& item, const TarnMediaFileGuard::Checked& checked);
    void logRefusal(const QString& reason, const QString& path);
    // The first copy or move into a folder removes the partial copies that
    // no running Tarn owns (left by one that was killed).
    void sweepAbandonedCopies(const QString& folder);
    // A folder with its links resolved (cached), or the text when it does
    // not exist.
    QString realFolder(const QString& folder) const;

    TarnActionOptions properties_;
    quint64 itemsTotal_ = 0;
    std::atomic<quint64> itemsDone_{0};
    quint64 bytesTotal_ = 0;
    std::atomic<quint64> bytesDone_{0};
    std::atomic<std::int64_t> bWritten_{0};
    QString targetURL_;
    QString validPath_ = QStringLiteral("Invalid path");
    std::atomic<bool> yesToAll_{false};
    std::atomic<bool> showAllErrorDialogs_{true};
    std::atomic<bool> lastDelegateResponce_{false};
    std::atomic<quint64> filesFailed_{0};

    std::atomic<bool> cancelled_{false};
    std::atomic<bool> executing_{false};
    std::atomic<bool> finished_{false};

    mutable QMutex mutex_;  // the log, the completion and the observer
    QString actionLog_;
    QMutex delegateMutex_;  // held while a callback runs, so a delegate can leave safely
    TarnActionOperationDelegate* delegate_ = nullptr;
    std::function<void()> completion_;
    std::function<void(std::int64_t)> progressObserver_;

    QLocale locale_ = QLocale::system();
    QString timeFormat_;
    mutable QMutex stampMutex_;
    mutable qint64 stampSecond_ = -1;  // the last stamp, reused within its second
    mutable QString stamp_;
    QHash<QString, QString> volumeNames_;  // folder -> volume name (worker thread)
    std::unique_ptr<TarnMediaFileGuard> guard_;
    QSet<QString> sweptFolders_;
    mutable QMutex realFoldersMutex_;
    mutable QHash<QString, QString> realFolders_;
};
