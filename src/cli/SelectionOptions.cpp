#include "SelectionOptions.h"

#include <QDir>
#include <QFileInfo>
#include <QObject>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "database/TarnCore.h"
#include "database/TarnFilter.h"
#include "database/TarnScanner.h"
#include "database/TarnScannerQueue.h"
#include "report/TarnColumns.h"
#include "status/TarnStatusViewController.h"
#include "support/TarnPreferences.h"

namespace {

// The options without a value and the switch each sets.
constexpr struct {
    const char* option;
    bool SelectionOptions::*field;
} kFlags[] = {
    {"--no-mdb", &SelectionOptions::noMdb},
    {"--no-mxf", &SelectionOptions::noMxf},
    {"--show-missing", &SelectionOptions::showMissing},
    {"--precomputes", &SelectionOptions::precomputes},
    {"--imported", &SelectionOptions::imported},
    {"--audio", &SelectionOptions::audio},
    {"--non-portable", &SelectionOptions::nonPortable},
    {"--bad-umid", &SelectionOptions::badUmid},
    {"--unreferenced", &SelectionOptions::unreferenced},
};

constexpr const char* kValueOptions[] = {"--search",  "--intersect", "--subtract", "--add",
                                         "--project", "--sort",      "--log"};

bool takesValue(const QString& option) {
    for (const char* name : kValueOptions) {
        if (option == QLatin1String(name)) return true;
    }
    return false;
}

// "KEY" or "KEY:asc" or "KEY:desc"; the message for a bad one in `error`.
std::optional<TarnSortDescriptor> sortDescriptor(const QString& value, QString* error) {
    TarnSortDescriptor descriptor;
    descriptor.key = value.section(QLatin1Char(':'), 0, 0);
    const QString direction = value.section(QLatin1Char(':'), 1);
    if (direction == QLatin1String("desc")) {
        descriptor.ascending = false;
    } else if (!direction.isEmpty() && direction != QLatin1String("asc")) {
        *error = QStringLiteral("--sort: unknown direction '%1' (asc or desc)").arg(direction);
        return std::nullopt;
    }
    if (!TarnColumns::fromSortKey(descriptor.key)) {
        *error = QStringLiteral("--sort: unknown key '%1' (one of %2)")
                     .arg(descriptor.key, TarnColumns::sortKeys().join(QLatin1Char(' ')));
        return std::nullopt;
    }
    return descriptor;
}

}  // namespace

bool SelectionOptions::parse(const QStringList& args, QStringList* rest, QString* error,
                             const QSet<QString>& callerValueOptions) {
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        const TarnScanSources::Take taken = sources.take(args, i);
        if (taken == TarnScanSources::Take::MissingValue) {
            if (error) *error = QStringLiteral("--volume needs a folder");
            return false;
        }
        if (taken == TarnScanSources::Take::Taken) continue;
        if (setFlag(arg)) {
            continue;
        } else if (takesValue(arg)) {
            const QString* value = i + 1 < args.size() ? &args.at(++i) : nullptr;
            const QString message = setValue(arg, value);
            if (!message.isNull()) {
                if (error) *error = message;
                return false;
            }
        } else if (callerValueOptions.contains(arg)) {
            if (rest) rest->append(arg);
            if (i + 1 < args.size() && rest) rest->append(args.at(++i));
        } else if (rest) {
            rest->append(arg);
        }
    }
    return true;
}

bool SelectionOptions::setFlag(const QString& option) {
    for (const auto& flag : kFlags) {
        if (option == QLatin1String(flag.option)) {
            this->*flag.field = true;
            return true;
        }
    }
    return false;
}

QString SelectionOptions::setValue(const QString& option, const QString* value) {
    const bool given = value && !value->isEmpty();
    if (option == QLatin1String("--search")) {
        if (!value) return QStringLiteral("--search needs a text");
        search = *value;
    } else if (option == QLatin1String("--project")) {
        if (!value) return QStringLiteral("--project needs a project name");
        projects.append(*value);
    } else if (option == QLatin1String("--sort")) {
        if (!value) return QStringLiteral("--sort needs a key");
        QString message;
        const std::optional<TarnSortDescriptor> descriptor = sortDescriptor(*value, &message);
        if (!descriptor) return message;
        sort.append(*descriptor);
    } else if (option == QLatin1String("--log")) {
        if (!given) return QStringLiteral("--log needs a file or -");
        logPath = *value;
    } else {
        if (!given) return option + QStringLiteral(" needs a bin file");
        const BinOperation operation =
            option == QLatin1String("--intersect")  ? BinOperation::Intersect
            : option == QLatin1String("--subtract") ? BinOperation::Subtract
                                                    : BinOperation::Add;
        bins.append({operation, *value});
    }
    return QString();
}

bool SelectionOptions::hasSource() const {
    return !sources.isEmpty();
}

QStringList SelectionOptions::scanRoots() const {
    return sources.scanRoots();
}

