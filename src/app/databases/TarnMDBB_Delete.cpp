#include "databases/TarnMDBB_Delete.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "actions/TarnAlert.h"
#include "databases/TarnDatabaseFilesModel.h"
#include "shell/TarnSheets.h"

namespace {

template <typename W>
W* named(W* widget, const QString& name) {
    widget->setObjectName(name);
    widget->setAccessibleName(name);
    return widget;
}

}  // namespace

TarnMDBB_Delete::TarnMDBB_Delete(QWidget* parent)
    : QDialog(parent),
      model_(new TarnDatabaseFilesModel(this)),
      table_(named(new QTableView(this), QStringLiteral("tableView"))),
      summary_(named(new QLabel(this), QStringLiteral("summaryText"))),
      deleteButton_(
          named(new QPushButton(QStringLiteral("Delete"), this), QStringLiteral("Delete"))),
      closeButton_(named(new QPushButton(QStringLiteral("Close"), this), QStringLiteral("Close"))) {
    setObjectName(QStringLiteral("TarnMDBB_Delete"));
    setWindowTitle(QStringLiteral("Select and delete databases"));
    setMinimumSize(600, 500);

    table_->setModel(model_);
    table_->setAlternatingRowColors(true);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setWordWrap(false);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(36);
    table_->horizontalHeader()->setSectionsMovable(false);
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->horizontalHeader()->setHighlightSections(false);

    // Escape closes through the dialog's reject(); the button only shows it.
    closeButton_->setAutoDefault(false);
    closeButton_->setToolTip(QStringLiteral("Close (Esc)"));
    deleteButton_->setAutoDefault(false);
    deleteButton_->setEnabled(false);
    connect(closeButton_, &QPushButton::clicked, this, &TarnMDBB_Delete::closeWindow);
    connect(deleteButton_, &QPushButton::clicked, this, &TarnMDBB_Delete::deleteTicked);
    connect(model_, &TarnDatabaseFilesModel::tickedCountChanged, this, [this](int ticked) {
        deleteButton_->setEnabled(ticked > 0);
        updateSummary();
    });

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(summary_, 1);
    buttons->addWidget(closeButton_);
    buttons->addWidget(deleteButton_);
    auto* layout = new QVBoxLayout(this);
    auto* intro = new QLabel(
        QStringLiteral("Tick the media indexes and databases to move to the Trash. The editing "
                       "system builds new ones from the media of their folders."),
        this);
    intro->setWordWrap(true);
    layout->addWidget(intro);
    layout->addWidget(table_, 1);
    layout->addLayout(buttons);
    updateSummary();
}

TarnMDBB_Delete::~TarnMDBB_Delete() = default;

void TarnMDBB_Delete::setVolumes(const QStringList& volumes) {
    volumes_ = volumes;
}

bool TarnMDBB_Delete::showWindow(QWidget* mainWindow) {
    if (TarnSheets::refuse(mainWindow)) return false;
    refresh();
    if (mainWindow && isVisible()) return true;
    TarnSheets::begin(this, mainWindow);
    return true;
}

void TarnMDBB_Delete::closeWindow() {
    reject();
}

void TarnMDBB_Delete::refresh() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    model_->setFiles(volumes_.isEmpty() ? TarnDatabaseFiles::listMountedVolumes()
                                        : TarnDatabaseFiles::list(volumes_));
    QApplication::restoreOverrideCursor();
    updateSummary();
}

void TarnMDBB_Delete::deleteTicked() {
    const QList<TarnDatabaseFiles::Entry> ticked = model_->tickedFiles();
    if (ticked.isEmpty()) {
        QApplication::beep();
        return;
    }
    // Nothing is deleted without this answer.
    if (TarnAlert::ShowDialog_with_YesNo(TarnDatabaseFiles::confirmationText(ticked.size()),
                                         TarnDatabaseFiles::confirmationDetail()) !=
        TarnAlert::kFirstButton)
        return;
    const TarnDatabaseFiles::Result result = TarnDatabaseFiles::moveToTrash(ticked);
    refresh();
    QString news = QStringLiteral("%1 moved to the Trash").arg(result.deleted);
    if (result.missing) news += QStringLiteral(", %1 already gone").arg(result.missing);
    if (result.failed) news += QStringLiteral(", %1 failed (see the log)").arg(result.failed);
    updateSummary(news);
    emit filesDeleted(result);
}

void TarnMDBB_Delete::updateSummary(const QString& news) {
    QString text = QStringLiteral("%1 database files, %2 ticked")
                       .arg(model_->rowCount())
                       .arg(model_->tickedCount());
    if (!news.isEmpty()) text += QStringLiteral(" (%1)").arg(news);
    summary_->setText(text);
}
