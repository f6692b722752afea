#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

#include "actions/TarnAlert.h"

class QMessageBox;
class QWidget;

// Shows TarnAlert's errors and questions as modal message boxes on the GUI
// thread. Created on the GUI thread, it installs itself as TarnAlert's
// presenter and removes itself again when destroyed.
//
// A question asked on the GUI thread runs its box there and then. A question
// asked by the action worker is posted to the GUI thread, and the worker waits
// for the answer; while it waits it keeps checking whether its action was
// cancelled. A cancelled action gives up its question: a box not shown yet is
// never shown, an open one closes itself (no answer; the cancelled action
// does no more work). So a clear that waits for the worker on the GUI thread
// and a worker waiting on a question can never wait on each other.
class TarnAlertPresenter : public QObject {
    Q_OBJECT
  public:
    explicit TarnAlertPresenter(QWidget* window = nullptr, QObject* parent = nullptr);
    ~TarnAlertPresenter() override;

    // The window the boxes are centred on (default: the active window).
    void setWindow(QWidget* window);

    // Called on the GUI thread with every box once it is up and its event
    // loop runs; for automation and tests (click a button to answer).
    using ShownHook = std::function<void(QMessageBox* box, const TarnAlert::Request& request)>;
    void setShownHook(ShownHook hook);

    // Answers every open box with its most cautious button, the one Escape
    // presses ("Cancel", else "No", else "OK"); a box without one closes
    // unanswered.
    void dismissOpenQuestions();
    int openQuestions() const { return int(open_.size()); }

    // The box of a request: warning style, message, detail and the buttons in
    // order, each named by its text (objectName and accessibleName).
    static QMessageBox* makeBox(const TarnAlert::Request& request, QWidget* parent);
    // The answer code of a finished box: 1000 + the clicked button's index,
    // or kNoAnswer when it was closed without one.
    static int answerOf(const QMessageBox* box);
    // The code of the most cautious button, or kNoAnswer.
    static int cautiousAnswer(const QStringList& buttons);

  private:
    // Shows the oldest question a worker posted (one per posted call).
    Q_INVOKABLE void showNextQuestion();

    struct Hub;  // what the installed presenter function and the waiting workers share
    // Runs one box on the GUI thread; `gone` tells when the asker gave up.
    int ask(const TarnAlert::Request& request, const std::function<bool()>& gone);

    std::shared_ptr<Hub> hub_;
    QPointer<QWidget> window_;
    ShownHook shownHook_;
    QList<QPointer<QMessageBox>> open_;
    std::shared_ptr<bool> alive_;
};
