#include <thread>

#include "AppTestKit.h"
#include "console/xConsoleWindow.h"
#include "console/xLog.h"
#include "log/xConsole.h"

namespace {

class ConsoleWindowTest : public ::testing::Test {
  protected:
    void SetUp() override { window.Reset(); }
    QString shown() {
        window.flushLog();
        return log()->toPlainText();
    }
    QTextCharFormat formatAt(const QString& text) {
        QTextCursor cursor(log()->document());
        cursor.setPosition(int(shown().indexOf(text)) + 1);
        return cursor.charFormat();
    }
    void click(const char* button) {
        window.findChild<QPushButton*>(QString::fromLatin1(button))->click();
    }
    xLog* log() { return window.theLog(); }

    xConsoleWindow window;
};

}  // namespace

// A reset from another thread empties the view too, lines logged before it
// included; then pieces show in order and in their colours.
TEST_F(ConsoleWindowTest, ShowsLoggedPiecesInOrderAndInTheirColours) {
    std::thread([] {
        xConsole::xPrint("old line\n");
        xConsole::sharedInstance()->Reset();
    }).join();
    QCoreApplication::processEvents();
    EXPECT_FALSE(shown().contains("old line"));
    xConsole::xPrint("plain line\n");
    xConsole::xPrint("red line\n", "red");
    xConsole::xPrint("green piece", "#00ff00");
    xConsole::xPrint(" and more green\n", "#00ff00");
    log()->addString("marked\n", QColor(Qt::white), QColor(Qt::blue));
    log()->addString(QString(), QColor(Qt::red));  // a null text adds nothing
    EXPECT_EQ(shown(), "marked\nplain line\nred line\ngreen piece and more green\n");
    EXPECT_FALSE(formatAt("plain").hasProperty(QTextFormat::ForegroundBrush));
    EXPECT_FALSE(formatAt("red line").hasProperty(QTextFormat::BackgroundBrush));
    EXPECT_EQ(QList<QColor>({formatAt("red line").foreground().color(),
                             formatAt("more green").foreground().color(),
                             formatAt("marked").background().color()}),
              QList<QColor>({Qt::red, QColor(0, 255, 0), Qt::blue}));
    EXPECT_TRUE(formatAt("plain").font().fixedPitch());
}

// Lines from another thread arrive through the event loop, unasked.
TEST_F(ConsoleWindowTest, LinesFromOtherThreadsArriveInOrder) {
    std::thread([] {
        for (int i = 0; i < 20000; ++i) xConsole::xPrint(QString("line %1\n").arg(i));
    }).join();
    xConsole::sharedInstance()->flush();
    QTextDocument* document = log()->document();
    while (document->blockCount() <= 20000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(document->findBlockByNumber(0).text(), "line 0");
    EXPECT_EQ(document->findBlockByNumber(19999).text(), "line 19999");
}

TEST_F(ConsoleWindowTest, SearchSelectsEveryLiteralCaseSensitiveHit) {
    const std::tuple<const char*, const char*, int> cases[] = {
        // log, searched text, hits
        {"aaaa", "aa", 2},  // hits don't overlap
        {"Scan one\nscan two\nScan three\nScan", "Scan", 3},
        {"a.b axb a.b", "a.b", 2},  // literal, not a pattern
        {"nothing here", "missing", 0},
        {"some text", "", 0},
    };
    for (const auto& [text, needle, hits] : cases) {
        window.Reset();
        xConsole::xPrint(QString::fromLatin1(text));
        shown();
        window.searchField()->setText(QString::fromLatin1(needle));
        EXPECT_EQ(log()->hits().size(), hits) << text;
        EXPECT_EQ(window.HowManyFound()->text(), hits ? QString("%1 found").arg(hits) : "");
        for (const QTextCursor& hit : log()->hits())
            EXPECT_EQ(hit.selectedText(), QString::fromLatin1(needle));
    }
}

// The next hit goes round after the last one; Return steps too. Clear
// empties the log and the search; Help and Readme show their pages.
TEST_F(ConsoleWindowTest, NextHitGoesRoundClearHelpAndReadme) {
    xConsole::xPrint("one hit\ntwo hit\nthree hit\n");
    shown();
    click("GotoNextSelection");  // nothing searched: nothing happens
    EXPECT_EQ(log()->currentselectionindex(), 0);
    window.searchField()->setText("hit");
    QList<int> visited;
    for (int i = 0; i < 4; ++i) {
        click("GotoNextSelection");
        visited.append(log()->currentselectionindex());
        EXPECT_EQ(log()->textCursor().position(),
                  log()->hits().at(visited.last()).selectionStart());
    }
    EXPECT_EQ(visited, QList<int>({1, 2, 0, 1}));
    QMetaObject::invokeMethod(window.searchField(), "returnPressed");
    EXPECT_EQ(log()->currentselectionindex(), 2);

    click("pushClear");
    EXPECT_TRUE(shown().isEmpty());
    EXPECT_TRUE(xConsole::sharedInstance()->contents().isEmpty());
    EXPECT_TRUE(log()->hits().isEmpty());
    EXPECT_TRUE(window.HowManyFound()->text().isEmpty());
    click("pushHelp");
    EXPECT_TRUE(shown().contains("Ctrl+Shift = Subtract"));
    click("pushReadme");
    EXPECT_TRUE(shown().startsWith("Tarn\nTarn keeps track of the media"));
}
