#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// The one alert utility of the actions: error messages and the questions that
// copy, move, delete and the queue ask. The answer of a question is the code
// of the button chosen: the first button answers 1000, the second 1001, the
// third 1002 and so on; any other value means "no button" (the question was
// dismissed or abandoned) and every caller treats it as a refusal.
//
// The core shows nothing itself: the program installs a presenter (dialogs on
// the main thread in the desktop app, a terminal prompt in the command-line
// tool, scripted answers in tests). The presenter is called on the thread that
// asks and must block until it has an answer; it takes care of moving to the
// main thread when it needs to.
class TarnAlert {
  public:
    static constexpr int kFirstButton = 1000;
    static constexpr int kSecondButton = 1001;
    static constexpr int kThirdButton = 1002;
    static constexpr int kNoAnswer = 0;

    enum class Form { ErrorAndExit, Error, YesNo, NoYesYesToAll, OkDoNotShowAgain, Custom };

    struct Request {
        Form form = Form::Error;
        QString message;
        QString detail;
        QStringList buttons;  // in order; button i answers 1000 + i
        // True once the asker no longer wants the answer (its action was
        // cancelled while the question waited): a presenter that has not shown
        // the question yet returns kNoAnswer at once.
        std::function<bool()> abandoned;
    };

    // Returns the answer code (1000 + index of the chosen button) or kNoAnswer.
    using Presenter = std::function<int(const Request&)>;

    // Installs the presenter; an empty one restores the default, which shows
    // nothing and answers kNoAnswer (a refusal) to every question.
    static void setPresenter(Presenter presenter);
    // What ShowDialogAndExit runs after its alert (the default ends the
    // event loop with 1; without an application nothing ends).
    static void setExitHandler(std::function<void()> handler);

    // "OK"; then the program ends.
    static void ShowDialogAndExit_with_errorName(const QString& message, const QString& detail);
    // "OK".
    static void ShowDialog_with_errorName(const QString& message, const QString& detail);
    // "OK", "Cancel": 1000 for "OK".
    static int ShowDialog_with_YesNo(const QString& message, const QString& detail);
    // "No", "Yes", "Yes to All": 1000, 1001, 1002.
    static int ShowDialog_with_NoYesYesToAll(const QString& message, const QString& detail,
                                             std::function<bool()> abandoned = {});
    // "Ok", "Do NotShow Again": true when "Ok" was chosen (keep showing errors).
    static bool ShowDialog_with_OkDoNotShowAgain(const QString& message, const QString& detail,
                                                 std::function<bool()> abandoned = {});
    // Any buttons, in order: the answer code.
    static int ShowDialog_with_buttons(const QString& message, const QString& detail,
                                       const QStringList& buttons,
                                       std::function<bool()> abandoned = {});

  private:
    static int present(Request request);
};
