#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include "actions/TarnActionOptions.h"

// The editing system's media indexes ("msmFMID.pmr", "amaFMID.pmr") and media
// databases ("msmMMOB.mdb", "amaMMOB.mdb") in the media folders of volumes:
// finding them, and moving chosen ones to the Trash.
//
// Deleting a media folder's two files makes the editing system rebuild them
// from the media the next time it mounts the folder: the usual cure for media
// that goes offline or shows wrongly. The files go to the Trash through the
// delete of the action engine, so the run has an action log and nothing is
// lost for good.
class TarnDatabaseFiles {
  public:
    struct Entry {
        QString path;    // absolute
        QString folder;  // the media folder that holds it
        QString fileName;
        qint64 size = 0;
        QDateTime date;  // last modified
    };

    struct Result {
        int deleted = 0;  // in the Trash, or removed for good when the user said so
        int missing = 0;  // gone before their turn: skipped and logged
        int failed = 0;   // neither in the Trash nor removed
        QString actionLog;
    };

    // The four file names.
    static QStringList fileNames();
    static bool isDatabaseFileName(const QString& name);

    // Every such file under the media folder roots of the volumes (the roots
    // of an all-volumes scan), ordered by path.
    static QList<Entry> list(const QStringList& volumes);
    // The same for the mounted volumes a scan offers (hidden ones left out).
    static QList<Entry> listMountedVolumes();

    // "Really delete 2 database files?" and the detail under it.
    static QString confirmationText(qsizetype count);
    static QString confirmationDetail();

    // The engine's options for deleting the files: one item per file.
    static TarnActionOptions deleteOptions(const QList<Entry>& files);
    // Runs the engine's delete on this thread over the files that still
    // exist, after logging the missing ones. The action log also goes to
    // the console. Questions of the engine go through TarnAlert.
    static Result moveToTrash(const QList<Entry>& files);
};
