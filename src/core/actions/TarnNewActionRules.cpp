#include "actions/TarnNewActionRules.h"

#include <QFileInfo>

#include "items/TarnFileSize.h"
#include "support/TarnUtilities.h"

QString TarnNewActionRules::normaliseDestination(const QString& destination) {
    return TarnUtilities::absoluteFolderPath(destination);
}

quint64 TarnNewActionRules::totalSizeOf(const TarnActionOptions& options) {
    quint64 total = 0;
    if (options.items)
        for (const TarnItemPtr& item : *options.items)
            if (item) total += item->DB_filesize.value_or(0);
    return total;
}

TarnActionOptions TarnNewActionRules::optionsForSelection(const QList<TarnItemPtr>& selection) {
    TarnActionOptions options(selection);
    if (selection.isEmpty()) options.items.reset();
    return options;
}

void TarnNewActionRules::setKeepOriginalFolders(TarnActionOptions& options, bool keep) {
    options.Keep_original_folders = keep;
    if (!keep) options.Keep_pmr = false;
}

QString TarnNewActionRules::updateStatusText(TarnActionOptions& options,
                                             std::optional<quint64>& totalSize) {
    if (!options.items) return QStringLiteral("No items selected \nSorry, nothing to do");
    if (!totalSize && !options.items->isEmpty()) totalSize = totalSizeOf(options);
    QString shown = QStringLiteral("Invalid path");
    if (!options.Destination.isNull()) {
        // While typing, the field keeps what was typed ("Unknown" stays
        // relative); only GO makes it the absolute folder.
        options.Destination = TarnUtilities::stringByRemovingPercentEncoding(
            TarnUtilities::stringByExpandingTildeInPath(options.Destination));
        const QString folder = normaliseDestination(options.Destination);
        if (QFileInfo(folder).isDir()) shown = folder;
    }
    const qsizetype count = options.items->size();
    return QStringLiteral("will %1 \n%2 %3 of %4 size\ndestination: %5")
        .arg(options.Action)
        .arg(count)
        .arg(count < 2 ? QStringLiteral("item") : QStringLiteral("items"),
             TarnFileSize::toHumanBytes(double(totalSize.value_or(0))),
             options.isDelete() ? QStringLiteral("Super Secret Annihilator (SSA)") : shown);
}

TarnNewActionRules::Verdict TarnNewActionRules::PushGo(TarnActionOptions& options) {
    Verdict verdict;
    if (!options.items) {
        verdict.message = QStringLiteral("No items selected. Nothing to do.");
    } else if (options.Destination.isNull()) {
        verdict.valid = options.isDelete();
        if (!verdict.valid) verdict.message = QStringLiteral("Invalid destination path");
    } else {
        options.Destination = normaliseDestination(options.Destination);
        verdict.valid = QFileInfo(options.Destination).isDir() || options.isDelete();
        if (!verdict.valid) verdict.message = QStringLiteral("Please check destination path");
    }
    if (!options.Im_sure) {
        verdict.message = QStringLiteral("Please don't hurry, be patient...");
        verdict.detail = QStringLiteral(
            "Please verify everything before pressing \"GO\" button\nand check \"I'm sure\" "
            "checkbox");
        return verdict;
    }
    verdict.accepted = verdict.valid;
    if (verdict.accepted) verdict.message.clear();
    return verdict;
}
