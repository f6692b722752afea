#pragma once

#include <QString>
#include <QStringList>

// `tarn demo [DIR]`: writes the demo volume into DIR (default: "demo-volume"
// beside the build folder) unless it is already there, scans it and prints
// the table of its media and the projects summary.
class DemoCommand {
  public:
    static int run(const QStringList& args);
    // The folder of the tarn binary's parent: <build>/src/tarn -> <build>/../demo-volume.
    static QString defaultFolder();
};
