#pragma once

#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;

// `checkTarnVersion`: asks the maker's site for the current version without
// blocking the GUI thread. When the reply differs from the installed version
// text, the yes/no question offers to open the site; `finished` then carries
// the status line: "Current version on the website:\n<reply>", or "Error in
// http request" when the request failed (no question then).
class TarnVersionChecker : public QObject {
    Q_OBJECT
  public:
    explicit TarnVersionChecker(QObject* parent = nullptr);
    ~TarnVersionChecker() override;

    // Starts the request; a check already under way goes on alone (false).
    bool checkTarnVersion();
    bool isChecking() const { return reply_ != nullptr; }

  signals:
    void finished(const QString& statusText);

  private:
    void replyFinished(QNetworkReply* reply);

    QNetworkAccessManager* network_;
    QPointer<QNetworkReply> reply_;
};
