#include "window/TarnApplication.h"

#include "window/UncaughtErrorHandler.h"

TarnApplication::TarnApplication(int& argc, char** argv) : QApplication(argc, argv) {
    setApplicationName(QStringLiteral("Tarn"));
    setOrganizationName(QStringLiteral("Tarn"));
    UncaughtErrorHandler::install();
}

bool TarnApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        QString name;
        QString reason;
        UncaughtErrorHandler::describe(std::current_exception(), &name, &reason);
        UncaughtErrorHandler::showAlert(name, reason);
        QCoreApplication::exit(70);
        return false;
    }
}
