#include "actions/TarnActionOperation.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QMutexLocker>
#include <QStandardPaths>
#include <QStorageInfo>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "actions/TarnActionOperationDelegate.h"
#include "actions/TarnAlert.h"
#include "log/xConsole.h"
#include "support/TarnFileName.h"
#include "support/TarnTrash.h"
#include "support/TarnUtilities.h"

namespace {

QMutex& popMutex() {
    static QMutex mutex;
    return mutex;
}
std::function<void()>& popSlot() {
    static std::function<void()> hook;
    return hook;
}

// The same folder written with or without trailing separators compares equal.
QString normalised(const QString& path) {
    if (path.isEmpty()) return path;
    return QDir::cleanPath(path);
}

quint64 sizeOf(const TarnDatabaseItem& item) {
    return item.DB_filesize.value_or(0);
}

bool reachable(const QString& path) {
    struct stat st {};
    return ::lstat(TarnFileName::encode(path).constData(), &st) == 0;
}

// A project or folder name as one folder of a target path: separators and
// NULs become "_", and "." or ".." become "_" or "__".
QString asFolderName(const QString& name) {
    QString out = name;
    for (QChar& c : out)
        if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c.isNull()) c = QLatin1Char('_');
    if (out == QLatin1String(".") || out == QLatin1String("..")) out.fill(QLatin1Char('_'));
    return out.isEmpty() ? QStringLiteral("_") : out;
}

// The five answers of "File can not be moved.\nCopy?", in button order.
enum MoveAnswer { kSkipAll = 1000, kNo = 1001, kYes = 1002, kYesToAll = 1003, kCancel = 1004 };

// Moves a file to the Trash. Where the desktop keeps a home Trash folder
// (freedesktop.org), it is made first if missing: without it the platform
// routine may fall back to a relative folder of the current directory, which
// is no Trash at all. No usable Trash counts as a failed move to the Trash.
bool moveToTrash(const QString& path, int* code, QString* description) {
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const QString trash = data + QStringLiteral("/Trash");
    if (data.isEmpty() || !QDir().mkpath(trash + QStringLiteral("/files")) ||
        !QDir().mkpath(trash + QStringLiteral("/info"))) {
        *code = int(QFileDevice::RenameError);
        *description = QStringLiteral("No Trash folder at %1").arg(trash);
        return false;
    }
#endif
    return TarnTrash::moveToTrash(path, code, description);
}

}  // namespace

TarnActionOperation::TarnActionOperation(const TarnActionOptions& properties)
    : properties_(properties) {
    timeFormat_ = locale_.timeFormat(QLocale::ShortFormat);
    if (!timeFormat_.contains(QLatin1Char('s')))
        timeFormat_.replace(QLatin1String("mm"), QLatin1String("mm:ss"));
    log(QStringLiteral("%1 :: TarnAction init \n").arg(timestamp()));
    log(QStringLiteral(":: Action :: %1 \n").arg(properties_.Action));
    if (properties_.items) {
        itemsTotal_ = quint64(properties_.items->size());
        log(QStringLiteral(":: %1 :: items \n").arg(itemsTotal_));
        for (const TarnItemPtr& item : *properties_.items)
            if (item) bytesTotal_ += sizeOf(*item);
        if (!properties_.isDelete()) {
            const QString destination = properties_.Destination;
            if (!destination.isNull()) {
                // A folder path that compares: absolute and clean, so that a
                // relative or trailing-separator destination still meets the
                // source folder it names.
                targetURL_ = TarnUtilities::absoluteFolderPath(destination);
                if (QFileInfo(targetURL_).isDir()) validPath_ = targetURL_;
            }
            log(QStringLiteral(":: destination :: %1 \n").arg(validPath_));
        }
    }
    log(QStringLiteral("%1 :: TarnAction queued\n").arg(timestamp()));
}

TarnActionOperation::~TarnActionOperation() {
    TARN_LOG(QStringLiteral("Operation deallocated"));
}

void TarnActionOperation::setPopHook(std::function<void()> hook) {
    QMutexLocker lock(&popMutex());
    popSlot() = std::move(hook);
}

