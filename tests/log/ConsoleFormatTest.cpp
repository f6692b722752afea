#include <gtest/gtest.h>

#include <QStringList>

#include "TestSupport.h"
#include "log/xConsole.h"

TEST(ConsoleFormat, SourceLocatedLineEdgeCases) {
    auto line = [](const char* file, int number, const char* function, const QString& message) {
        testsupport::LogCapture log;
        xConsole::xNSLog(file, number, function, message);
        return log.text();
    };
    EXPECT_EQ(line("/src/Tarn/AppDelegate.mm", 318, "f", QStringLiteral("m")),
              "(f) (AppDelegate.mm:00000318) :: m\n");
    EXPECT_EQ(line("/a/b/", 7, "f", QStringLiteral("m")), "(f) (b:00000007) :: m\n");
    EXPECT_EQ(line("x.cpp", 123456789, "f", QStringLiteral("m")), "(f) (x.cpp:123456789) :: m\n");
    EXPECT_EQ(line("x.cpp", -5, "f", QStringLiteral("m")), "(f) (x.cpp:-0000005) :: m\n");
    // No file name: the short form.
    EXPECT_EQ(line("", 7, "f", QStringLiteral("m")), "(f) :: m\n");
    EXPECT_EQ(line(nullptr, 7, "f", QStringLiteral("m")), "(f) :: m\n");
    // A null message writes nothing; an empty one writes the prefix.
    EXPECT_EQ(line("x.cpp", 1, "f", QString()), "");
    EXPECT_EQ(line("x.cpp", 1, "f", QLatin1String("")), "(f) (x.cpp:00000001) :: \n");
    // Placeholders in the message are text, not format.
    EXPECT_EQ(line("x.cpp", 2, "f", QStringLiteral("%1 %2 %%")),
              "(f) (x.cpp:00000002) :: %1 %2 %%\n");
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

TEST(ConsoleDump, HexDumpSeparatesEveryFourthByte) {
    const unsigned char bytes[] = {0x00, 0x01, 0x02, 0x03, 0x04, 0xAB, 0xFF, 0x80, 0x7F};
    EXPECT_EQ(xConsole::hexlifyRawBytes(bytes, 5), "00 01 02 03 | 04");
    EXPECT_EQ(xConsole::hexlifyRawBytes(bytes, 4), "00 01 02 03 |");
    EXPECT_EQ(xConsole::hexlifyRawBytes(bytes, 9), "00 01 02 03 | 04 ab ff 80 | 7f");
    xConsole* console = xConsole::sharedInstance();
    EXPECT_EQ(console->hexlifyRawBytes(bytes, 5, xConsole::kUntrimmed), "00 01 02 03 | 04 ");
    EXPECT_EQ(console->hexlifyRawBytes(bytes, 4, xConsole::kUntrimmed), "00 01 02 03 | ");
    EXPECT_TRUE(xConsole::hexlifyRawBytes(nullptr, 5).isEmpty());
    EXPECT_TRUE(xConsole::hexlifyRawBytes(bytes, 0).isEmpty());
}

TEST(ConsoleDump, PrintableTextReplacesControlsAndSpaces) {
    xConsole* console = xConsole::sharedInstance();
    const unsigned char bytes[] = {0x41, 0x00, 0x0A, 0x20, 0x7E, 0x7F,
                                   0xE9, 0xA0, 0xA9, 0x09, 0x2C};
    const QString text = console->RawBytesToString(bytes, sizeof bytes);
    EXPECT_EQ(text, QString::fromUtf8("A.. ~.\u00e9.\u00a9.,"));
    EXPECT_TRUE(console->RawBytesToString(nullptr, 3).isEmpty());
    EXPECT_EQ(console->hexlifyAndShowRawBytes(bytes, 1), "41 A");
    EXPECT_EQ(console->hexlifyAndShowRawBytes(bytes, 5), "41 00 0a 20 | 7e A.. ~");
}

// 32 bytes a line, the text column aligned on a short last line, no final
// line feed.
TEST(ConsoleDump, LinesOf32BytesWithAlignedText) {
    xConsole* console = xConsole::sharedInstance();
    QByteArray bytes;
    for (int i = 0; i < 70; ++i) bytes.append(char('A' + i % 26));
    const QString one = console->hexlifyAndShowRawBytesBy20(bytes.constData(), 32);
    EXPECT_EQ(one.size(), 112 + 32);
    EXPECT_TRUE(one.startsWith("41 42 43 44 | 45 "));
    EXPECT_EQ(one.mid(109, 3), " | ");
    EXPECT_EQ(console->hexlifyAndShowRawBytesBy20(bytes.constData(), 64).count('\n'), 1);
    const QStringList lines =
        console->hexlifyAndShowRawBytesBy20(bytes.constData(), 70).split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0], one);
    EXPECT_TRUE(lines[2].startsWith("4d 4e 4f 50 | 51 52 "));
    EXPECT_EQ(lines[2].indexOf(" | MNOPQR"), 109);
    EXPECT_TRUE(console->hexlifyAndShowRawBytesBy20(nullptr, 10).isEmpty());
}
