#include "window/CommandGuard.h"

#include <QApplication>

#include "status/TarnStatusViewController.h"
#include "window/MainWindow.h"

CommandGuard::CommandGuard(TarnStatusViewController* status, MainWindow* window)
    : status_(status), window_(window) {}

bool CommandGuard::busy() const {
    return status_->isRunning();
}

bool CommandGuard::sheetShown() {
    if (!window_->showsSheet()) return false;
    pop();
    return true;
}

void CommandGuard::pop() {
    ++pops_;
    QApplication::beep();
}
