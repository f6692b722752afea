#pragma once

class MainWindow;
class TarnStatusViewController;

// The two guards of the window's commands. Busy: a scan or reading pass is
// running (the status controller's busy flag), and most commands then do
// nothing. Sheet: the window already shows a sheet, and a command that would
// open another plays the "Pop" sound instead.
class CommandGuard {
  public:
    CommandGuard(TarnStatusViewController* status, MainWindow* window);

    bool busy() const;
    // True (after the "Pop" sound) when the window shows a sheet.
    bool sheetShown();
    // The "Pop" sound: the system beep.
    void pop();
    // How often "Pop" sounded, for the curious (tests).
    int popCount() const { return pops_; }

  private:
    TarnStatusViewController* status_;
    MainWindow* window_;
    int pops_ = 0;
};
