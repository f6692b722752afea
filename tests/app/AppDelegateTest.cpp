#include <QMainWindow>

#include <gtest/gtest.h>

#include "window/AppDelegate.h"

TEST(AppStart, OpensTheMainWindow) {
    AppDelegate delegate;
    ASSERT_TRUE(delegate.start({QStringLiteral("tarn-app")}));
    ASSERT_NE(delegate.window(), nullptr);
    EXPECT_TRUE(delegate.window()->isVisible());
}