QString TarnActionOperation::timestamp() const {
    // Short date, time with seconds, in the user's locale; made once a second
    // (a run may write thousands of lines within one).
    const qint64 second = QDateTime::currentSecsSinceEpoch();
    QMutexLocker lock(&stampMutex_);
    if (second != stampSecond_) {
        const QDateTime now = QDateTime::fromSecsSinceEpoch(second);
        stamp_ = locale_.toString(now.date(), QLocale::ShortFormat) + QStringLiteral(", ") +
                 locale_.toString(now.time(), timeFormat_);
        stampSecond_ = second;
    }
    return stamp_;
}

void TarnActionOperation::log(const QString& text) {
    QMutexLocker lock(&mutex_);
    actionLog_ += text;
}

QString TarnActionOperation::actionLog() const {
    QMutexLocker lock(&mutex_);
    return actionLog_;
}

void TarnActionOperation::setCompletionBlock(std::function<void()> block) {
    QMutexLocker lock(&mutex_);
    completion_ = std::move(block);
}

void TarnActionOperation::setDelegate(TarnActionOperationDelegate* delegate) {
    QMutexLocker lock(&delegateMutex_);
    delegate_ = delegate;
}

void TarnActionOperation::setProgressObserver(std::function<void(std::int64_t)> observer) {
    QMutexLocker lock(&mutex_);
    progressObserver_ = std::move(observer);
}

void TarnActionOperation::sendWillStart() {
    QMutexLocker lock(&delegateMutex_);
    if (delegate_) delegate_->TarnActionOperationWillStart(this);
}

void TarnActionOperation::sendStatusUpdate() {
    QMutexLocker lock(&delegateMutex_);
    if (delegate_) delegate_->TarnActionOperationStatusUpdate(this);
}

void TarnActionOperation::sendDidFinish() {
    QMutexLocker lock(&delegateMutex_);
    if (delegate_) delegate_->TarnActionOperationDidFinished(this);
}

void TarnActionOperation::cancel() {
    if (cancelled_.exchange(true)) return;
    log(QStringLiteral("%1 :: TarnAction Cancelled\n").arg(timestamp()));
    emit isCancelledChanged(true);
}

void TarnActionOperation::start() {
    // A queued operation cancelled before its turn finishes without running.
    if (!finished_ && !executing_) {
        if (!cancelled_) {
            executing_ = true;
            main();
            executing_ = false;
        }
        finished_ = true;
    }
    std::function<void()> completion;
    {
        QMutexLocker lock(&mutex_);
        completion = std::move(completion_);
        completion_ = nullptr;
    }
    if (completion) completion();
}

void TarnActionOperation::main() {
    log(QStringLiteral("%1 :: TarnAction Execution Started\n").arg(timestamp()));
    if (!isCancelled()) {
        sendWillStart();
        if (properties_.items) {
            if (properties_.isDelete())
                deleteAction();
            else if (properties_.isCopy())
                copyAction();
            else if (properties_.isMove())
                moveAction();
        }
        if (!isCancelled()) sendDidFinish();
    }
    log(QStringLiteral("%1 :: TarnAction Finished\n").arg(timestamp()));
    std::function<void()> pop;
    {
        QMutexLocker lock(&popMutex());
        pop = popSlot();
    }
    if (pop) pop();
}

int TarnActionOperation::askNoYesYesToAll(const QString& message, const QString& detail) {
    if (isCancelled()) return TarnAlert::kNoAnswer;
    return TarnAlert::ShowDialog_with_NoYesYesToAll(message, detail,
                                                    [this] { return isCancelled(); });
}

void TarnActionOperation::showErrorDialog(const QString& message, const QString& detail) {
    if (isCancelled() || !showAllErrorDialogs_) return;
    showAllErrorDialogs_ = TarnAlert::ShowDialog_with_OkDoNotShowAgain(
        message, detail, [this] { return isCancelled(); });
}

