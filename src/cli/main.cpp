#include <QCoreApplication>
#include <QStringList>

#include <cstdio>
#include <cstring>

#include "ActionCommand.h"
#include "DatabasesCommand.h"
#include "DemoCommand.h"
#include "FileReportCommand.h"
#include "ScanCommand.h"
#include "support/TarnFileName.h"
#include "support/TarnUtilities.h"

namespace {

const char* kUsage =
    "usage: tarn <command> [options]\n"
    "\n"
    "commands:\n"
    "  scan [PATH...] [options]  scan media folders and print the view (tarn scan --help)\n"
    "  copy|move|delete [PATH...] [options]  act on the scanned items (tarn copy --help)\n"
    "  demo [DIR]                write the demo volume (if absent) and show its scan\n"
    "  inspect [--json] FILE...  what Tarn reads in index, database, media and bin files\n"
    "  databases [--volume ROOT...] [--delete --sure]  list (and trash) the media indexes\n"
    "                            and databases of the media folders (tarn databases --help)\n"
    "  --help                    this text\n"
    "  --version                 the version and build number\n";

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    // Paths keep their bytes even when they are not UTF-8 (QCoreApplication's
    // own list would replace those).
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args.append(TarnFileName::decode(argv[i], qsizetype(std::strlen(argv[i]))));
    if (args.isEmpty() || args.first() == QLatin1String("--help") ||
        args.first() == QLatin1String("-h") || args.first() == QLatin1String("help")) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    const QString command = args.takeFirst();
    if (command == QLatin1String("--version")) {
        std::printf("%s\n", qPrintable(TarnUtilities::versionText()));
        return 0;
    }
    if (command == QLatin1String("scan")) return ScanCommand::run(args);
    if (command == QLatin1String("demo")) return DemoCommand::run(args);
    if (command == QLatin1String("copy") || command == QLatin1String("move") ||
        command == QLatin1String("delete"))
        return ActionCommand::run(command, args);
    if (command == QLatin1String("inspect")) return FileReportCommand::run(args);
    if (command == QLatin1String("databases")) return DatabasesCommand::run(args);
    std::fprintf(stderr, "tarn: unknown command '%s'\n%s", qPrintable(command), kUsage);
    return 2;
}
