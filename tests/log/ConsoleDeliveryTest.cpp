// Logging from several threads and delivery to the subscribed sinks.
#include <gtest/gtest.h>

#include <QProcess>
#include <QRegularExpression>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "log/xConsole.h"

namespace {

// Collects what a sink receives.
struct Collector {
    std::mutex mutex;
    QString text;
    int id = 0;

    Collector() {
        xConsole::sharedInstance()->flush();  // nothing from earlier tests
        id = xConsole::sharedInstance()->subscribe([this](const QString& t, const QString&) {
            std::lock_guard lock(mutex);
            text += t;
        });
    }
    ~Collector() { xConsole::sharedInstance()->unsubscribe(id); }
    QString received() {
        std::lock_guard lock(mutex);
        return text;
    }
};

constexpr int kThreads = 4;
constexpr int kLines = 400;

void logFromThreads(bool sourceLocated) {
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, sourceLocated] {
            for (int n = 0; n < kLines; ++n) {
                const QString message = QStringLiteral("thread %1 line %2").arg(t).arg(n);
                if (sourceLocated) {
                    TARN_LOG(message);
                } else {
                    xConsole::xPrint(message + QLatin1Char('\n'));
                }
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace

// Every line whole (its source prefix included) and each thread's lines in
// the order it wrote them, in the kept text and at the sinks alike. The
// command-line and action suites start child processes while the log's
// delivery thread runs: lines logged afterwards arrive as before. (Under
// ThreadSanitizer this also checks that starting a child leaves the
// sanitizer's view of this thread's locks intact.)
TEST(ConsoleDelivery, EachThreadsLinesStayWholeAndInOrder) {
    QProcess child;
    child.start(QStringLiteral("true"), {});
    ASSERT_TRUE(child.waitForFinished(-1));
    ASSERT_EQ(child.exitCode(), 0);
    static const QRegularExpression prefix(
        QStringLiteral("^\\(\\S+\\) \\(ConsoleDeliveryTest\\.cpp:\\d{8}\\) :: "),
        QRegularExpression::MultilineOption);
    static const QRegularExpression pattern(QStringLiteral("^thread (\\d+) line (\\d+)$"));
    for (bool sourceLocated : {false, true}) {
        SCOPED_TRACE(sourceLocated);
        Collector sink;
        testsupport::LogCapture log;
        logFromThreads(sourceLocated);
        xConsole::sharedInstance()->flush();
        EXPECT_EQ(sink.received(), log.text());

        QString text = log.text();
        if (sourceLocated) text.remove(prefix);
        QStringList lines = text.split('\n');
        ASSERT_EQ(lines.takeLast(), QString());
        ASSERT_EQ(lines.size(), kThreads * kLines);
        std::vector<int> next(kThreads, 0);
        for (const QString& line : lines) {
            const auto match = pattern.match(line);
            ASSERT_TRUE(match.hasMatch()) << line.toStdString();
            const int t = match.captured(1).toInt();
            ASSERT_EQ(match.captured(2).toInt(), next[t]++) << line.toStdString();
        }
    }
}

TEST(ConsoleDelivery, FlushWaitsForASlowSink) {
    std::atomic<int> seen{0};
    xConsole* console = xConsole::sharedInstance();
    console->flush();
    const int id = console->subscribe([&](const QString&, const QString&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        ++seen;
    });
    for (int i = 0; i < 50; ++i) xConsole::xPrint(QStringLiteral("x"));
    console->flush();
    EXPECT_EQ(seen.load(), 50);
    console->unsubscribe(id);
    xConsole::xPrint(QStringLiteral("after"));
    console->flush();
    EXPECT_EQ(seen.load(), 50);
}

TEST(ConsoleDelivery, ASinkMayFlushAndUnsubscribeItself) {
    xConsole* console = xConsole::sharedInstance();
    console->flush();
    std::atomic<int> calls{0}, id{0};
    id = console->subscribe([&](const QString&, const QString&) {
        ++calls;
        xConsole::sharedInstance()->flush();
        xConsole::sharedInstance()->unsubscribe(id.load());
    });
    for (const char* text : {"one", "two"}) {
        xConsole::xPrint(QString::fromLatin1(text));
        console->flush();
    }
    EXPECT_EQ(calls.load(), 1);
}
