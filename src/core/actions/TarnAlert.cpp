#include "actions/TarnAlert.h"

#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>

#include <cstdlib>

namespace {

QMutex& hooksMutex() {
    static QMutex mutex;
    return mutex;
}
TarnAlert::Presenter& presenterSlot() {
    static TarnAlert::Presenter presenter;
    return presenter;
}
std::function<void()>& exitSlot() {
    static std::function<void()> handler;
    return handler;
}

}  // namespace

void TarnAlert::setPresenter(Presenter presenter) {
    QMutexLocker lock(&hooksMutex());
    presenterSlot() = std::move(presenter);
}

void TarnAlert::setExitHandler(std::function<void()> handler) {
    QMutexLocker lock(&hooksMutex());
    exitSlot() = std::move(handler);
}

int TarnAlert::present(Request request) {
    Presenter presenter;
    {
        QMutexLocker lock(&hooksMutex());
        presenter = presenterSlot();
    }
    if (request.abandoned && request.abandoned()) return kNoAnswer;
    if (!presenter) return kNoAnswer;
    return presenter(request);
}

void TarnAlert::ShowDialogAndExit_with_errorName(const QString& message, const QString& detail) {
    present({Form::ErrorAndExit, message, detail, {QStringLiteral("OK")}, {}});
    std::function<void()> handler;
    {
        QMutexLocker lock(&hooksMutex());
        handler = exitSlot();
    }
    // Ending the process is the application's business: without a handler,
    // a running event loop is asked to return 1, and otherwise nothing ends.
    if (handler) {
        handler();
    } else if (QCoreApplication::instance()) {
        QCoreApplication::exit(1);
    }
}

void TarnAlert::ShowDialog_with_errorName(const QString& message, const QString& detail) {
    present({Form::Error, message, detail, {QStringLiteral("OK")}, {}});
}

int TarnAlert::ShowDialog_with_YesNo(const QString& message, const QString& detail) {
    return present(
        {Form::YesNo, message, detail, {QStringLiteral("OK"), QStringLiteral("Cancel")}, {}});
}

int TarnAlert::ShowDialog_with_NoYesYesToAll(const QString& message, const QString& detail,
                                             std::function<bool()> abandoned) {
    return present({Form::NoYesYesToAll,
                    message,
                    detail,
                    {QStringLiteral("No"), QStringLiteral("Yes"), QStringLiteral("Yes to All")},
                    std::move(abandoned)});
}

bool TarnAlert::ShowDialog_with_OkDoNotShowAgain(const QString& message, const QString& detail,
                                                 std::function<bool()> abandoned) {
    int answer = present({Form::OkDoNotShowAgain,
                          message,
                          detail,
                          {QStringLiteral("Ok"), QStringLiteral("Do NotShow Again")},
                          std::move(abandoned)});
    return answer == kFirstButton;
}

int TarnAlert::ShowDialog_with_buttons(const QString& message, const QString& detail,
                                       const QStringList& buttons,
                                       std::function<bool()> abandoned) {
    return present({Form::Custom, message, detail, buttons, std::move(abandoned)});
}
