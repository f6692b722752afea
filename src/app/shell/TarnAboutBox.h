#pragma once

#include <QDialog>

// "About Tarn": the icon, the version and build ("v0.9.0 build 1"), what
// Tarn is for, the licence and the libraries it is built with.
class TarnAboutBox : public QDialog {
    Q_OBJECT
  public:
    explicit TarnAboutBox(QWidget* parent = nullptr);

    static QString versionText();
    static QString licenceText();
};
