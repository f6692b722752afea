// The log: the forms of its lines, logging from several threads and delivery
// to the subscribed sinks.
#include <gtest/gtest.h>

#include <QProcess>
#include <QRegularExpression>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "log/xConsole.h"

namespace {

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
        QStringLiteral("^\\(\\S+\\) \\(ConsoleTest\\.cpp:\\d{8}\\) :: "),
        QRegularExpression::MultilineOption);
    static const QRegularExpression pattern(QStringLiteral("^thread (\\d+) line (\\d+)$"));
    for (bool sourceLocated : {false, true}) {
        SCOPED_TRACE(sourceLocated);
        xConsole* console = xConsole::sharedInstance();
        console->flush();  // nothing from earlier tests
        QString received;  // read once flushed: the sink has run by then
        const int sink =
            console->subscribe([&](const QString& text, const QString&) { received += text; });
        testsupport::LogCapture log;
        logFromThreads(sourceLocated);
        console->flush();
        console->unsubscribe(sink);
        EXPECT_EQ(received, log.text());

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

// Flush waits for a slow sink; a sink may flush and unsubscribe itself from
// its own call; an unsubscribed sink gets nothing more.
TEST(ConsoleDelivery, FlushWaitsForSinksAndASinkMayLeaveFromItsOwnCall) {
    xConsole* console = xConsole::sharedInstance();
    console->flush();
    std::atomic<int> seen{0}, calls{0}, id{0};
    const int slow = console->subscribe([&](const QString&, const QString&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        ++seen;
    });
    id = console->subscribe([&](const QString&, const QString&) {
        ++calls;
        xConsole::sharedInstance()->flush();
        xConsole::sharedInstance()->unsubscribe(id.load());
    });
    xConsole::xPrint(QStringLiteral("one"));
    console->flush();
    for (int i = 0; i < 50; ++i) xConsole::xPrint(QStringLiteral("x"));
    console->flush();
    EXPECT_EQ(seen.load(), 51);
    EXPECT_EQ(calls.load(), 1);
    console->unsubscribe(slow);
    xConsole::xPrint(QStringLiteral("after"));
    console->flush();
    EXPECT_EQ(seen.load(), 51);
}

TEST(ConsoleFormat, SourceLocatedLines) {
    const struct {
        const char* file;
        int number;
        QString message;
        const char* line;
    } cases[] = {
        {"/src/Tarn/AppDelegate.mm", 318, "m", "(f) (AppDelegate.mm:00000318) :: m\n"},
        {"/a/b/", 7, "m", "(f) (b:00000007) :: m\n"},
        {"x.cpp", 123456789, "m", "(f) (x.cpp:123456789) :: m\n"},
        {"x.cpp", -5, "m", "(f) (x.cpp:-0000005) :: m\n"},
        // No file name: the short form.
        {"", 7, "m", "(f) :: m\n"},
        {nullptr, 7, "m", "(f) :: m\n"},
        // A null message writes nothing; an empty one writes the prefix.
        {"x.cpp", 1, QString(), ""},
        {"x.cpp", 1, QLatin1String(""), "(f) (x.cpp:00000001) :: \n"},
        // Placeholders in the message are text, not format.
        {"x.cpp", 2, "%1 %2 %%", "(f) (x.cpp:00000002) :: %1 %2 %%\n"},
    };
    for (const auto& c : cases) {
        testsupport::LogCapture log;
        xConsole::xNSLog(c.file, c.number, "f", c.message);
        EXPECT_EQ(log.text(), c.line);
    }
}

TEST(ConsoleFormat, MacroNamesTheCallingFunctionAndFile) {
    testsupport::LogCapture log;
    TARN_LOG(QStringLiteral("hello"));
    const int line = __LINE__ - 1;
    EXPECT_EQ(log.text(),
              QStringLiteral("(ConsoleFormat_MacroNamesTheCallingFunctionAndFile_Test::TestBody) "
                             "(ConsoleTest.cpp:%1) :: hello\n")
                  .arg(line, 8, 10, QLatin1Char('0')));
}

// Byte dumps: " | " after every fourth byte (the class form trimmed), the
// printable text with controls as ".", and lines of 32 bytes whose text
// column lines up on a short last line.
TEST(ConsoleFormat, ByteDumps) {
    const unsigned char bytes[] = {0x41, 0x00, 0x0A, 0x20, 0x7E, 0x7F, 0xE9, 0xA0, 0xA9};
    xConsole* console = xConsole::sharedInstance();
    EXPECT_EQ(xConsole::hexlifyRawBytes(bytes, 9), "41 00 0a 20 | 7e 7f e9 a0 | a9");
    EXPECT_EQ(console->hexlifyRawBytes(bytes, 4, xConsole::kUntrimmed), "41 00 0a 20 | ");
    EXPECT_TRUE(xConsole::hexlifyRawBytes(bytes, 0).isEmpty());
    EXPECT_EQ(console->RawBytesToString(bytes, 9), QString::fromUtf8("A.. ~.\u00e9.\u00a9"));
    EXPECT_EQ(console->hexlifyAndShowRawBytes(bytes, 5), "41 00 0a 20 | 7e A.. ~");
    const QByteArray abc = QByteArray("ABCDEFGHIJKLMNOPQRSTUVWXYZ").repeated(3).left(70);
    const QStringList lines =
        console->hexlifyAndShowRawBytesBy20(abc.constData(), 70).split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0].size(), 112 + 32);
    EXPECT_EQ(lines[0].mid(109, 3), " | ");
    EXPECT_EQ(lines[2].indexOf(" | MNOPQR"), 109);
}
