#pragma once

#include <QUrl>

#include <functional>

// Small commands of the application controller that need no window of their
// own: the maker's web site and the "not implemented" alert.
class TarnAppCommands {
  public:
    // `openSite`: the site's page "/trn" in the default browser.
    static bool openSite();
    // `OpenHelp`: the same page.
    static bool OpenHelp();
    // `notimplemented`: the beep, then the error alert "Not implemented" /
    // "Maybe in the next build?".
    static void notimplemented();

    // What opens a web page (default: QDesktopServices::openUrl); tests record.
    using UrlOpener = std::function<bool(const QUrl& url)>;
    static void setUrlOpener(UrlOpener opener);
    static bool openUrl(const QUrl& url);
};
