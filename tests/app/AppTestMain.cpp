#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// The app's suite needs one QApplication for the whole run, made before the
// tests and on the main thread (QT_QPA_PLATFORM=offscreen comes from ctest).
// Preferences go to a private settings file, never the user's (not through
// QStandardPaths' test mode: that would also move the data folders, and the
// Trash and desktop-entry tests set XDG_DATA_HOME themselves).
namespace {

QtMessageHandler fallback = nullptr;

// The offscreen platform warns on every window with a fixed size.
void quietOffscreen(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (message.contains("does not support propagateSizeHints")) return;
    if (fallback) fallback(type, context, message);
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QTemporaryDir home;
    qputenv("TARN_SETTINGS", home.filePath("settings.ini").toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", home.filePath("config").toLocal8Bit());
    fallback = qInstallMessageHandler(quietOffscreen);
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
