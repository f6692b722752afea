#pragma once

#include <QString>

// Moves files to the Trash without losing their names' bytes.
//
// Qt's QFile::moveToTrash re-encodes the path and cannot reach a file whose
// name is not UTF-8, so on freedesktop.org systems the Trash is done here,
// following the freedesktop.org Trash layout: the home Trash ($XDG_DATA_HOME/Trash) for
// files on its volume, else "$topdir/.Trash/$uid" (when that is a sticky
// folder and no link) or "$topdir/.Trash-$uid" on the file's own volume. An
// info file records the original path; the file is then renamed in, so it is
// never copied and never half there. On macOS the system routine is used.
class TarnTrash {
  public:
    // False with an errno-style code and its text when the file stays where
    // it is.
    static bool moveToTrash(const QString& path, int* code, QString* description);
};
