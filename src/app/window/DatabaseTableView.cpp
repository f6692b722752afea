#include "window/DatabaseTableView.h"

#include <QHash>
#include <QHeaderView>
#include <QKeyEvent>

#include <algorithm>

#include "models/DatabaseTableModel.h"
#include "window/ColumnMenu.h"
#include "window/PreviewPopover.h"

DatabaseTableView::DatabaseTableView(DatabaseTableModel* model, QWidget* parent)
    : QTableView(parent), model_(model) {
    setObjectName(QStringLiteral("DatabaseTable"));
    setAccessibleName(QStringLiteral("DatabaseTable"));
    setAccessibleDescription(QStringLiteral("Media files in the database"));
    setModel(model_);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setAlternatingRowColors(true);
    setWordWrap(false);
    setShowGrid(false);
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    // Files go out to other programs, copied; nothing comes in.
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setDefaultDropAction(Qt::CopyAction);

    // Rows all have one height, so 100,000 of them lay out at once.
    QHeaderView* rows = verticalHeader();
    rows->hide();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(fontMetrics().height() + 6);

    QHeaderView* header = horizontalHeader();
    header->setSectionsMovable(false);
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setSortIndicator(-1, Qt::AscendingOrder);
    header->setHighlightSections(false);
    header->setStretchLastSection(true);
    header->setMinimumSectionSize(fontMetrics().horizontalAdvance(QLatin1Char('M')) * 2);
    connect(header, &QHeaderView::sectionClicked, this, &DatabaseTableView::headerClicked);

    setInitialWidths();
    headerMenu_ =
        new ColumnMenu(this, DatabaseTableModel::IdentifierRole, DatabaseTableModel::TitleRole);
    headerMenu_->setupHeaderMenu();
    preview_ = new PreviewPopover(parent ? parent : this);
}

// Wide enough for a typical media file's texts (or the header's title, when
// that is wider); the user resizes from there.
void DatabaseTableView::setInitialWidths() {
    const QHash<TarnColumn, const char*> samples = {
        {TarnColumn::Icon, ""},
        {TarnColumn::Filename, "Harbour_Dusk_V01.5F3A1C04.mxf"},
        {TarnColumn::Clipname, "Harbour wide take 12"},
        {TarnColumn::Path, "/Volumes/Media/Avid MediaFiles/"},
        {TarnColumn::Project, "Harbour Project"},
        {TarnColumn::FilePackageUID, "{ 060a2b34-01010105-01010f20-13000000-00000000 }"},
        {TarnColumn::MaterialPackageUID, "{ 060a2b34-01010105-01010f20-13000000-00000000 }"},
        {TarnColumn::Exists, "AMA link"},
        {TarnColumn::Compression, "DNxHD 1080p 145"},
        {TarnColumn::Framerate, "29.97fps"},
        {TarnColumn::Samplerate, "44.1 kHz"},
        {TarnColumn::Bits, "24 bit"},
        {TarnColumn::Kind, "IMPORTED"},
        {TarnColumn::Size, "1000.00 MB"},
        {TarnColumn::Date, "23 Nov 2026 19:13:49"},
        {TarnColumn::Hash, "5f3a1c04"},
        {TarnColumn::SourceFileID, "Source File ID"},
        {TarnColumn::SourceTapeID, "Source Tape ID"}};
    const QFontMetrics header(horizontalHeader()->font());
    const int padding = fontMetrics().horizontalAdvance(QLatin1Char('M'));
    for (int section = 0; section < model_->columnCount(); ++section) {
        const TarnColumn column = DatabaseTableModel::columnAt(section);
        if (column == TarnColumn::Icon) {
            setColumnWidth(section,
                           iconSize().isValid() ? iconSize().width() + padding : 16 + padding);
            continue;
        }
        const int text = fontMetrics().horizontalAdvance(QLatin1String(samples.value(column, "")));
        const int title = header.horizontalAdvance(TarnColumns::title(column));
        setColumnWidth(section, std::max(text, title) + padding);
    }
}

void DatabaseTableView::updatePreviewWith(const TarnItemPtr& item) {
    preview_->updateContents(previewText(item), previewWidth());
}

QString DatabaseTableView::previewText(const TarnItemPtr& item) const {
    return item ? item->description() : QStringLiteral("no item selected");
}

int DatabaseTableView::previewWidth() const {
    return parentWidget() ? parentWidget()->width() : 0;
}

void DatabaseTableView::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space || event->modifiers() != Qt::NoModifier) {
        QTableView::keyPressEvent(event);
        return;
    }
    if (preview_->isShown()) {
        preview_->HidePopover();
    } else {
        preview_->ShowPopover(previewText(lastitem_), previewWidth());
    }
}

QList<QPair<int, int>> DatabaseTableView::selectedRowSpans() const {
    QList<QPair<int, int>> spans;
    if (!selectionModel()) return spans;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        if (range.isValid()) spans.append({range.top(), range.bottom()});
    }
    std::sort(spans.begin(), spans.end());
    QList<QPair<int, int>> merged;
    for (const auto& span : spans) {
        if (!merged.isEmpty() && span.first <= merged.last().second + 1) {
            merged.last().second = std::max(merged.last().second, span.second);
        } else {
            merged.append(span);
        }
    }
    return merged;
}

QList<TarnItemPtr> DatabaseTableView::getSelectedItemsArray() const {
    QList<qsizetype> rows;
    for (const auto& span : selectedRowSpans()) {
        for (int row = span.first; row <= span.second; ++row) rows.append(row);
    }
    return model_->snapshot().itemsOfRows(rows);
}

quint64 DatabaseTableView::calculateSelectedSize() const {
    quint64 size = 0;
    for (const auto& span : selectedRowSpans())
        size += model_->snapshot().sizeOfRows(span.first, span.second);
    return size;
}

int DatabaseTableView::lastSelectedRow() const {
    if (!selectionModel() || !selectionModel()->hasSelection()) return -1;
    const QModelIndex current = selectionModel()->currentIndex();
    if (current.isValid() && selectionModel()->isRowSelected(current.row())) return current.row();
    const auto spans = selectedRowSpans();
    return spans.isEmpty() ? -1 : spans.last().second;
}

void DatabaseTableView::resetSortDescriptors() {
    descriptors_.clear();
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
}

void DatabaseTableView::showSortDescriptors(const QList<TarnSortDescriptor>& descriptors) {
    descriptors_ = descriptors;
    if (descriptors_.isEmpty()) {
        horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
        return;
    }
    const auto column = TarnColumns::fromSortKey(descriptors_.first().key);
    horizontalHeader()->setSortIndicator(
        column ? DatabaseTableModel::sectionOf(*column) : -1,
        descriptors_.first().ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void DatabaseTableView::headerClicked(int section) {
    const QString key = TarnColumns::sortKey(DatabaseTableModel::columnAt(section));
    if (key.isNull()) {
        // Not a sortable column: the header keeps showing the current order.
        showSortDescriptors(descriptors_);
        return;
    }
    TarnSortDescriptor clicked{key, true};
    if (!descriptors_.isEmpty() && descriptors_.first().key == key) {
        clicked.ascending = !descriptors_.first().ascending;
    }
    QList<TarnSortDescriptor> next{clicked};
    for (const TarnSortDescriptor& d : std::as_const(descriptors_)) {
        if (d.key != key) next.append(d);
    }
    showSortDescriptors(next);
    emit sortDescriptorsDidChange(next);
}
