#include "version/TarnVersionChecker.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>

#include "actions/TarnAlert.h"
#include "log/xConsole.h"
#include "shell/TarnAppCommands.h"
#include "support/TarnVersionCheck.h"

namespace {

// A site that accepts the connection and never answers must not leave the
// check pending for ever.
constexpr int kTransferTimeoutMs = 30000;

}  // namespace

TarnVersionChecker::TarnVersionChecker(QObject* parent)
    : QObject(parent), network_(new QNetworkAccessManager(this)) {}

TarnVersionChecker::~TarnVersionChecker() {
    if (reply_) reply_->abort();
}

bool TarnVersionChecker::checkTarnVersion() {
    if (reply_) return false;
    QNetworkRequest request(QUrl(TarnVersionCheck::versionPageUrl()));
    request.setTransferTimeout(kTransferTimeoutMs);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Tarn/%1").arg(TarnVersionCheck::installedVersion()));
    QNetworkReply* reply = network_->get(request);
    reply_ = reply;
    connect(reply, &QNetworkReply::finished, this, [this, reply] { replyFinished(reply); });
    return true;
}

void TarnVersionChecker::replyFinished(QNetworkReply* reply) {
    reply->deleteLater();
    reply_ = nullptr;
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->error() != QNetworkReply::NoError || status >= 400) {
        TARN_LOG(QStringLiteral("Version check: %1").arg(reply->errorString()));
        emit finished(TarnVersionCheck::errorText());
        return;
    }
    // The whole body, as UTF-8 text, is the current version.
    const QString current = QString::fromUtf8(reply->readAll());
    const QString installed = TarnVersionCheck::installedVersion();
    xConsole::xPrint(TarnVersionCheck::logLine(reply->url().host(), current));
    if (TarnVersionCheck::differs(current, installed) &&
        TarnAlert::ShowDialog_with_YesNo(TarnVersionCheck::questionText(current, installed),
                                         TarnVersionCheck::questionDetail()) ==
            TarnAlert::kFirstButton)
        TarnAppCommands::openSite();
    emit finished(TarnVersionCheck::resultText(current));
}
