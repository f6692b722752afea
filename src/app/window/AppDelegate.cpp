#include "window/AppDelegate.h"

#include <QMainWindow>

AppDelegate::AppDelegate(QObject* parent) : QObject(parent) {}

AppDelegate::~AppDelegate() = default;

bool AppDelegate::start(const QStringList& arguments) {
    Q_UNUSED(arguments);
    window_ = std::make_unique<QMainWindow>();
    window_->setWindowTitle(QStringLiteral("Tarn"));
    window_->show();
    return true;
}