void TarnActionOperation::countItemDone(const TarnDatabaseItem& item) {
    bytesDone_ += sizeOf(item);
    bWritten_ = 0;
}

void TarnActionOperation::markMissing(TarnDatabaseItem& item) {
    item.DB_FileExists = false;
    item.DB_isValid_initial = false;
    item.DB_isValid = false;
}

QString TarnActionOperation::targetFolderForItem(const TarnDatabaseItem& item) const {
    if (targetURL_.isNull()) return QString();
    QString folder = normalised(targetURL_);
    if (properties_.Create_projects_folders)
        folder += QLatin1Char('/') + asFolderName(item.get_DB_ProjectName());
    if (properties_.Create_mxf_folders) {
        const QString extension = TarnFileName::extension(item.DB_itemPath);
        folder += QLatin1Char('/') +
                  (extension.isEmpty() ? QStringLiteral("_NOEXT_TYPE") : extension.toUpper());
    }
    if (properties_.Keep_original_folders) {
        folder +=
            QLatin1Char('/') + asFolderName(item.DB_itemPath.section(QLatin1Char('/'), -2, -2));
        TARN_LOG(QStringLiteral("Target path: %1").arg(folder));
    }
    return folder;
}

bool TarnActionOperation::areSourceAndTargetEqual(const QString& source,
                                                  const QString& targetFolder) const {
    QString src = normalised(source);
    QString target = normalised(targetFolder);
    if (src.isEmpty() || target.isEmpty()) return false;
    const QString parent = normalised(QFileInfo(src).path());
    if (src == target || parent == target) return true;
    // The same folder reached through a link is the same folder.
    return realFolder(parent) == realFolder(target);
}

QString TarnActionOperation::realFolder(const QString& folder) const {
    QMutexLocker lock(&realFoldersMutex_);
    auto known = realFolders_.constFind(folder);
    if (known != realFolders_.constEnd()) return *known;
    char buffer[PATH_MAX];
    const QString real = ::realpath(TarnFileName::encode(folder).constData(), buffer)
                             ? TarnFileName::decode(buffer)
                             : folder;
    // Only existing folders are kept: one made later resolves then.
    if (real != folder || QFileInfo(folder).isDir()) realFolders_.insert(folder, real);
    return real;
}

bool TarnActionOperation::areURLsOnTheSameVolume(const QString& first, const QString& second) {
    QString names[2];
    const QString paths[2] = {first, second};
    for (int i = 0; i < 2; ++i) {
        // Looked up once per folder: a run moves many files between the same two.
        // A file is on its folder's volume; a folder may be a mount point itself.
        struct stat st {};
        const bool exists = ::lstat(TarnFileName::encode(paths[i]).constData(), &st) == 0;
        const QString folder =
            exists && S_ISDIR(st.st_mode) ? normalised(paths[i]) : QFileInfo(paths[i]).path();
        auto known = volumeNames_.constFind(folder);
        if (exists && known != volumeNames_.constEnd()) {
            names[i] = *known;
            continue;
        }
        QStorageInfo storage(TarnFileName::plainAncestor(paths[i]));
        if (!storage.isValid()) {
            int code = exists ? EIO : ENOENT;
            QString description = QString::fromLocal8Bit(std::strerror(code));
            log(QStringLiteral(":: ERROR :: %1 :: %2 \n").arg(code).arg(description));
            TARN_LOG(QStringLiteral("%1 :: %2\n").arg(code).arg(description));
            return false;
        }
        // The label, or the mount point when there is none: two unlabelled
        // mounts never pass for one.
        names[i] = storage.displayName();
        volumeNames_.insert(folder, names[i]);
    }
    return names[0] == names[1];
}

