#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <sys/types.h>

// Copy, move and delete act only on what a scan can rightly have found: a
// regular file inside one of the media folder roots of the scan
// (".../Avid MediaFiles/MXF/", "OMFI MediaFiles/", a folder picked for a
// single-folder scan, ...). A damaged media index can name anything, a
// folder, "..", a link to a folder elsewhere, and a file can be replaced by a
// link or a folder after the scan: every item is checked before its turn and
// again right before it is touched.
//
// The check resolves the links of the item's folder (realpath) and of the
// roots, and looks at the file itself without following it (lstat): a
// folder, a link (to anything), a device, a pipe or a socket is refused, and
// so is a file whose folder resolves outside every root. The acts themselves
// go through the file's folder opened from its root one component at a time
// without following links (O_NOFOLLOW), and name the file relative to that
// folder (unlinkat, renameat), so a folder swapped for a link between the
// check and the act cannot redirect them; unlinkat never removes a folder.
//
// One guard serves one run on one thread.
class TarnMediaFileGuard {
  public:
    struct Checked {
        QString path;    // the file, its folder resolved: "/real/folder/name"
        QString root;    // the resolved root it lies in
        QString folder;  // the resolved folder
        QString name;
        dev_t device = 0;
        ino_t inode = 0;
    };

    explicit TarnMediaFileGuard(const QStringList& roots);
    ~TarnMediaFileGuard();
    TarnMediaFileGuard(const TarnMediaFileGuard&) = delete;
    TarnMediaFileGuard& operator=(const TarnMediaFileGuard&) = delete;

    // The roots that exist, resolved, without a trailing separator.
    const QStringList& roots() const { return roots_; }

    // True when `itemPath` is a regular file inside a root; `reason` says
    // why not ("Is a directory", "Is a symbolic link", "Not a regular file",
    // "Outside the media folders of the scan", "Not a file name", or the
    // system's word for a missing file).
    bool check(const QString& itemPath, Checked* checked, QString* reason);
    // The checked file is still the same regular file in the same place.
    bool stillSame(const Checked& checked, QString* reason);
    // Removes the checked file for good (never a folder). False with the reason.
    bool removeFile(const Checked& checked, QString* reason);
    // Renames the checked file to `target`; false with errno in `error` and
    // the reason.
    bool renameFile(const Checked& checked, const QString& target, int* error, QString* reason);

  private:
    // The resolved folder opened from its root without following links, or
    // -1 (errno set); kept open for the next file of the same folder.
    int folderFd(const Checked& checked);
    QString rootOf(const QString& resolvedFolder) const;
    void closeFolders();

    QStringList roots_;
    QHash<QString, int> folders_;       // resolved folder -> open descriptor
    QHash<QString, QString> resolved_;  // folder as named -> resolved (one run)
};
