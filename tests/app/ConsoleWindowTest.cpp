#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextBlock>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <thread>

#include "console/xConsoleWindow.h"
#include "console/xLog.h"
#include "log/xConsole.h"

namespace {

class ConsoleWindowTest : public ::testing::Test {
  protected:
    void SetUp() override { window.Reset(); }
    // Everything logged so far, shown.
    QString shown() {
        window.flushLog();
        return window.theLog()->toPlainText();
    }
    QTextCharFormat formatAt(const QString& text) {
        const int at = int(shown().indexOf(text));
        QTextCursor cursor(window.theLog()->document());
        cursor.setPosition(at + 1);
        return cursor.charFormat();
    }
    void search(const QString& text) { window.searchField()->setText(text); }

    xConsoleWindow window;
};

}  // namespace

TEST_F(ConsoleWindowTest, StartsHiddenWithNamedControls) {
    xConsoleWindow fresh;
    EXPECT_FALSE(fresh.isVisible());
    const char* names[] = {"theLog",   "ConsoleSearchField", "HowManyFound", "GotoNextSelection",
                           "pushHelp", "pushReadme",         "pushClear"};
    for (const char* name : names) {
        auto* control = fresh.findChild<QWidget*>(QString::fromLatin1(name));
        ASSERT_NE(control, nullptr) << name;
        EXPECT_EQ(control->accessibleName(), QString::fromLatin1(name));
    }
    fresh.showWindow();
    EXPECT_TRUE(fresh.isVisible());
}

TEST_F(ConsoleWindowTest, ShowsLoggedPiecesInOrderAndInTheirColours) {
    xConsole::xPrint(QStringLiteral("plain line\n"));
    xConsole::xPrint(QStringLiteral("red line\n"), QStringLiteral("red"));
    xConsole::xPrint(QStringLiteral("green piece"), QStringLiteral("#00ff00"));
    xConsole::xPrint(QStringLiteral(" and more green\n"), QStringLiteral("#00ff00"));
    TARN_LOG(QStringLiteral("located"));
    const QString text = shown();
    EXPECT_TRUE(
        text.startsWith(QStringLiteral("plain line\nred line\ngreen piece and more green\n(")));
    EXPECT_TRUE(text.contains(QLatin1String("::TestBody) (ConsoleWindowTest.cpp:000")));

    EXPECT_FALSE(formatAt(QStringLiteral("plain")).hasProperty(QTextFormat::ForegroundBrush));
    EXPECT_EQ(formatAt(QStringLiteral("red line")).foreground().color(), QColor(Qt::red));
    EXPECT_EQ(formatAt(QStringLiteral("more green")).foreground().color(), QColor(0, 255, 0));
    EXPECT_FALSE(formatAt(QStringLiteral("red line")).hasProperty(QTextFormat::BackgroundBrush));
    EXPECT_TRUE(formatAt(QStringLiteral("plain")).font().fixedPitch());
    EXPECT_EQ(window.theLog()->lineWrapMode(), QPlainTextEdit::NoWrap);
}

TEST_F(ConsoleWindowTest, BackgroundColourOnlyWhenGiven) {
    window.theLog()->addString(QStringLiteral("marked"), QColor(Qt::white), QColor(Qt::blue));
    window.theLog()->addString(QString(), QColor(Qt::red));  // a null text adds nothing
    EXPECT_EQ(window.theLog()->toPlainText(), QStringLiteral("marked"));
    EXPECT_EQ(formatAt(QStringLiteral("marked")).background().color(), QColor(Qt::blue));
}

// Lines from another thread arrive through the event loop in batches,
// without anyone asking for them.
TEST_F(ConsoleWindowTest, BatchesLinesFromOtherThreads) {
    constexpr int kLines = 20000;
    std::thread scanner([] {
        for (int i = 0; i < kLines; ++i) xConsole::xPrint(QStringLiteral("line %1\n").arg(i));
    });
    scanner.join();
    xConsole::sharedInstance()->flush();
    QTextDocument* document = window.theLog()->document();
    while (document->blockCount() <= kLines) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_EQ(document->findBlockByNumber(0).text(), QStringLiteral("line 0"));
    EXPECT_EQ(document->findBlockByNumber(kLines - 1).text(),
              QStringLiteral("line %1").arg(kLines - 1));
}