void SelectionOptions::applyRunPreferences() const {
    TarnPreferences* prefs = TarnPreferences::shared();
    if (noMdb) prefs->setRunOverride(QLatin1String(TarnPreferences::kScanMDB), 0);
    if (noMxf) prefs->setRunOverride(QLatin1String(TarnPreferences::kScanMXF), 0);
    if (showMissing) {
        prefs->setRunOverride(QLatin1String(TarnPreferences::kShowOnlyExistingFiles), 0);
    }
}

void SelectionOptions::run(TarnCore& core, const Progress& progress) const {
    // Index files found: the scan shows each one's path in the status text
    // when it hands it to the scanner queue.
    std::atomic<int> found{0};
    TarnStatusViewController* status = TarnStatusViewController::getTheController();
    QMetaObject::Connection counter;
    if (progress) {
        counter = QObject::connect(
            status, &TarnStatusViewController::textChanged, [&found](const QString& text) {
                if (text.endsWith(QLatin1String(".pmr"), Qt::CaseInsensitive)) ++found;
            });
    }
    std::mutex tickLock;
    std::condition_variable tickWake;
    bool finished = false;
    auto report = [&] {
        qsizetype items;
        {
            std::lock_guard lock(core.theCoreLock());
            items = core.getAllItemsCount();
        }
        const int f = found.load();
        const int pending = core.scannerQueue() ? core.scannerQueue()->operationCount() : 0;
        progress(qMax(0, f - pending), f, items);
    };
    std::thread ticker;
    if (progress) {
        ticker = std::thread([&] {
            std::unique_lock lock(tickLock);
            while (!tickWake.wait_for(lock, std::chrono::milliseconds(200),
                                      [&] { return finished; })) {
                lock.unlock();
                report();
                lock.lock();
            }
        });
    }

    // One scan of every root, as the open-panel scan takes picked folders:
    // the database of a fresh run is empty, so nothing needs clearing.
    TarnScanner scanner(&core, status);
    scanner.run(TarnScanner::Kind::SingleFolder, scanRoots());

    if (progress) {
        {
            std::lock_guard lock(tickLock);
            finished = true;
        }
        tickWake.notify_all();
        ticker.join();
        QObject::disconnect(counter);
        report();
    }
    applyView(core);
}

void SelectionOptions::applyView(TarnCore& core) const {
    TarnFilter* filter = TarnFilter::sharedFilter();
    filter->setFilterFlagPrecomputes(precomputes);
    filter->setFilterFlagImportedMedia(imported);
    filter->setFilterFlagAudioMedia(audio);
    filter->setFilterFlagNonPortableFiles(nonPortable);
    filter->setFilterFlagBadUMID(badUmid);
    filter->setFilterFlagUnreferenced(unreferenced);
    filter->setFilterString(search);
    core.applyFilter();

    if (!projects.isEmpty()) {
        for (const TarnProjectPtr& project : core.ProjectsSummaryA()) {
            project->mustBeShownInList = projects.contains(project->name);
        }
        core.applyFilter();
    }

    for (const BinStep& step : bins) {
        const QStringList bin{QFileInfo(step.path).absoluteFilePath()};
        switch (step.operation) {
            case BinOperation::Intersect:
                core.AVBArray_IntersectWith(bin);
                break;
            case BinOperation::Subtract:
                core.AVBArray_Subtract(bin);
                break;
            case BinOperation::Add:
                core.AVBArray_Add(bin);
                break;
        }
    }

    if (!sort.isEmpty()) {
        core.sortUsingDescriptors(sort);
        core.applyFilter();
    }
    core.prepareProjectsSummary();
}

QList<TarnItemPtr> SelectionOptions::shownItems(const TarnCore& core) {
    QList<TarnItemPtr> items;
    const qsizetype n = core.getFilteredIndexesCount();
    items.reserve(n);
    for (qsizetype row = 0; row < n; ++row) {
        if (TarnItemPtr item = core.ObjectAtIndexFiltered(row)) items.append(item);
    }
    return items;
}

QString SelectionOptions::usage() {
    return QStringLiteral(
               "what to scan (at least one):\n"
               "  PATH...                a file or folder, scanned as it is\n"
               "  --volume ROOT          the media folders of the volume at ROOT (repeatable)\n"
               "  --all-volumes          the media folders of every mounted volume\n"
               "  --ama                  the AMA management folder\n"
               "preferences for this run only:\n"
               "  --no-mdb               don't read media databases (msmMMOB.mdb)\n"
               "  --no-mxf               don't read MXF files that no index lists\n"
               "  --show-missing         also show items whose file is missing\n"
               "the view:\n"
               "  --precomputes --imported --audio         show only these types\n"
               "  --non-portable --bad-umid --unreferenced show only items with these problems\n"
               "  --search TEXT          names, project or path containing TEXT (any case)\n"
               "  --project NAME         only these projects (repeatable)\n"
               "  --intersect BIN        only the media the bin references\n"
               "  --subtract BIN         without the media the bin references\n"
               "  --add BIN              also the media the bin references\n"
               "                         (bin options repeat and apply in the order given)\n"
               "  --sort KEY[:desc]      sort (repeatable, the first decides); KEY is one of\n"
               "                         %1\n"
               "  --log FILE             write the log to FILE (- for stderr)\n")
        .arg(TarnColumns::sortKeys().join(QLatin1Char(' ')));
}
