#include "shell/TarnAppCommands.h"

#include <QApplication>
#include <QDesktopServices>

#include "actions/TarnAlert.h"
#include "support/TarnVersionCheck.h"

namespace {

TarnAppCommands::UrlOpener& openerSlot() {
    static TarnAppCommands::UrlOpener opener;
    return opener;
}

}  // namespace

bool TarnAppCommands::openSite() {
    return openUrl(QUrl(TarnVersionCheck::sitePageUrl()));
}

bool TarnAppCommands::OpenHelp() {
    return openSite();
}

void TarnAppCommands::notimplemented() {
    QApplication::beep();
    TarnAlert::ShowDialog_with_errorName(QStringLiteral("Not implemented"),
                                         QStringLiteral("Maybe in the next build?"));
}

void TarnAppCommands::setUrlOpener(UrlOpener opener) {
    openerSlot() = std::move(opener);
}

bool TarnAppCommands::openUrl(const QUrl& url) {
    if (openerSlot()) return openerSlot()(url);
    return QDesktopServices::openUrl(url);
}
