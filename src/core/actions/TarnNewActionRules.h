#pragma once

#include <QString>

#include <optional>

#include "actions/TarnActionOptions.h"

// What the new-action dialog decides, without its window: the summary line and
// whether "GO" may hand the options to the queue. The command-line tool uses
// the same rules.
class TarnNewActionRules {
  public:
    // The outcome of pressing "GO".
    struct Verdict {
        bool accepted = false;  // the options go to the queue
        bool valid = false;     // the selection and destination are usable
        QString message;        // the alert to show when not accepted
        QString detail;
    };

    // The options a new action starts from for the selected items: the
    // defaults, where an empty selection means no items at all (so the summary
    // and "GO" say there is nothing to do).
    static TarnActionOptions optionsForSelection(const QList<TarnItemPtr>& selection);
    // The "Keep original folders" box: the hidden "Keep_pmr" goes back to NO
    // whenever original folders are not kept.
    static void setKeepOriginalFolders(TarnActionOptions& options, bool keep);

    // The summary: "will Copy \n2 items of 2.10 MB size\ndestination: /Dst".
    // Normalises "Destination" in place (tilde, percent escapes). The total
    // size is computed once and kept in `totalSize`.
    static QString updateStatusText(TarnActionOptions& options, std::optional<quint64>& totalSize);
    // The checks of "GO"; normalises "Destination" in place.
    static Verdict PushGo(TarnActionOptions& options);

    // The folder path the destination names: "~/x" -> "/home/me/x", "~user",
    // percent escapes removed, made absolute and clean ("dst/../x/" ->
    // "/cwd/x"); null stays null.
    static QString normaliseDestination(const QString& destination);
    static quint64 totalSizeOf(const TarnActionOptions& options);
};
