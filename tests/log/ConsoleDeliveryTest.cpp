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
    QStringList colors;
    int id = 0;

    Collector() {
        xConsole::sharedInstance()->flush();  // nothing from earlier tests
        id = xConsole::sharedInstance()->subscribe([this](const QString& t, const QString& c) {
            std::lock_guard lock(mutex);
            text += t;
            colors << c;
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

// Every line whole, and each thread's lines in the order it wrote them.
void expectOrderedLines(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral("thread (\\d+) line (\\d+)$"));
    QStringList lines = text.split(QLatin1Char('\n'));
    ASSERT_EQ(lines.takeLast(), QString());
    ASSERT_EQ(lines.size(), kThreads * kLines);
    std::vector<int> next(kThreads, 0);
    for (const QString& line : lines) {
        const auto match = pattern.match(line);
        ASSERT_TRUE(match.hasMatch()) << line.toStdString();
        const int t = match.captured(1).toInt();
        ASSERT_EQ(match.captured(2).toInt(), next[t]) << line.toStdString();
        ++next[t];
    }
}

}  // namespace

// Every line whole and in its thread's order, in the kept text and at the
// sinks alike. The command-line and action suites start child processes while
// the log's delivery thread runs: lines logged afterwards arrive as before. (Under
// ThreadSanitizer this also checks that starting a child leaves the
// sanitizer's view of this thread's locks intact.)
TEST(ConsoleDelivery, EachThreadsLinesStayInOrderAfterAChildProcess) {
    QProcess child;
    child.start(QStringLiteral("true"), {});
    ASSERT_TRUE(child.waitForFinished(-1));
    ASSERT_EQ(child.exitCode(), 0);
    Collector sink;
    testsupport::LogCapture log;
    logFromThreads(false);
    expectOrderedLines(log.text());
    xConsole::sharedInstance()->flush();
    EXPECT_EQ(sink.received(), log.text());
}

TEST(ConsoleDelivery, SourceLocatedLinesAreNeverTorn) {
    Collector sink;
    testsupport::LogCapture log;
    logFromThreads(true);
    xConsole::sharedInstance()->flush();
    const QString received = sink.received();
    EXPECT_EQ(received, log.text());
    static const QRegularExpression prefix(
        QStringLiteral("^\\(\\S+\\) \\(ConsoleDeliveryTest\\.cpp:\\d{8}\\) :: "));
    QString stripped;
    for (const QString& line : received.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        ASSERT_TRUE(prefix.match(line).hasMatch()) << line.toStdString();
        stripped += QString(line).remove(prefix) + QLatin1Char('\n');
    }
    expectOrderedLines(stripped);
}

TEST(ConsoleDelivery, SinksReceiveEveryPieceWithItsColour) {
    Collector first, second;
    xConsole::xPrint(QStringLiteral("a"));
    xConsole::xPrint(QStringLiteral("b"), QStringLiteral("red"));
    xConsole::sharedInstance()->addString(QStringLiteral("c"), QStringLiteral("#00ff00"));
    xConsole::sharedInstance()->flush();
    EXPECT_EQ(first.received(), "abc");
    EXPECT_EQ(second.received(), "abc");
    std::lock_guard lock(first.mutex);
    EXPECT_EQ(first.colors, (QStringList{QString(), "red", "#00ff00"}));
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
    std::atomic<int> calls{0};
    std::atomic<int> id{0};
    id = console->subscribe([&](const QString&, const QString&) {
        ++calls;
        xConsole::sharedInstance()->flush();
        xConsole::sharedInstance()->unsubscribe(id.load());
    });
    xConsole::xPrint(QStringLiteral("one"));
    console->flush();
    xConsole::xPrint(QStringLiteral("two"));
    console->flush();
    EXPECT_EQ(calls.load(), 1);
}

TEST(ConsoleDelivery, ResetEmptiesTheKeptText) {
    xConsole* console = xConsole::sharedInstance();
    std::atomic<int> resets{0};
    auto connection = QObject::connect(console, &xConsole::wasReset, [&] { ++resets; });
    xConsole::xPrint(QStringLiteral("before"));
    console->Reset();
    EXPECT_TRUE(console->contents().isEmpty());
    xConsole::xPrint(QStringLiteral("after"));
    EXPECT_EQ(console->contents(), "after");
    EXPECT_EQ(resets.load(), 1);
    QObject::disconnect(connection);
}
