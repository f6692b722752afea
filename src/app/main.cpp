#include <QMessageBox>
#include <QThread>

#include <cstdlib>

#include "database/TarnCore.h"
#include "log/xConsole.h"
#include "shell/TarnAppResources.h"
#include "window/AppDelegate.h"
#include "window/TarnApplication.h"

namespace {

// A broken database ("Tarn error DB-00x") is shown, then the program ends.
void showFatalErrorAndExit(const QString& title, const QString& message) {
    xConsole::sharedInstance()->flush();
    QMetaObject::invokeMethod(
        qApp, [title, message] { QMessageBox::critical(nullptr, title, message, QMessageBox::Ok); },
        QThread::currentThread() == qApp->thread() ? Qt::DirectConnection
                                                   : Qt::BlockingQueuedConnection);
    std::_Exit(70);
}

}  // namespace

int main(int argc, char* argv[]) {
    TarnApplication app(argc, argv);
    TarnAppResources::applyApplicationIdentity();
    TarnCore::setFatalErrorHook(&showFatalErrorAndExit);
    AppDelegate delegate;
    switch (delegate.start(QApplication::arguments())) {
        case AppDelegate::StartResult::HelpShown:
            return 0;
        case AppDelegate::StartResult::BadArguments:
            return 2;
        case AppDelegate::StartResult::Started:
            break;
    }
    return QApplication::exec();
}
