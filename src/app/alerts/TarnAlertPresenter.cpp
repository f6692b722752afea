#include "alerts/TarnAlertPresenter.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace {

constexpr const char* kAnswerProperty = "tarnAnswer";
constexpr const char* kAbandonedProperty = "tarnAbandoned";
// How often a waiting worker, and an open box, look whether the action behind
// the question was cancelled.
constexpr int kPollMilliseconds = 50;

// One question a worker waits on.
struct Pending {
    bool done = false;    // answered (or the presenter went away)
    bool gaveUp = false;  // the worker stopped waiting: its action was cancelled
    int answer = TarnAlert::kNoAnswer;
    int cautious = TarnAlert::kNoAnswer;  // the answer when nobody can ask any more
    bool taken = false;                   // the GUI thread has taken it up
    TarnAlert::Request request;
};

}  // namespace

struct TarnAlertPresenter::Hub {
    // Standard ones rather than Qt's: a worker waits on them, and the thread
    // sanitizer sees a pthread wait release its lock, not a QWaitCondition's.
    std::mutex mutex;
    std::condition_variable answered;
    TarnAlertPresenter* presenter = nullptr;  // null once destroyed
    QList<std::shared_ptr<Pending>> waiting;

    static int present(const std::shared_ptr<Hub>& hub, const TarnAlert::Request& request);
    static void showPosted(const std::shared_ptr<Hub>& hub, const std::shared_ptr<Pending>& pending,
                           const TarnAlert::Request& request);
    // The oldest question no one has taken up yet, with its request; null
    // when there is none.
    std::shared_ptr<Pending> takeNext(TarnAlert::Request* request);
};

int TarnAlertPresenter::Hub::present(const std::shared_ptr<Hub>& hub,
                                     const TarnAlert::Request& request) {
    std::unique_lock lock(hub->mutex);
    TarnAlertPresenter* presenter = hub->presenter;
    if (!presenter) return TarnAlert::kNoAnswer;
    if (QThread::currentThread() == presenter->thread()) {
        // Only this thread can destroy the presenter, and it is busy here.
        lock.unlock();
        return presenter->ask(request, request.abandoned);
    }
    auto pending = std::make_shared<Pending>();
    pending->cautious = cautiousAnswer(request.buttons);
    pending->request = request;
    hub->waiting.append(pending);
    // Posted under the lock: the presenter cannot be destroyed meanwhile, and
    // a posted call dies with it. The call carries nothing: the question goes
    // over through the hub, under its lock.
    QMetaObject::invokeMethod(presenter, "showNextQuestion", Qt::QueuedConnection);
    while (!pending->done) {
        if (request.abandoned && request.abandoned()) {
            pending->gaveUp = true;
            break;
        }
        hub->answered.wait_for(lock, std::chrono::milliseconds(kPollMilliseconds));
    }
    hub->waiting.removeOne(pending);
    return pending->done ? pending->answer : TarnAlert::kNoAnswer;
}

std::shared_ptr<Pending> TarnAlertPresenter::Hub::takeNext(TarnAlert::Request* request) {
    std::unique_lock lock(mutex);
    for (const std::shared_ptr<Pending>& pending : waiting) {
        if (pending->taken) continue;
        pending->taken = true;
        *request = pending->request;
        return pending;
    }
    return nullptr;
}

void TarnAlertPresenter::showNextQuestion() {
    // A copy: the box's event loop may destroy this presenter, and its hub
    // must outlive the answer.
    const std::shared_ptr<Hub> hub = hub_;
    TarnAlert::Request request;
    if (std::shared_ptr<Pending> pending = hub->takeNext(&request))
        Hub::showPosted(hub, pending, request);
}

void TarnAlertPresenter::Hub::showPosted(const std::shared_ptr<Hub>& hub,
                                         const std::shared_ptr<Pending>& pending,
                                         const TarnAlert::Request& request) {
    TarnAlertPresenter* presenter = nullptr;
    {
        std::unique_lock lock(hub->mutex);
        if (pending->gaveUp || pending->done || !hub->presenter) return;
        presenter = hub->presenter;
    }
    // The asker's own test may only run while the asker still waits (it reads
    // the action's state); the lock keeps it from leaving in between.
    auto gone = [hub, pending, request] {
        std::unique_lock lock(hub->mutex);
        if (pending->gaveUp || pending->done) return true;
        return request.abandoned && request.abandoned();
    };
    const int answer = presenter->ask(request, gone);
    std::unique_lock lock(hub->mutex);
    if (!pending->gaveUp && !pending->done) {
        pending->done = true;
        pending->answer = answer;
    }
    hub->answered.notify_all();
}