bool TarnActionOperation::createTargetDirWithURL(const QString& targetFolder,
                                                 const QString& itemFile) {
    if (targetFolder.isNull()) return false;
    struct stat st {};
    const QByteArray nativeFolder = TarnFileName::encode(targetFolder);
    if (::stat(nativeFolder.constData(), &st) == 0 && S_ISDIR(st.st_mode)) return true;
    bool created = false;
    QString error;
    if (!TarnFileCopier::createDirectories(targetFolder, &created, &error)) {
        log(QStringLiteral(":: ERROR :: %1 :: %2 \n").arg(error, targetFolder));
        showErrorDialog(error, targetFolder);
    }
    if (created) {
        // A new media folder gets the index and database of the folder its
        // first file came from, so the editing system finds the media at once.
        const QString sourceFolder = QFileInfo(itemFile).path();
        const struct {
            const char* name;
            const char* line;
        } seeds[] = {{"msmFMID.pmr", "COPY old pmr %1"}, {"msmMMOB.mdb", "COPY old mdb %1"}};
        for (const auto& seed : seeds) {
            QFile in;
            if (!TarnFileName::open(in, sourceFolder + QLatin1Char('/') + QLatin1String(seed.name),
                                    QIODevice::ReadOnly))
                continue;
            QByteArray bytes = in.readAll();
            QString newPath =
                normalised(targetFolder) + QLatin1Char('/') + QLatin1String(seed.name);
            TARN_LOG(QString::fromLatin1(seed.line).arg(newPath));
            QFile out;
            if (TarnFileName::open(out, newPath, QIODevice::WriteOnly | QIODevice::Truncate))
                out.write(bytes);
        }
    }
    return created || (::stat(nativeFolder.constData(), &st) == 0 && S_ISDIR(st.st_mode));
}

bool TarnActionOperation::CheckTargetAndAskToOverwrite(const QString& targetFile) {
    if (!reachable(targetFile)) return true;
    log(QStringLiteral(":: FILE EXISTS AT DESTINATION \n"));
    if (yesToAll_) return true;
    int answer =
        askNoYesYesToAll(QStringLiteral("File exists at destination.\nOverwrite?"), targetFile);
    if (answer == TarnAlert::kThirdButton) {
        yesToAll_ = true;
        log(QStringLiteral(":: OVERWRITING \n"));
        return true;
    }
    if (answer == TarnAlert::kSecondButton) {
        log(QStringLiteral(":: OVERWRITING \n"));
        return true;
    }
    if (answer == TarnAlert::kFirstButton) log(QStringLiteral(":: SKIPPING \n"));
    return false;
}

int TarnActionOperation::copyFileCallback(TarnFileCopier::Stage stage, std::int64_t copied,
                                          void* context) {
    auto* op = static_cast<TarnActionOperation*>(context);
    if (op->isCancelled()) return TarnFileCopier::Quit;
    if (stage == TarnFileCopier::Stage::Error) {
        TARN_LOG(QStringLiteral("Copyfile data error..."));
        op->log(QStringLiteral("Copyfile data error..."));
        return TarnFileCopier::Continue;
    }
    op->bWritten_ = copied;
    std::function<void(std::int64_t)> observer;
    {
        QMutexLocker lock(&op->mutex_);
        observer = op->progressObserver_;
    }
    if (observer) observer(copied);
    return op->isCancelled() ? TarnFileCopier::Quit : TarnFileCopier::Continue;
}

TarnFileCopier::Result TarnActionOperation::runCopy(const QString& source, const QString& target,
                                                    unsigned flags) {
    return TarnFileCopier::copy(source, target, flags, &TarnActionOperation::copyFileCallback,
                                this);
}

void TarnActionOperation::countFailure(const TarnFileCopier::Result& result) {
    if (!result.cancelled && !isCancelled()) ++filesFailed_;
}

void TarnActionOperation::logCopyFailure(const TarnFileCopier::Result& result,
                                         const QString& consoleLine) {
    countFailure(result);
    TARN_LOG(consoleLine);
    log(QStringLiteral("%1 :: ERROR ::\n").arg(timestamp()));
    // Why, unless the user stopped it.
    if (!result.cancelled && result.error != 0)
        log(QStringLiteral(":: ERROR :: %1 :: %2 \n").arg(result.error).arg(result.description));
}

TarnMediaFileGuard& TarnActionOperation::guard() {
    if (!guard_) guard_ = std::make_unique<TarnMediaFileGuard>(properties_.mediaFolderRoots);
    return *guard_;
}

