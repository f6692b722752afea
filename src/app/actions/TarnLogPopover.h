#pragma once

#include <QFrame>

class QPlainTextEdit;

// The popover of the queue's info button: the action's log in a read-only
// text view that never wraps (the log's lines are kept as written; long
// paths scroll sideways). It closes on a click elsewhere or Escape.
class TarnLogPopover : public QFrame {
    Q_OBJECT
  public:
    explicit TarnLogPopover(QWidget* parent = nullptr);

    // Shows the text hanging below `anchor` (global coordinates), kept on screen.
    void showText(const QString& text, const QRect& anchor);
    QPlainTextEdit* popoverText() const { return text_; }

  private:
    QPlainTextEdit* text_;
};