TarnAlertPresenter::TarnAlertPresenter(QWidget* window, QObject* parent)
    : QObject(parent),
      hub_(std::make_shared<Hub>()),
      window_(window),
      alive_(std::make_shared<bool>(true)) {
    hub_->presenter = this;
    std::shared_ptr<Hub> hub = hub_;
    TarnAlert::setPresenter(
        [hub](const TarnAlert::Request& request) { return Hub::present(hub, request); });
}

TarnAlertPresenter::~TarnAlertPresenter() {
    *alive_ = false;
    {
        // Workers still waiting get no answer; questions asked later none either.
        std::unique_lock lock(hub_->mutex);
        hub_->presenter = nullptr;
        for (const std::shared_ptr<Pending>& pending : hub_->waiting) {
            pending->done = true;
            pending->answer = pending->cautious;
        }
        hub_->answered.notify_all();
    }
    dismissOpenQuestions();
}

void TarnAlertPresenter::setWindow(QWidget* window) {
    window_ = window;
}

void TarnAlertPresenter::setShownHook(ShownHook hook) {
    shownHook_ = std::move(hook);
}

void TarnAlertPresenter::dismissOpenQuestions() {
    const QList<QPointer<QMessageBox>> open = open_;
    for (const QPointer<QMessageBox>& box : open) {
        if (!box) continue;
        if (QAbstractButton* escape = box->escapeButton()) {
            escape->click();
        } else {
            box->setProperty(kAbandonedProperty, true);
            box->reject();
        }
    }
}

int TarnAlertPresenter::cautiousAnswer(const QStringList& buttons) {
    for (const char* word : {"Cancel", "No", "OK"})
        for (qsizetype i = 0; i < buttons.size(); ++i)
            if (buttons.at(i).compare(QLatin1String(word), Qt::CaseInsensitive) == 0)
                return TarnAlert::kFirstButton + int(i);
    return TarnAlert::kNoAnswer;
}

QMessageBox* TarnAlertPresenter::makeBox(const TarnAlert::Request& request, QWidget* parent) {
    auto* box = new QMessageBox(parent);
    box->setObjectName(QStringLiteral("TarnAlert"));
    box->setAccessibleName(request.message);
    box->setWindowTitle(QStringLiteral("Tarn"));
    box->setIcon(QMessageBox::Warning);
    box->setTextFormat(Qt::PlainText);
    box->setText(request.message);
    box->setInformativeText(request.detail);
    const int cautious = cautiousAnswer(request.buttons);
    for (qsizetype i = 0; i < request.buttons.size(); ++i) {
        const QString& text = request.buttons.at(i);
        // One role for all keeps the buttons in the asker's order.
        QPushButton* button = box->addButton(text, QMessageBox::ActionRole);
        button->setObjectName(text);
        button->setAccessibleName(text);
        button->setProperty(kAnswerProperty, TarnAlert::kFirstButton + int(i));
        if (i == 0) box->setDefaultButton(button);
        // Escape (and the window's close button) answer the most cautious one.
        if (TarnAlert::kFirstButton + int(i) == cautious) box->setEscapeButton(button);
    }
    return box;
}

int TarnAlertPresenter::answerOf(const QMessageBox* box) {
    if (!box || box->property(kAbandonedProperty).toBool()) return TarnAlert::kNoAnswer;
    const QAbstractButton* clicked = box->clickedButton();
    if (!clicked) return TarnAlert::kNoAnswer;
    bool ok = false;
    const int answer = clicked->property(kAnswerProperty).toInt(&ok);
    return ok ? answer : TarnAlert::kNoAnswer;
}

int TarnAlertPresenter::ask(const TarnAlert::Request& request, const std::function<bool()>& gone) {
    // Checked right before the box goes up: a cancelled action asks nothing.
    if (gone && gone()) return TarnAlert::kNoAnswer;
    QWidget* parent = window_ ? window_.data() : QApplication::activeWindow();
    QPointer<QMessageBox> box = makeBox(request, parent);
    if (gone) {
        auto* poll = new QTimer(box);
        poll->setInterval(kPollMilliseconds);
        QMessageBox* raw = box;
        connect(poll, &QTimer::timeout, raw, [raw, gone] {
            if (!gone()) return;
            raw->setProperty(kAbandonedProperty, true);
            raw->reject();
        });
        poll->start();
    }
    if (shownHook_) {
        ShownHook hook = shownHook_;
        QMessageBox* raw = box;
        QTimer::singleShot(0, raw, [raw, hook, request] { hook(raw, request); });
    }
    open_.append(box);
    const std::shared_ptr<bool> alive = alive_;
    box->exec();
    const int answer = answerOf(box);
    delete box.data();
    if (*alive) open_.removeAll(QPointer<QMessageBox>());
    return answer;
}
