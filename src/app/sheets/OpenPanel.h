#pragma once

#include <QFileDialog>

// An open panel that picks files and folders alike, several at once: "Open"
// takes whatever is selected, a double-click on a folder goes into it.
// (Qt's own dialog picks either files or folders.)
class OpenPanel : public QFileDialog {
    Q_OBJECT
  public:
    OpenPanel(QWidget* parent, const QString& title);

  public slots:
    void accept() override;
};
