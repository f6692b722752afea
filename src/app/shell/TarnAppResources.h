#pragma once

#include <QIcon>

// The application's images (resource file app/resources/app.qrc) and its
// identity towards the desktop.
class TarnAppResources {
  public:
    // The Tarn icon: windows, the About box, the desktop entry ("tarn").
    static QIcon applicationIcon();
    // "video-icon": the default image of a media item in the table.
    static QIcon videoIcon();
    // Application name, version, desktop file name ("tarn", so the desktop
    // matches the windows to tarn.desktop) and the window icon; call once in
    // main() after the QApplication is made.
    static void applyApplicationIdentity();
};