void TarnActionOperation::logRefusal(const QString& reason, const QString& path) {
    ++filesFailed_;
    log(QStringLiteral(":: ERROR :: %1 :: %2 \n").arg(reason, path));
    TARN_LOG(QStringLiteral("%1 :: %2").arg(reason, path));
}

bool TarnActionOperation::checkSource(const TarnDatabaseItem& item,
                                      TarnMediaFileGuard::Checked* checked) {
    QString reason;
    if (guard().check(item.DB_itemPath, checked, &reason)) return true;
    // An item without a path is known by the name its index gave it.
    logRefusal(reason, item.DB_itemPath.isEmpty() ? item.DB_ClipName : item.DB_itemPath);
    return false;
}

bool TarnActionOperation::recheckSource(const TarnDatabaseItem& item,
                                        const TarnMediaFileGuard::Checked& checked) {
    QString reason;
    if (guard().stillSame(checked, &reason)) return true;
    logRefusal(reason, item.DB_itemPath);
    return false;
}

void TarnActionOperation::sweepAbandonedCopies(const QString& folder) {
    if (sweptFolders_.contains(folder)) return;
    sweptFolders_.insert(folder);
    for (const QString& name : TarnFileCopier::removeAbandonedTemporaries(folder)) {
        log(QStringLiteral(":: REMOVED ABANDONED PARTIAL COPY :: %1/%2 \n").arg(folder, name));
        TARN_LOG(QStringLiteral("Removed abandoned partial copy %1/%2").arg(folder, name));
    }
}

QString TarnActionOperation::beginItemTurn(const TarnDatabaseItem& item, const QString& verb) {
    ++itemsDone_;
    if (!isCancelled()) sendStatusUpdate();
    const QString folder = targetFolderForItem(item);
    if (areSourceAndTargetEqual(item.DB_itemPath, folder)) {
        log(QStringLiteral("%1 :: SKIPPING - the same src&dst :: %2 :: %3 \n")
                .arg(timestamp(), verb, item.DB_itemPath));
        countItemDone(item);
        return QString();
    }
    if (folder.isNull()) countItemDone(item);
    return folder;
}

QString TarnActionOperation::prepareTarget(const TarnDatabaseItem& item, const QString& folder,
                                           bool* ok) {
    *ok = createTargetDirWithURL(folder, item.DB_itemPath);
    if (*ok) sweepAbandonedCopies(normalised(folder));
    return folder + QLatin1Char('/') + QFileInfo(item.DB_itemPath).fileName();
}

void TarnActionOperation::logStart(const QString& verb, const TarnDatabaseItem& item,
                                   const QString& target) {
    log(QStringLiteral("%1 :: STARTING ::\n:: %2\nfrom :: %3 \nto :: %4\n")
            .arg(timestamp(), verb, item.DB_itemPath, target));
}

bool TarnActionOperation::copyChecked(const TarnDatabaseItem& item,
                                      const TarnMediaFileGuard::Checked& source,
                                      const QString& target, unsigned flags,
                                      const QString& consoleLine) {
    if (!recheckSource(item, source)) return false;
    TarnFileCopier::Result result = runCopy(source.path, target, flags);
    if (!result.ok) {
        logCopyFailure(result, consoleLine);
        return false;
    }
    log(QStringLiteral("%1 :: DONE ::\n").arg(timestamp()));
    return true;
}

void TarnActionOperation::copyAction() {
    for (const TarnItemPtr& item : *properties_.items) {
        if (isCancelled()) return;
        if (item) copyItem(*item);
    }
}

bool TarnActionOperation::openTurn(const TarnDatabaseItem& item, const QString& verb, Turn& turn) {
    turn.folder = beginItemTurn(item, verb);
    if (turn.folder.isNull()) return false;
    if (!checkSource(item, &turn.source)) {
        countItemDone(item);
        return false;
    }
    turn.target = prepareTarget(item, turn.folder, &turn.folderReady);
    return true;
}

