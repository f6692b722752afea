#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

#include "InspectCommand.h"
#include "TarnUtilities.h"

namespace {

const char* kUsage =
    "usage: tarn <command> [options]\n"
    "\n"
    "commands:\n"
    "  inspect [--json] FILE...  what Tarn reads in index, database, media and bin files\n"
    "  --help             this text\n"
    "  --version          the version and build number\n";

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    if (args.isEmpty() || args.first() == QLatin1String("--help") ||
        args.first() == QLatin1String("-h") || args.first() == QLatin1String("help")) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (args.first() == QLatin1String("--version")) {
        std::printf("%s\n", qPrintable(TarnUtilities::versionText()));
        return 0;
    }
    if (args.first() == QLatin1String("inspect")) return InspectCommand::run(args.mid(1));
    std::fprintf(stderr, "tarn: unknown command '%s'\n%s", qPrintable(args.first()), kUsage);
    return 2;
}
