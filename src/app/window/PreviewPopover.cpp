#include "window/PreviewPopover.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QVBoxLayout>

PreviewPopover::PreviewPopover(QWidget* parent) : QFrame(parent) {
    setObjectName(QStringLiteral("previewPanel"));
    setAccessibleName(QStringLiteral("Preview"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    text_ = new QPlainTextEdit(this);
    text_->setObjectName(QStringLiteral("previewText"));
    text_->setAccessibleName(QStringLiteral("Preview"));
    text_->setReadOnly(true);
    text_->setFocusPolicy(Qt::NoFocus);
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(text_);
    hide();
}

void PreviewPopover::ShowPopover(const QString& text, int width) {
    text_->setPlainText(text);
    place(width);
    show();
    raise();
}

void PreviewPopover::updateContents(const QString& text, int width) {
    if (!isVisible()) return;
    text_->setPlainText(text);
    place(width);
}

void PreviewPopover::HidePopover() {
    hide();
}

QString PreviewPopover::text() const {
    return text_->toPlainText();
}

void PreviewPopover::place(int width) {
    QWidget* host = parentWidget();
    const int height = host ? qMin(260, host->height() / 2) : 260;
    const int y = host ? host->height() - height : 0;
    setGeometry(0, y, qMax(width, 0), height);
}
