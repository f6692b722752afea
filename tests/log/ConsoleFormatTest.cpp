#include <gtest/gtest.h>

#include <QStringList>

#include "TestSupport.h"
#include "log/xConsole.h"

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
                             "(ConsoleFormatTest.cpp:%1) :: hello\n")
                  .arg(line, 8, 10, QLatin1Char('0')));
}

TEST(ConsoleFormat, PlainPrintAppendsAsItStands) {
    testsupport::LogCapture log;
    xConsole::xPrint(QStringLiteral("no line feed"));
    xConsole::xPrint(QStringLiteral(" red\n"), QStringLiteral("red"));
    xConsole::xPrint(QString());
    EXPECT_EQ(log.text(), "no line feed red\n");
}

// Hex with a bar after every fourth byte, then the bytes as Latin-1 text with
// control characters and the no-break space shown as dots.
TEST(ConsoleDump, HexAndText) {
    const unsigned char bytes[] = {0x41, 0x00, 0x0A, 0x20, 0x7E, 0x7F,
                                   0xE9, 0xA0, 0xA9, 0x09, 0x2C};
    const xConsole* console = xConsole::sharedInstance();
    EXPECT_EQ(xConsole::hexlifyRawBytes(bytes, 4), "41 00 0a 20 |");
    EXPECT_EQ(xConsole::hexlifyRawBytes(bytes, 9), "41 00 0a 20 | 7e 7f e9 a0 | a9");
    EXPECT_EQ(console->hexlifyRawBytes(bytes, 5, xConsole::kUntrimmed), "41 00 0a 20 | 7e ");
    EXPECT_EQ(console->RawBytesToString(bytes, sizeof bytes),
              QString::fromUtf8("A.. ~.\u00e9.\u00a9.,"));
    EXPECT_EQ(console->hexlifyAndShowRawBytes(bytes, 5), "41 00 0a 20 | 7e A.. ~");
    EXPECT_TRUE(xConsole::hexlifyRawBytes(nullptr, 5).isEmpty());
    EXPECT_TRUE(xConsole::hexlifyRawBytes(bytes, 0).isEmpty());
    EXPECT_TRUE(console->RawBytesToString(nullptr, 3).isEmpty());
}

// 32 bytes a line, the text column aligned on a short last line, no final
// line feed.
TEST(ConsoleDump, LinesOf32BytesWithAlignedText) {
    const xConsole* console = xConsole::sharedInstance();
    QByteArray bytes;
    for (int i = 0; i < 70; ++i) bytes.append(char('A' + i % 26));
    const QStringList lines =
        console->hexlifyAndShowRawBytesBy20(bytes.constData(), 70).split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0], console->hexlifyAndShowRawBytesBy20(bytes.constData(), 32));
    EXPECT_EQ(lines[0].size(), 112 + 32);
    EXPECT_TRUE(lines[0].startsWith("41 42 43 44 | 45 "));
    EXPECT_EQ(lines[0].mid(109, 3), " | ");
    EXPECT_EQ(console->hexlifyAndShowRawBytesBy20(bytes.constData(), 64).count('\n'), 1);
    EXPECT_TRUE(lines[2].startsWith("4d 4e 4f 50 | 51 52 "));
    EXPECT_EQ(lines[2].indexOf(" | MNOPQR"), 109);
    EXPECT_TRUE(console->hexlifyAndShowRawBytesBy20(nullptr, 10).isEmpty());
}
