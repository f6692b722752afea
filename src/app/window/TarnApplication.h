#pragma once

#include <QApplication>

// The desktop program's application object: an error that escapes an event
// handler is shown in the uncaught-error alert and then ends the program
// (its event loop returns 70), instead of unwinding through Qt.
class TarnApplication : public QApplication {
    Q_OBJECT
  public:
    TarnApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;
};
