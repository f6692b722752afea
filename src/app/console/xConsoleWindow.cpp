#include "console/xConsoleWindow.h"

#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "console/xLog.h"
#include "console/xLogFeed.h"
#include "log/xConsole.h"

namespace {

void nameControl(QWidget* widget, const QString& name) {
    widget->setObjectName(name);
    widget->setAccessibleName(name);
}

QString resourceText(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return QString();
    return QString::fromUtf8(file.readAll());
}

}  // namespace

xConsoleWindow::xConsoleWindow(QWidget* parent) : QWidget(parent, Qt::Window) {
    nameControl(this, QStringLiteral("xConsole"));
    setWindowTitle(QStringLiteral("Console"));
    resize(900, 520);

    log_ = new xLog(this);
    nameControl(log_, QStringLiteral("theLog"));
    searchField_ = new QLineEdit(this);
    nameControl(searchField_, QStringLiteral("ConsoleSearchField"));
    searchField_->setPlaceholderText(QStringLiteral("Search"));
    searchField_->setClearButtonEnabled(true);
    howManyFound_ = new QLabel(this);
    nameControl(howManyFound_, QStringLiteral("HowManyFound"));
    howManyFound_->setMinimumWidth(
        howManyFound_->fontMetrics().horizontalAdvance(QStringLiteral("0000000 found")));
    log_->setHowManyFound(howManyFound_);

    auto* bar = new QHBoxLayout;
    bar->addWidget(searchField_, 1);
    bar->addWidget(howManyFound_);
    QPushButton* next = addButton(QStringLiteral("Next"), QStringLiteral("GotoNextSelection"));
    bar->addWidget(next);
    bar->addStretch(1);
    QPushButton* help = addButton(QStringLiteral("Help"), QStringLiteral("pushHelp"));
    QPushButton* readme = addButton(QStringLiteral("Readme"), QStringLiteral("pushReadme"));
    QPushButton* clear = addButton(QStringLiteral("Clear"), QStringLiteral("pushClear"));
    bar->addWidget(help);
    bar->addWidget(readme);
    bar->addWidget(clear);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(log_, 1);

    connect(searchField_, &QLineEdit::textChanged, this, &xConsoleWindow::updateSearchFilter);
    connect(searchField_, &QLineEdit::returnPressed, this, &xConsoleWindow::GotoNextSelection);
    connect(next, &QPushButton::clicked, this, &xConsoleWindow::GotoNextSelection);
    connect(help, &QPushButton::clicked, this, &xConsoleWindow::pushHelp);
    connect(readme, &QPushButton::clicked, this, &xConsoleWindow::pushReadme);
    connect(clear, &QPushButton::clicked, this, &xConsoleWindow::pushClear);

    feed_ = new xLogFeed(log_, this);
    // Whoever resets the log (clearing the database does) empties the view too:
    // at once on this thread, queued from any other.
    connect(xConsole::sharedInstance(), &xConsole::wasReset, this, &xConsoleWindow::clearView);
}

xConsoleWindow::~xConsoleWindow() = default;

QPushButton* xConsoleWindow::addButton(const QString& title, const QString& name) {
    auto* button = new QPushButton(title, this);
    nameControl(button, name);
    button->setAutoDefault(false);
    return button;
}

QString xConsoleWindow::welcomeText() {
    return resourceText(QStringLiteral(":/Tarn.html"));
}

QString xConsoleWindow::helpText() {
    return resourceText(QStringLiteral(":/TarnHelp.html"));
}

void xConsoleWindow::flushLog() {
    feed_->flush();
}

void xConsoleWindow::showWindow() {
    show();
    raise();
    activateWindow();
}

void xConsoleWindow::Reset() {
    xConsole::sharedInstance()->Reset();  // clearView runs from its signal
}

void xConsoleWindow::clearView() {
    // Lines logged before the reset may still be on their way: wait for
    // them, then drop them with the rest.
    xConsole::sharedInstance()->flush();
    feed_->discardPending();
    log_->setString(QString());
}

void xConsoleWindow::LoadWelcomeText() {
    log_->addHtml(welcomeText());
}

void xConsoleWindow::LoadHelpText() {
    Reset();
    log_->addHtml(helpText());
}

void xConsoleWindow::pushHelp() {
    LoadHelpText();
}

void xConsoleWindow::pushReadme() {
    Reset();
    LoadWelcomeText();
}

void xConsoleWindow::pushClear() {
    Reset();
}

void xConsoleWindow::updateSearchFilter() {
    log_->updateSearchFilter(searchField_->text());
}

void xConsoleWindow::GotoNextSelection() {
    log_->GotoNextSelection();
}
