#pragma once

#include <QColor>
#include <QList>
#include <QPlainTextEdit>
#include <QPointer>
#include <QString>
#include <QTextCursor>

class QLabel;

// The console's text: the log in a fixed-pitch font that never wraps (the
// view scrolls sideways), each piece in its own colour, with a literal search
// that selects every hit at once and steps through them.
//
// A plain-text editor rather than a rich-text one: a scan may log 100,000
// lines, and only the plain editor lays out appended lines lazily.
class xLog : public QPlainTextEdit {
    Q_OBJECT
  public:
    // One appended piece; an invalid colour is the default text colour (for
    // the foreground) or no background.
    struct Piece {
        QString text;
        QColor color;
        QColor background;
    };

    explicit xLog(QWidget* parent = nullptr);

    // Appends at the end in the console style and scrolls to the end. A null
    // text is ignored.
    void addString(const QString& text, const QColor& color = QColor(),
                   const QColor& background = QColor());
    // Appends several pieces in one editing step (one layout, one repaint).
    void addPieces(const QList<Piece>& pieces);
    // Appends rich text (the help and welcome pages) at the end.
    void addHtml(const QString& html);
    // Replaces the whole text (null: empty), forgets the search and empties
    // the hit counter.
    void setString(const QString& text);

    // The text field that shows "%lu found" (not owned).
    void setHowManyFound(QLabel* label);

    // Selects every literal, case-sensitive, non-overlapping occurrence of
    // `text`, centres them and shows the count; with none, selects nothing.
    void updateSearchFilter(const QString& text);
    // Shows the next hit, going back to the first after the last.
    void GotoNextSelection();

    // The hits of the last search and the one shown last.
    const QList<QTextCursor>& hits() const { return hits_; }
    int currentselectionindex() const { return current_; }

    // Courier 12, the console's face.
    static QFont consoleFont();

  private:
    void showHit(int index);
    // Marks every hit; `indicator` (>= 0) gets the find indicator.
    void markHits(int indicator);
    void clearSearch();
    void insertPiece(QTextCursor& cursor, const Piece& piece);

    QPointer<QLabel> howManyFound_;
    QList<QTextCursor> hits_;
    int current_ = 0;
};
