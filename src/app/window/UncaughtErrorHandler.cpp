#include "window/UncaughtErrorHandler.h"

#include <QApplication>
#include <QMessageBox>
#include <QThread>

#include <cxxabi.h>
#include <cstdlib>
#include <typeinfo>

namespace {

QString demangled(const char* name) {
    int status = 0;
    char* readable = abi::__cxa_demangle(name, nullptr, nullptr, &status);
    const QString text = QString::fromLatin1(status == 0 && readable ? readable : name);
    std::free(readable);
    return text;
}

void runAlert(const QString& name, const QString& reason) {
    QMessageBox alert;
    alert.setIcon(QMessageBox::Warning);
    alert.setText(name.isEmpty() ? QStringLiteral("UncaughtException") : name);
    if (!reason.isEmpty()) alert.setInformativeText(reason);
    alert.exec();
}

[[noreturn]] void onTerminate() {
    QString name;
    QString reason;
    if (std::exception_ptr error = std::current_exception()) {
        UncaughtErrorHandler::describe(error, &name, &reason);
    }
    UncaughtErrorHandler::showAlert(name, reason);
    std::abort();
}

}  // namespace

void UncaughtErrorHandler::install() {
    std::set_terminate(&onTerminate);
}

void UncaughtErrorHandler::describe(std::exception_ptr error, QString* name, QString* reason) {
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& e) {
        *name = demangled(typeid(e).name());
        *reason = QString::fromLocal8Bit(e.what());
    } catch (...) {
        *name = QString();
        *reason = QString();
    }
}

void UncaughtErrorHandler::showAlert(const QString& name, const QString& reason) {
    QCoreApplication* app = QCoreApplication::instance();
    if (!qobject_cast<QApplication*>(app)) return;
    if (QThread::currentThread() == app->thread()) {
        runAlert(name, reason);
    } else {
        QMetaObject::invokeMethod(
            app, [name, reason] { runAlert(name, reason); }, Qt::BlockingQueuedConnection);
    }
}
