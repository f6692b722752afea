#include "shell/TarnAboutBox.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/TarnAppResources.h"
#include "support/TarnUtilities.h"
#include "support/TarnVersionCheck.h"

namespace {

QLabel* label(const QString& text, const QString& name, QWidget* parent) {
    auto* l = new QLabel(text, parent);
    l->setObjectName(name);
    l->setAccessibleName(name);
    l->setWordWrap(true);
    l->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse);
    return l;
}

}  // namespace

TarnAboutBox::TarnAboutBox(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("TarnAboutBox"));
    setWindowTitle(QStringLiteral("About Tarn"));

    auto* icon = new QLabel(this);
    icon->setPixmap(TarnAppResources::applicationIcon().pixmap(96, 96));
    icon->setAlignment(Qt::AlignTop);

    auto* title = label(QStringLiteral("Tarn"), QStringLiteral("aboutTitle"), this);
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    big.setBold(true);
    title->setFont(big);

    auto* text = new QVBoxLayout;
    text->addWidget(title);
    text->addWidget(label(versionText(), QStringLiteral("aboutVersion"), this));
    text->addWidget(label(
        QStringLiteral("Finds, sorts and checks the media of an Avid editing system on local and "
                       "shared volumes, and copies, moves or deletes it safely."),
        QStringLiteral("aboutDescription"), this));
    auto* site = label(QStringLiteral("<a href=\"%1\">%1</a>").arg(TarnVersionCheck::sitePageUrl()),
                       QStringLiteral("aboutSite"), this);
    site->setOpenExternalLinks(true);
    text->addWidget(site);
    text->addWidget(label(licenceText(), QStringLiteral("aboutLicence"), this));

    auto* top = new QHBoxLayout;
    top->addWidget(icon);
    top->addSpacing(12);
    top->addLayout(text, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    QPushButton* close = buttons->button(QDialogButtonBox::Close);
    close->setObjectName(QStringLiteral("Close"));
    close->setAccessibleName(QStringLiteral("Close"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(buttons);
    // As tall as the wrapped texts need at this width, no more.
    layout->setSizeConstraint(QLayout::SetFixedSize);
    for (QLabel* wrapped : findChildren<QLabel*>())
        if (wrapped->wordWrap()) wrapped->setFixedWidth(340);
}

QString TarnAboutBox::versionText() {
    return TarnUtilities::versionText();
}

QString TarnAboutBox::licenceText() {
    return QStringLiteral(
               "Copyright \u00a9 the Tarn developers. All rights reserved.\n"
               "Built with Qt %1 (LGPL 3) and FFmpeg's libavformat (LGPL 2.1 or later).")
        .arg(QString::fromLatin1(qVersion()));
}
