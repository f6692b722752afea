#include <QtNetwork>

#include "AppTestKit.h"
#include "shell/TarnAppCommands.h"
#include "support/TarnVersionCheck.h"
#include "version/TarnVersionChecker.h"

using namespace apptest;

namespace {

// The maker's site on 127.0.0.1: answers its one request with `status` and
// `body`, a held site only once opened.
class LocalSite : public QTcpServer {
  public:
    LocalSite(const QByteArray& status, const QByteArray& body, bool held = false)
        : reply_("HTTP/1.1 " + status + "\r\nContent-Type: text/plain; charset=utf-8\r\n" +
                 "Content-Length: " + QByteArray::number(body.size()) +
                 "\r\nConnection: close\r\n\r\n" + body),
          open_(!held) {
        EXPECT_TRUE(listen(QHostAddress::LocalHost, 0));
        connect(this, &QTcpServer::newConnection, [this] {
            socket_ = nextPendingConnection();
            connect(socket_, &QTcpSocket::readyRead, [this] {
                request_ += socket_->readAll();
                answer();
            });
        });
    }
    QString url() const { return QString("http://127.0.0.1:%1").arg(serverPort()); }
    QByteArray requestLine() const { return request_.left(request_.indexOf("\r\n")); }
    void open() {
        open_ = true;
        answer();
    }

  private:
    void answer() {
        if (!open_ || !socket_ || !request_.contains("\r\n\r\n")) return;
        socket_->write(reply_);
        socket_->disconnectFromHost();
    }
    QByteArray reply_, request_;
    bool open_;
    QTcpSocket* socket_ = nullptr;
};

struct VersionCheckFixture : ::testing::Test {
    QList<QUrl> opened;
    TarnVersionChecker checker;
    QString status;  // the last check's status line
    void SetUp() override {
        TarnAppCommands::setUrlOpener([this](const QUrl& url) {
            opened << url;
            return true;
        });
        QObject::connect(&checker, &TarnVersionChecker::finished,
                         [this](const QString& text) { status = text; });
    }
    void TearDown() override {
        TarnAppCommands::setUrlOpener({});
        TarnVersionCheck::setSiteBaseUrl({});
    }
    // Runs one check against `base` and returns its status line.
    QString check(const QString& base) {
        TarnVersionCheck::setSiteBaseUrl(base);
        status.clear();
        EXPECT_TRUE(checker.checkTarnVersion());
        waitUntil([&] { return !status.isEmpty(); });
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
        QByteArray status = "200 OK";
    } cases[] = {
        {installed, nullptr, false},
        {"v9.0.0 build 12", "OK", true},
        {"v9.0.0 build 12", "Cancel", false},
        {installed + "\n", "Cancel", false},                             // compared as a whole
        {QString::fromUtf8("v9.0 \xc3\xa9t\xc3\xa9"), "Cancel", false},  // read as UTF-8
        {"no such page", nullptr, false, "404 Not Found"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reply.toStdString());
        opened.clear();
        LocalSite site(c.status, c.reply.toUtf8());
        AnsweringPresenter answers(always(c.press ? c.press : "OK"));
        const bool ok = c.status == "200 OK";
        EXPECT_EQ(check(site.url()),
                  ok ? "Current version on the website:\n" + c.reply : "Error in http request");
        EXPECT_EQ(site.requestLine(), "GET /trnversion/? HTTP/1.1");
        EXPECT_EQ(answers.messages(),
                  c.press ? QStringList({"Current version on the website:\n" + c.reply +
                                         " \n\nYou Have version installed:\n" + installed + "\n"})
                          : QStringList());
        EXPECT_EQ(opened, c.opens ? QList<QUrl>({QUrl(site.url() + "/trn")}) : QList<QUrl>());
    }
    // A port nobody listens on any more.
    QString closedUrl = LocalSite("200 OK", "v1").url();
    EXPECT_EQ(check(closedUrl), "Error in http request");
}

TEST_F(VersionCheckFixture, TheGuiThreadRunsOnWhileTheSiteIsSlow) {
    LocalSite site("200 OK", TarnVersionCheck::installedVersion().toUtf8(), /*held=*/true);
    TarnVersionCheck::setSiteBaseUrl(site.url());
    ASSERT_TRUE(checker.checkTarnVersion());
    EXPECT_FALSE(checker.checkTarnVersion());  // one at a time
    // Timer ticks arrive while the request is out.
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(1);
    waitUntil([&] { return !site.requestLine().isEmpty() && ticks >= 3; });
    EXPECT_TRUE(status.isEmpty());
    site.open();
    waitUntil([&] { return !status.isEmpty(); });
    EXPECT_FALSE(checker.isChecking());
}

TEST_F(VersionCheckFixture, HelpAndSiteOpenTheTrnPage) {
    TarnVersionCheck::setSiteBaseUrl("http://127.0.0.1:9/");
    EXPECT_TRUE(TarnAppCommands::OpenHelp());
    EXPECT_TRUE(TarnAppCommands::openSite());
    EXPECT_EQ(opened, QList<QUrl>(2, QUrl("http://127.0.0.1:9/trn")));
}

}  // namespace
