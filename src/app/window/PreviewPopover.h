#pragma once

#include <QFrame>

class QPlainTextEdit;

// The preview that the space bar toggles over the database table: the
// selected item's description in a fixed-pitch font, across the width of the
// table's surroundings.
class PreviewPopover : public QFrame {
    Q_OBJECT
  public:
    explicit PreviewPopover(QWidget* parent);

    // Shows the text across `width` at the bottom of the parent.
    void ShowPopover(const QString& text, int width);
    // Changes the text and width of a shown popover.
    void updateContents(const QString& text, int width);
    void HidePopover();
    bool isShown() const { return isVisible(); }
    QString text() const;

  private:
    void place(int width);

    QPlainTextEdit* text_;
};
