#pragma once

#include <QString>

// What the version check asks and says. The maker's web site answers the
// path "/trnversion/?" with the current version text ("v0.9.0 build 1"); the
// site's page for users is "/trn". The request itself is the desktop
// program's (asynchronous, Qt Network).
class TarnVersionCheck {
  public:
    // The site: the build's constant (TARN_SITE_URL), the environment variable
    // TARN_SITE_URL when set, or the override (tests), without a trailing "/".
    static QString siteBaseUrl();
    // An empty override restores the default.
    static void setSiteBaseUrl(const QString& url);

    static QString versionPageUrl();  // <site>/trnversion/?
    static QString sitePageUrl();     // <site>/trn

    // The installed version text, "v%@ build %@".
    static QString installedVersion();
    // The reply is compared as a whole, so even a trailing line feed differs.
    static bool differs(const QString& reply, const QString& installed);
    // "Current version on the website:\n%@ \n\nYou Have version installed:\n%@\n"
    static QString questionText(const QString& reply, const QString& installed);
    static QString questionDetail();  // "Open Tarn Website?"
    // The status line after a reply: "Current version on the website:\n%@".
    static QString resultText(const QString& reply);
    // The status line after a failed request.
    static QString errorText();  // "Error in http request"
    // The console line: host, ": ", reply, line feed.
    static QString logLine(const QString& host, const QString& reply);
};
