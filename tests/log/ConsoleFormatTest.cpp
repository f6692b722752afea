#include <gtest/gtest.h>

#include "TestSupport.h"
#include "xConsole.h"

TEST(ConsoleFormat, SourceLocatedLinePadsTheLineNumber) {
    testsupport::LogCapture log;
    xConsole::xNSLog("/src/Tarn/AppDelegate.mm", 318, "applicationWillTerminate",
                     QStringLiteral("Tarn terminated succesfully"));
    EXPECT_EQ(log.text(),
              "(applicationWillTerminate) (AppDelegate.mm:00000318) :: Tarn terminated succesfully\n");
}
