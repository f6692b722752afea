#pragma once

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

#include "database/TarnScanSources.h"
#include "database/TarnSortDescriptor.h"
#include "items/TarnDatabaseItem.h"

class TarnCore;

// What a command works on: which places to scan, the preferences for this run
// and how the view is narrowed and ordered afterwards. `tarn scan` prints the
// result; `tarn copy|move|delete` act on it.
//
//   PATH...                 files and folders, as the open-panel scan takes them
//   --volume ROOT           the media folder roots of a volume (repeatable)
//   --all-volumes           every mounted volume that is not hidden
//   --ama                   the AMA management folder
//   --no-mdb --no-mxf       don't read media databases / unlisted MXF files
//   --show-missing          show items whose file is missing
//   --precomputes --imported --audio       type filter
//   --non-portable --bad-umid --unreferenced  problem filter
//   --search TEXT  --project NAME (repeatable)
//   --intersect BIN --subtract BIN --add BIN (repeatable, in the order given)
//   --sort KEY[:desc] (repeatable, the first decides)
//   --log FILE|-            the console log to a file or stderr
class SelectionOptions {
  public:
    enum class BinOperation { Intersect, Subtract, Add };
    struct BinStep {
        BinOperation operation;
        QString path;
    };

    // Takes the options it knows out of `args`; arguments that do not start
    // with "-" are paths. Everything else is appended to `rest` in order;
    // `callerValueOptions` names the caller's own options that take a value,
    // so that value goes to `rest` with its option. False with a one-line
    // message on a bad or missing value.
    bool parse(const QStringList& args, QStringList* rest, QString* error,
               const QSet<QString>& callerValueOptions = {});
    // At least one place to scan was given.
    bool hasSource() const;

    // The roots to scan, in order: the paths, each volume's media folder
    // roots, those of every mounted volume, then the AMA folder.
    QStringList scanRoots() const;

    // Stores --no-mdb, --no-mxf and --show-missing as run overrides.
    void applyRunPreferences() const;

    // Scans every root into `core` and waits for the scan, then narrows and
    // orders the view: filter flags and search, projects, bins, sort.
    // `progress` (may be empty) is called now and then from another thread
    // with the index files done, found and the items so far.
    using Progress = std::function<void(int done, int found, qsizetype items)>;
    void run(TarnCore& core, const Progress& progress = {}) const;
    // Only the narrowing and ordering, on a database already scanned.
    void applyView(TarnCore& core) const;
    // The shown rows' items in order.
    static QList<TarnItemPtr> shownItems(const TarnCore& core);

    // The option lines of the usage text.
    static QString usage();

    TarnScanSources sources;

    bool noMdb = false;
    bool noMxf = false;
    bool showMissing = false;

    bool precomputes = false;
    bool imported = false;
    bool audio = false;
    bool nonPortable = false;
    bool badUmid = false;
    bool unreferenced = false;
    QString search;
    QStringList projects;
    QList<BinStep> bins;
    QList<TarnSortDescriptor> sort;

    QString logPath;  // "-" for stderr; empty: no log output

  private:
    // True when `option` is a switch; sets it.
    bool setFlag(const QString& option);
    // Stores the value of an option that takes one (`value` is null when the
    // arguments ended); the message for a missing or bad value, else null.
    QString setValue(const QString& option, const QString* value);
};
