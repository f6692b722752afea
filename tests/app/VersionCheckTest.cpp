#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include "AppTestKit.h"
#include "TestSupport.h"
#include "shell/TarnAppCommands.h"
#include "support/TarnVersionCheck.h"
#include "version/TarnVersionChecker.h"

using namespace apptest;

namespace {

// The maker's site on 127.0.0.1: answers every request with one reply, or
// holds it until release().
class LocalSite : public QObject {
  public:
    LocalSite(QByteArray status, QByteArray body, bool hold = false)
        : status_(std::move(status)), body_(std::move(body)), hold_(hold) {
        EXPECT_TRUE(server_.listen(QHostAddress::LocalHost, 0));
        connect(&server_, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = server_.nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
            }
        });
    }
    QString url() const { return QString("http://127.0.0.1:%1").arg(server_.serverPort()); }
    QByteArray requestLine() const { return requestLine_; }
    bool requested() const { return !requestLine_.isEmpty(); }
    void release() {
        hold_ = false;
        if (waiting_) answer(waiting_);
    }

  private:
    void read(QTcpSocket* socket) {
        request_ += socket->readAll();
        if (!request_.contains("\r\n\r\n")) return;
        requestLine_ = request_.left(request_.indexOf("\r\n"));
        if (hold_)
            waiting_ = socket;
        else
            answer(socket);
    }
    void answer(QTcpSocket* socket) {
        socket->write("HTTP/1.1 " + status_ + "\r\nContent-Type: text/plain; charset=utf-8\r\n" +
                      "Content-Length: " + QByteArray::number(body_.size()) +
                      "\r\nConnection: close\r\n\r\n" + body_);
        socket->disconnectFromHost();
    }

    QTcpServer server_;
    QByteArray status_, body_, request_, requestLine_;
    bool hold_;
    QTcpSocket* waiting_ = nullptr;
};

struct VersionCheckFixture : ::testing::Test {
    QList<QUrl> opened;
    void SetUp() override {
        TarnAppCommands::setUrlOpener([this](const QUrl& url) {
            opened << url;
            return true;
        });
    }
    void TearDown() override {
        TarnAppCommands::setUrlOpener({});
        TarnVersionCheck::setSiteBaseUrl({});
    }
    // Runs one check against `base` and returns its status line.
    QString check(const QString& base) {
        TarnVersionCheck::setSiteBaseUrl(base);
        TarnVersionChecker checker;
        QString status;
        bool done = false;
        QObject::connect(&checker, &TarnVersionChecker::finished, [&](const QString& text) {
            status = text;
            done = true;
        });
        EXPECT_TRUE(checker.checkTarnVersion());
        waitUntil([&] { return done; });
        return status;
    }
};

TEST_F(VersionCheckFixture, RepliesAskOnlyWhenTheVersionsDiffer) {
    const QString installed = TarnVersionCheck::installedVersion();
    ASSERT_TRUE(installed.startsWith("v"));
    const struct {
        QString reply;
        const char* press;  // null: no question expected
        bool opens;
    } cases[] = {
        {installed, nullptr, false},
        {"v9.0.0 build 12", "OK", true},
        {"v9.0.0 build 12", "Cancel", false},
        {installed + "\n", "Cancel", false},                             // compared as a whole
        {QString::fromUtf8("v9.0 \xc3\xa9t\xc3\xa9"), "Cancel", false},  // read as UTF-8
    };
    for (const auto& c : cases) {
        opened.clear();
        LocalSite site("200 OK", c.reply.toUtf8());
        AnsweringPresenter answers(always(c.press ? c.press : "OK"));
        testsupport::LogCapture log;
        EXPECT_EQ(check(site.url()), "Current version on the website:\n" + c.reply);
        EXPECT_EQ(site.requestLine(), "GET /trnversion/? HTTP/1.1");
        if (c.press) {
            EXPECT_EQ(answers.messages(),
                      QStringList({"Current version on the website:\n" + c.reply +
                                   " \n\nYou Have version installed:\n" + installed + "\n"}));
            EXPECT_EQ(answers.details(), QStringList({"Open Tarn Website?"}));
        } else {
            EXPECT_TRUE(answers.messages().isEmpty());
        }
        EXPECT_EQ(opened, c.opens ? QList<QUrl>({QUrl(site.url() + "/trn")}) : QList<QUrl>());
        EXPECT_TRUE(log.contains("127.0.0.1: " + c.reply + "\n"));
    }
}

TEST_F(VersionCheckFixture, AFailedRequestSaysSoAndAsksNothing) {
    AnsweringPresenter answers(always("OK"));
    LocalSite missing("404 Not Found", "no such page");
    EXPECT_EQ(check(missing.url()), "Error in http request");
    // A port nobody listens on any more.
    QString closedUrl;
    {
        LocalSite gone("200 OK", "v1");
        closedUrl = gone.url();
    }
    EXPECT_EQ(check(closedUrl), "Error in http request");
    EXPECT_TRUE(answers.messages().isEmpty());
    EXPECT_TRUE(opened.isEmpty());
}

TEST_F(VersionCheckFixture, TheGuiThreadRunsOnWhileTheSiteIsSlow) {
    LocalSite site("200 OK", TarnVersionCheck::installedVersion().toUtf8(), /*hold=*/true);
    TarnVersionCheck::setSiteBaseUrl(site.url());
    TarnVersionChecker checker;
    bool done = false;
    QObject::connect(&checker, &TarnVersionChecker::finished, [&] { done = true; });
    ASSERT_TRUE(checker.checkTarnVersion());
    EXPECT_TRUE(checker.isChecking());
    EXPECT_FALSE(checker.checkTarnVersion());  // one at a time
    // Timer ticks arrive while the request is out.
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(1);
    waitUntil([&] { return site.requested() && ticks >= 3; });
    EXPECT_FALSE(done);
    site.release();
    waitUntil([&] { return done; });
    EXPECT_FALSE(checker.isChecking());
}

TEST(SiteCommands, HelpAndSiteOpenTheTrnPage) {
    QList<QUrl> opened;
    TarnAppCommands::setUrlOpener([&](const QUrl& url) {
        opened << url;
        return true;
    });
    TarnVersionCheck::setSiteBaseUrl("http://127.0.0.1:9/");
    EXPECT_TRUE(TarnAppCommands::OpenHelp());
    EXPECT_TRUE(TarnAppCommands::openSite());
    TarnVersionCheck::setSiteBaseUrl({});
    TarnAppCommands::setUrlOpener({});
    EXPECT_EQ(opened,
              QList<QUrl>({QUrl("http://127.0.0.1:9/trn"), QUrl("http://127.0.0.1:9/trn")}));

    AnsweringPresenter answers(always("OK"));
    TarnAppCommands::notimplemented();
    EXPECT_EQ(answers.messages(), QStringList({"Not implemented"}));
    EXPECT_EQ(answers.details(), QStringList({"Maybe in the next build?"}));
}

}  // namespace
