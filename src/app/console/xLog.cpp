#include "console/xLog.h"

#include <QLabel>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocument>

xLog::xLog(QWidget* parent) : QPlainTextEdit(parent) {
    setReadOnly(true);
    setUndoRedoEnabled(false);  // the log only grows; undo would keep a copy of it
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setWordWrapMode(QTextOption::NoWrap);
    setFont(consoleFont());
    // Keep the selection colours when the search field has the focus.
    QPalette p = palette();
    p.setColor(QPalette::Inactive, QPalette::Highlight,
               p.color(QPalette::Active, QPalette::Highlight));
    p.setColor(QPalette::Inactive, QPalette::HighlightedText,
               p.color(QPalette::Active, QPalette::HighlightedText));
    setPalette(p);
}

QFont xLog::consoleFont() {
    QFont font(QStringLiteral("Courier"));
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    font.setPointSize(12);
    return font;
}

void xLog::setHowManyFound(QLabel* label) {
    howManyFound_ = label;
}

void xLog::insertPiece(QTextCursor& cursor, const Piece& piece) {
    QTextCharFormat format;
    format.setFont(consoleFont());
    if (piece.color.isValid()) format.setForeground(piece.color);
    if (piece.background.isValid()) format.setBackground(piece.background);
    cursor.insertText(piece.text, format);
}

void xLog::addString(const QString& text, const QColor& color, const QColor& background) {
    if (text.isNull()) return;
    addPieces({Piece{text, color, background}});
}

void xLog::addPieces(const QList<Piece>& pieces) {
    if (pieces.isEmpty()) return;
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.beginEditBlock();
    // Neighbouring pieces in the same colours go in as one run of text.
    Piece run;
    bool open = false;
    for (const Piece& piece : pieces) {
        if (piece.text.isNull()) continue;
        if (open && piece.color == run.color && piece.background == run.background) {
            run.text += piece.text;
            continue;
        }
        if (open) insertPiece(cursor, run);
        run = piece;
        open = true;
    }
    if (open) insertPiece(cursor, run);
    cursor.endEditBlock();
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void xLog::addHtml(const QString& html) {
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertHtml(html);
}

void xLog::setString(const QString& text) {
    clearSearch();
    clear();
    if (!text.isEmpty()) addString(text);
}

void xLog::clearSearch() {
    hits_.clear();
    current_ = 0;
    setExtraSelections({});
    if (howManyFound_) howManyFound_->clear();
}

void xLog::updateSearchFilter(const QString& text) {
    clearSearch();
    if (!text.isEmpty()) {
        const QString log = document()->toPlainText();
        for (qsizetype at = log.indexOf(text); at >= 0; at = log.indexOf(text, at + text.size())) {
            QTextCursor hit(document());
            hit.setPosition(int(at));
            hit.setPosition(int(at + text.size()), QTextCursor::KeepAnchor);
            hits_.append(hit);
        }
    }
    if (hits_.isEmpty()) {
        setTextCursor(QTextCursor(document()));
        return;
    }
    markHits(-1);
    showHit(0);
    centerCursor();
    if (howManyFound_) howManyFound_->setText(QStringLiteral("%1 found").arg(hits_.size()));
}

void xLog::GotoNextSelection() {
    if (document()->isEmpty() || hits_.isEmpty()) return;
    ++current_;
    if (current_ >= hits_.size()) {
        current_ = 0;
        markHits(-1);  // going round again shows no indicator
        showHit(0);
        centerCursor();
        return;
    }
    showHit(current_);
    markHits(current_);
}

void xLog::markHits(int indicator) {
    QList<QTextEdit::ExtraSelection> marks;
    marks.reserve(hits_.size());
    QTextCharFormat format;
    format.setBackground(palette().color(QPalette::Active, QPalette::Highlight));
    format.setForeground(palette().color(QPalette::Active, QPalette::HighlightedText));
    for (const QTextCursor& hit : std::as_const(hits_)) marks.append({hit, format});
    if (indicator >= 0) {
        // The find indicator: the hit just stepped to stands out from the others.
        QTextCharFormat found;
        found.setBackground(QColor(255, 222, 0));
        found.setForeground(Qt::black);
        marks.append({hits_.at(indicator), found});
    }
    setExtraSelections(marks);
}

void xLog::showHit(int index) {
    // The hits are drawn as marks; the editor's cursor only brings one into view.
    QTextCursor at(document());
    at.setPosition(hits_.at(index).selectionStart());
    setTextCursor(at);
    ensureCursorVisible();
}
