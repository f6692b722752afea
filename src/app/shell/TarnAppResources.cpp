#include "shell/TarnAppResources.h"

#include <QApplication>

#include "support/TarnVersion.h"

// The resource file lives in a static library: its registration is not
// pulled in by the linker unless called by name.
static void initResources() {
    static const bool done = [] {
        Q_INIT_RESOURCE(app);
        return true;
    }();
    Q_UNUSED(done);
}

QIcon TarnAppResources::applicationIcon() {
    initResources();
    QIcon icon;
    for (int size : {32, 64, 256})
        icon.addFile(QStringLiteral(":/tarn/tarn-%1.png").arg(size), QSize(size, size));
    return icon;
}

QIcon TarnAppResources::videoIcon() {
    initResources();
    QIcon icon;
    icon.addFile(QStringLiteral(":/tarn/video-icon.png"), QSize(16, 16));
    icon.addFile(QStringLiteral(":/tarn/video-icon-32.png"), QSize(32, 32));
    return icon;
}

void TarnAppResources::applyApplicationIdentity() {
    QApplication::setApplicationName(QStringLiteral("Tarn"));
    QApplication::setApplicationVersion(QStringLiteral(TARN_VERSION_STRING));
    QApplication::setDesktopFileName(QStringLiteral("tarn"));
    QApplication::setWindowIcon(applicationIcon());
}