void TarnActionOperation::copyItem(TarnDatabaseItem& item) {
    Turn turn;
    if (!openTurn(item, QStringLiteral("copy"), turn)) return;
    logStart(QStringLiteral("copy"), item, turn.target);
    if (mayCopyOnto(turn.target, turn.folderReady))
        copyChecked(item, turn.source, turn.target, TarnFileCopier::None,
                    QStringLiteral("Error copying to %1").arg(turn.target));
    if (!isCancelled()) countItemDone(item);
}

bool TarnActionOperation::mayCopyOnto(const QString& target, bool folderReady) {
    if (!reachable(target)) return true;
    log(QStringLiteral(":: FILE EXISTS AT DESTINATION \n"));
    if (yesToAll_) return true;
    const int answer =
        askNoYesYesToAll(QStringLiteral("File exists at destination.\nOverwrite?"), target);
    if (answer == TarnAlert::kThirdButton) yesToAll_ = true;
    if (answer == TarnAlert::kThirdButton || answer == TarnAlert::kSecondButton) {
        log(QStringLiteral(":: OVERWRITING \n"));
        return true;
    }
    if (answer == TarnAlert::kFirstButton) {
        log(QStringLiteral(":: SKIPPING \n"));
        return false;
    }
    return folderReady;
}

bool TarnActionOperation::fastMove(const TarnMediaFileGuard::Checked& source,
                                   const QString& target) {
    TARN_LOG(QStringLiteral("Fast Move"));
    int code = 0;
    QString description;
    if (guard().renameFile(source, target, &code, &description)) return true;
    ++filesFailed_;
    log(QStringLiteral(":: ERROR :: %1 :: %2 \n").arg(code).arg(description));
    TARN_LOG(QStringLiteral("%1 :: %2\n").arg(code).arg(description));
    return false;
}

bool TarnActionOperation::copyInsteadOfMove(const TarnDatabaseItem& item, MoveAnswers& answers) {
    if (answers.skipAll) return false;
    if (answers.copyAll) return true;
    if (isCancelled()) return false;
    int answer = TarnAlert::ShowDialog_with_buttons(
        QStringLiteral("File can not be moved.\nCopy?"), item.DB_itemPath,
        {QStringLiteral("Skip All"), QStringLiteral("No"), QStringLiteral("Yes"),
         QStringLiteral("Yes to All"), QStringLiteral("Cancel")},
        [this] { return isCancelled(); });
    switch (answer) {
        case kSkipAll:
            log(QStringLiteral(":: SKIPPING \n"));
            answers.skipAll = true;
            answers.copyAll = false;
            return false;
        case kNo:
            log(QStringLiteral(":: SKIPPING \n"));
            return false;
        case kYes:
            log(QStringLiteral(":: COPYING \n"));
            return true;
        case kYesToAll:
            log(QStringLiteral(":: COPYING \n"));
            answers.copyAll = true;
            answers.skipAll = false;
            return true;
        case kCancel:
            cancel();
            return false;
        default:
            return false;
    }
}

void TarnActionOperation::moveAction() {
    MoveAnswers answers;
    for (const TarnItemPtr& item : *properties_.items) {
        if (isCancelled()) return;
        if (item) moveItem(*item, answers);
    }
}

void TarnActionOperation::moveItem(TarnDatabaseItem& item, MoveAnswers& answers) {
    Turn turn;
    if (!openTurn(item, QStringLiteral("move"), turn)) return;
    const bool sameVolume = areURLsOnTheSameVolume(item.DB_itemPath, turn.folder);
    logStart(QStringLiteral("move"), item, turn.target);
    if (!turn.folderReady) ++filesFailed_;  // no folder to move into
    const bool proceed = turn.folderReady && CheckTargetAndAskToOverwrite(turn.target);
    const bool done = moveChecked(item, turn.source, turn.target, proceed, sameVolume, answers);
    // A move onto the file itself (or a copy) leaves it where it was.
    if (done && !reachable(item.DB_itemPath)) markMissing(item);
    if (!isCancelled()) countItemDone(item);
}

