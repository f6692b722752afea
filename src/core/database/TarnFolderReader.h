#pragma once

#include <QList>
#include <QString>

// Lists one folder with the kind of each entry, straight from the directory
// (no per-entry stat where the file system reports the type), so walking a
// volume of 100,000 media files costs little more than reading the folders.
//
// Names keep their bytes (support/TarnFileName): a name that is not UTF-8
// can be listed, opened and removed like any other.
class TarnFolderReader {
  public:
    struct Entry {
        QString name;
        bool isDir = false;   // a folder, or a link to one
        bool isLink = false;  // a symbolic link (isDir tells what it points at)
    };

    // The entries of `folder` (not "." and ".."), in directory order or sorted
    // by name. False, with the reason in `error`, when the folder cannot be read.
    static bool list(const QString& folder, QList<Entry>& entries, QString* error = nullptr,
                     bool sorted = false);
    // True when something exists at `path`.
    static bool exists(const QString& path);
    // True when `path` is a folder (or a link to one).
    static bool isFolder(const QString& path);
};
