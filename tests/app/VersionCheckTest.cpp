#include <QtNetwork>

#include "AppTestKit.h"
#include "shell/TarnAppCommands.h"
#include "support/TarnVersionCheck.h"
#include "version/TarnVersionChecker.h"

using namespace apptest;

namespace {

// The maker's site on 127.0.0.1: answers its one request with `status` and
// `body`; without a status it never answers.
class LocalSite : public QTcpServer {
  public:
    explicit LocalSite(const QByteArray& status = {}, const QByteArray& body = {}) {
        EXPECT_TRUE(listen(QHostAddress::LocalHost, 0));
        connect(this, &QTcpServer::newConnection, [=, this] {
            QTcpSocket* socket = nextPendingConnection();  // a child of the site
            connect(socket, &QTcpSocket::readyRead, [=, this] {
                request_ += socket->readAll();
                if (status.isEmpty() || !request_.contains("\r\n\r\n")) return;
                socket->write("HTTP/1.1 " + status +
                              "\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: " +
                              QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" +
                              body);
                socket->disconnectFromHost();
            });
        });
    }
    QString url() const { return QString("http://127.0.0.1:%1").arg(serverPort()); }
    QByteArray requestLine() const { return request_.left(request_.indexOf("\r\n")); }

  private:
    QByteArray request_;
};

struct VersionCheckFixture : ::testing::Test {
    QList<QUrl> opened;
    TarnVersionChecker checker;
    QSignalSpy finished{&checker, &TarnVersionChecker::finished};
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
        finished.clear();
        EXPECT_TRUE(checker.checkTarnVersion());
        waitUntil([&] { return !finished.isEmpty(); });
        return finished.at(0).at(0).toString();
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
        EXPECT_EQ(answers.messages,
                  c.press ? QStringList({"Current version on the website:\n" + c.reply +
                                         " \n\nYou Have version installed:\n" + installed + "\n"})
                          : QStringList());
        EXPECT_EQ(opened, c.opens ? QList<QUrl>({QUrl(site.url() + "/trn")}) : QList<QUrl>());
    }
    // A port nobody listens on any more.
    const QString gone = LocalSite().url();
    EXPECT_EQ(check(gone), "Error in http request");
    // Help and the site open the same page.
    opened.clear();
    EXPECT_TRUE(TarnAppCommands::OpenHelp() && TarnAppCommands::openSite());
    EXPECT_EQ(opened, QList<QUrl>(2, QUrl(gone + "/trn")));
}

TEST_F(VersionCheckFixture, TheGuiThreadRunsOnWhileTheSiteIsSlow) {
    auto site = std::make_unique<LocalSite>();
    TarnVersionCheck::setSiteBaseUrl(site->url());
    ASSERT_TRUE(checker.checkTarnVersion());
    EXPECT_FALSE(checker.checkTarnVersion());  // one at a time
    int ticks = 0;                             // timer ticks arrive while the request is out
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(1);
    waitUntil([&] { return !site->requestLine().isEmpty() && ticks >= 3; });
    EXPECT_TRUE(finished.isEmpty());
    site.reset();  // the connection drops
    waitUntil([&] { return !finished.isEmpty(); });
    EXPECT_FALSE(checker.isChecking());
}

}  // namespace