bool TarnActionOperation::moveChecked(const TarnDatabaseItem& item,
                                      const TarnMediaFileGuard::Checked& source,
                                      const QString& target, bool proceed, bool sameVolume,
                                      MoveAnswers& answers) {
    const QString consoleLine = QStringLiteral("Error moving to %1").arg(target);
    if (proceed && ::access(TarnFileName::encode(source.path).constData(), R_OK | W_OK) == 0) {
        if (sameVolume) return fastMove(source, target);
        TARN_LOG(QStringLiteral("Slow move"));
        return copyChecked(item, source, target, TarnFileCopier::Move, consoleLine);
    }
    log(QStringLiteral(":: file is not moveable \n"));
    if (!copyInsteadOfMove(item, answers) || !proceed || isCancelled()) return false;
    TARN_LOG(QStringLiteral("Slow copy"));
    return copyChecked(item, source, target, TarnFileCopier::None, consoleLine);
}

bool TarnActionOperation::shouldRemoveItemAtURL(const QString& path) {
    if (yesToAll_) return true;
    int answer = askNoYesYesToAll(
        QStringLiteral("File can not be moved to the Trash.\nTry to delete permanently?"), path);
    if (answer == TarnAlert::kThirdButton) {
        lastDelegateResponce_ = true;
        yesToAll_ = true;
        return true;
    }
    if (answer == TarnAlert::kSecondButton) {
        lastDelegateResponce_ = true;
        return true;
    }
    // "No", and a question dismissed or abandoned: the file stays.
    lastDelegateResponce_ = false;
    return false;
}

// Like a file manager's removal with a delegate: a declined removal counts as
// success (nothing to report), a failed one returns its error. Only the
// checked regular file is removed, never a folder.
bool TarnActionOperation::removeItemAtURL(const TarnMediaFileGuard::Checked& file, QString* error) {
    if (!shouldRemoveItemAtURL(file.path)) return true;
    return guard().removeFile(file, error);
}

void TarnActionOperation::deleteAction() {
    for (const TarnItemPtr& item : *properties_.items) {
        if (isCancelled()) return;
        if (item) deleteItem(*item);
    }
}

void TarnActionOperation::deleteItem(TarnDatabaseItem& item) {
    ++itemsDone_;
    if (!isCancelled()) sendStatusUpdate();
    lastDelegateResponce_ = true;
    TarnMediaFileGuard::Checked file;
    if (!item.DB_FileExists || !checkSource(item, &file)) {
        countItemDone(item);
        return;
    }
    log(QStringLiteral("%1 :: DELETING :: %2 \n").arg(timestamp(), item.DB_itemPath));
    if (!recheckSource(item, file)) {
        countItemDone(item);
        return;
    }
    int code = 0;
    QString description;
    bool succeeded = moveToTrash(file.path, &code, &description);
    if (!succeeded) {
        if (!description.isEmpty())
            log(QStringLiteral(":: ERROR :: %1 :: %2 \n").arg(code).arg(description));
        else
            log(QStringLiteral(":: ERROR :: deleting :: %1 \n").arg(item.DB_itemPath));
        succeeded = removeWithoutTrash(file, item.DB_itemPath);
    }
    if (succeeded) {
        log(QStringLiteral(":: SUCCEED ::\n"));
        markMissing(item);
    }
    countItemDone(item);
}

bool TarnActionOperation::removeWithoutTrash(const TarnMediaFileGuard::Checked& file,
                                             const QString& path) {
    QString error;
    if (!removeItemAtURL(file, &error)) {
        if (!isCancelled()) ++filesFailed_;
        if (!error.isEmpty() && !isCancelled()) {
            log(QStringLiteral(":: ERROR :: %1 :: %2 \n").arg(error, path));
            showErrorDialog(error, path);
        }
        return false;
    }
    if (!lastDelegateResponce_) {
        log(QStringLiteral(":: SKIPPED :: %1 \n").arg(path));
        TARN_LOG(QStringLiteral("Delegate returned NO"));
        return false;
    }
    return true;
}