TEST_F(ConsoleWindowTest, SearchCountsLiteralCaseSensitiveHits) {
    struct Case {
        const char* log;
        const char* needle;
        int hits;
        const char* counter;
    };
    const Case cases[] = {
        {"aaaa", "aa", 2, "2 found"},  // hits don't overlap
        {"Scan one\nscan two\nScan three\nScan", "Scan", 3, "3 found"},
        {"a.b axb a.b", "a.b", 2, "2 found"},  // literal, not a pattern
        {"nothing here", "missing", 0, ""},
        {"some text", "", 0, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.log);
        window.Reset();
        search(QString());
        xConsole::xPrint(QString::fromLatin1(c.log));
        shown();
        search(QString::fromLatin1(c.needle));
        EXPECT_EQ(window.theLog()->hits().size(), c.hits);
        EXPECT_EQ(window.HowManyFound()->text(), QString::fromLatin1(c.counter));
        EXPECT_EQ(window.theLog()->currentselectionindex(), 0);
        for (const QTextCursor& hit : window.theLog()->hits()) {
            EXPECT_EQ(hit.selectedText(), QString::fromLatin1(c.needle));
        }
    }
}

TEST_F(ConsoleWindowTest, NextHitGoesRoundAfterTheLast) {
    xConsole::xPrint(QStringLiteral("one hit\ntwo hit\nthree hit\n"));
    shown();
    auto* next = window.findChild<QPushButton*>(QStringLiteral("GotoNextSelection"));
    next->click();  // nothing searched: nothing happens
    EXPECT_EQ(window.theLog()->currentselectionindex(), 0);

    search(QStringLiteral("hit"));
    QList<int> visited;
    for (int i = 0; i < 4; ++i) {
        next->click();
        visited.append(window.theLog()->currentselectionindex());
        const QTextCursor& hit = window.theLog()->hits().at(visited.last());
        EXPECT_EQ(window.theLog()->textCursor().position(), hit.selectionStart());
    }
    EXPECT_EQ(visited, QList<int>({1, 2, 0, 1}));
    // Return in the search field steps too.
    QMetaObject::invokeMethod(window.searchField(), "returnPressed");
    EXPECT_EQ(window.theLog()->currentselectionindex(), 2);
}

TEST_F(ConsoleWindowTest, ClearHelpAndReadme) {
    xConsole::xPrint(QStringLiteral("before\n"));
    shown();
    search(QStringLiteral("before"));
    window.findChild<QPushButton*>(QStringLiteral("pushClear"))->click();
    EXPECT_TRUE(shown().isEmpty());
    EXPECT_TRUE(xConsole::sharedInstance()->contents().isEmpty());
    EXPECT_TRUE(window.theLog()->hits().isEmpty());
    EXPECT_TRUE(window.HowManyFound()->text().isEmpty());

    window.findChild<QPushButton*>(QStringLiteral("pushHelp"))->click();
    QCoreApplication::processEvents();
    EXPECT_TRUE(shown().contains(QLatin1String("Ctrl+Shift = Subtract")));
    window.findChild<QPushButton*>(QStringLiteral("pushReadme"))->click();
    QCoreApplication::processEvents();
    EXPECT_TRUE(shown().contains(QLatin1String("Tarn keeps track of the media")));
    EXPECT_FALSE(shown().contains(QLatin1String("Ctrl+Shift = Subtract")));
    // Lines logged afterwards follow the text.
    xConsole::xPrint(QStringLiteral("after\n"));
    EXPECT_TRUE(shown().endsWith(QLatin1String("after\n")));
}

// A reset from another thread (clearing the database during work) empties the
// view as well, lines logged before it included.
TEST_F(ConsoleWindowTest, ResetFromAnotherThreadEmptiesTheView) {
    std::thread worker([] {
        xConsole::xPrint(QStringLiteral("old line\n"));
        xConsole::sharedInstance()->Reset();
    });
    worker.join();
    QCoreApplication::processEvents();
    EXPECT_FALSE(shown().contains(QLatin1String("old line")));
}
