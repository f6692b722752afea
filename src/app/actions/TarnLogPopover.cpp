#include "actions/TarnLogPopover.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QScreen>
#include <QVBoxLayout>

TarnLogPopover::TarnLogPopover(QWidget* parent)
    : QFrame(parent, Qt::Popup), text_(new QPlainTextEdit(this)) {
    setObjectName(QStringLiteral("popover"));
    setAccessibleName(QStringLiteral("popover"));
    setFrameShape(QFrame::StyledPanel);
    text_->setObjectName(QStringLiteral("popoverText"));
    text_->setAccessibleName(QStringLiteral("popoverText"));
    text_->setReadOnly(true);
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->setWordWrapMode(QTextOption::NoWrap);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(text_);
    resize(600, 340);
}

void TarnLogPopover::showText(const QString& text, const QRect& anchor) {
    if (isVisible()) hide();
    text_->setPlainText(text);
    text_->moveCursor(QTextCursor::End);
    QPoint place(anchor.center().x() - width() / 2, anchor.bottom() + 2);
    if (const QScreen* screen = QGuiApplication::screenAt(anchor.center())) {
        const QRect room = screen->availableGeometry();
        if (place.y() + height() > room.bottom()) place.setY(anchor.top() - height() - 2);
        place.setX(
            std::clamp(place.x(), room.left(), std::max(room.left(), room.right() - width())));
        place.setY(std::max(place.y(), room.top()));
    }
    move(place);
    show();
    text_->setFocus();
}
