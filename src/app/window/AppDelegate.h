#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

class QMainWindow;

// The application controller: the composition root that creates the main
// window and wires the core (database, scanner, preferences, status model)
// to the views. Every menu and button command of the main window lands here.
class AppDelegate : public QObject {
    Q_OBJECT
  public:
    explicit AppDelegate(QObject* parent = nullptr);
    ~AppDelegate() override;

    // Start-up from the command line (arguments as QApplication::arguments()).
    // False when the arguments are wrong (the reason is printed).
    bool start(const QStringList& arguments);

    QMainWindow* window() const { return window_.get(); }

  private:
    std::unique_ptr<QMainWindow> window_;
};
