#include <QApplication>

#include "window/AppDelegate.h"

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    AppDelegate delegate;
    if (!delegate.start(QApplication::arguments())) return 2;
    return QApplication::exec();
}
