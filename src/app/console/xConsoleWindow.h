#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
class xLog;
class xLogFeed;

// The console window: the application log (xConsole) in an xLog view, a
// search field with its hit counter and next-hit button, and the help, readme
// and clear buttons. It starts hidden; the log is followed from creation on.
class xConsoleWindow : public QWidget {
    Q_OBJECT
  public:
    explicit xConsoleWindow(QWidget* parent = nullptr);
    ~xConsoleWindow() override;

    xLog* theLog() const { return log_; }
    QLineEdit* searchField() const { return searchField_; }
    QLabel* HowManyFound() const { return howManyFound_; }

    // The resources ":/Tarn.html" and ":/TarnHelp.html".
    static QString welcomeText();
    static QString helpText();

    // Shows everything logged so far now, without waiting for the next batch.
    void flushLog();

  public slots:
    // Brings the window up, in front.
    void showWindow();
    // Empties the log (xConsole's text and the view).
    void Reset();
    void LoadWelcomeText();
    void LoadHelpText();
    void pushHelp();
    void pushReadme();
    void pushClear();
    void updateSearchFilter();
    void GotoNextSelection();

  private:
    void clearView();
    QPushButton* addButton(const QString& title, const QString& name);

    xLog* log_ = nullptr;
    xLogFeed* feed_ = nullptr;
    QLineEdit* searchField_ = nullptr;
    QLabel* howManyFound_ = nullptr;
};
