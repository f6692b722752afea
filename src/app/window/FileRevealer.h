#pragma once

#include <QString>

// Shows a file selected in the platform's file manager: Finder on macOS,
// Explorer on Windows, and elsewhere the file manager that answers the
// freedesktop.org FileManager1 interface, or else the file's folder opened
// in the default file manager.
class FileRevealer {
  public:
    static void reveal(const QString& path);
};
