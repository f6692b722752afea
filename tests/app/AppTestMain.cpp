#include <QApplication>

#include <gtest/gtest.h>

// The app's suite needs one QApplication for the whole run, made before the
// tests and on the main thread (QT_QPA_PLATFORM=offscreen comes from ctest).
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
