#include "readers/TarnMediafile.h"

#include "items/TarnDatabaseItem.h"
#include "readers/TarnAAF.h"
#include "readers/TarnMXF.h"
#include "readers/TarnOMFI.h"
#include "support/TarnFileName.h"

TarnMediafile::TarnMediafile() = default;

void TarnMediafile::SetDataSource(std::unique_ptr<TarnMediaReader> reader) {
    dataSource_ = std::move(reader);
    flags_ = dataSource_ ? dataSource_->capabilities() : 0u;
}

bool TarnMediafile::openFile(const QString& path, TarnProgressIndicator* indicator) {
    isOpen_ = false;
    dataSource_.reset();  // dropped directly: the flags stay until a new reader is set
    type_ = 0;
    fileUrl_ = path;
    if (path.isEmpty()) return isOpen_;

    const QString ext = TarnFileName::extension(path);
    auto is = [&](const char* e) {
        return ext.compare(QLatin1String(e), Qt::CaseInsensitive) == 0;
    };
    std::unique_ptr<TarnMediaReader> reader;
    if (is("mdb")) {
        reader = std::make_unique<TarnOMFI>();
    } else if (is("mxf")) {
        reader = std::make_unique<TarnMXF>();
    } else if (is("omf") || is("aif") || is("wav")) {
        reader = std::make_unique<TarnOMFI>();
    } else if (is("aaf")) {
        reader = std::make_unique<TarnAAF>();
    }
    if (!reader) return false;
    SetDataSource(std::move(reader));

    isOpen_ = dataSource_->openFile(path, indicator);
    type_ = isOpen_ ? dataSource_->getType() : 0;
    return isOpen_;
}

void TarnMediafile::addInfoToItem(TarnDatabaseItem* item) {
    if (!dataSource_ || !item || !(flags_ & TarnMediaReader::kAddInfoToItem)) return;
    dataSource_->addInfoToItem(item);
}

quint64 TarnMediafile::getMDBCompositionsCount() const {
    if (!dataSource_ || !isOpen_) return 0;
    return dataSource_->getMDBCompositionsCount().value_or(0);
}

void TarnMediafile::readItemsOwnFile(TarnDatabaseItem& item) {
    TarnMediafile mediafile;
    mediafile.openFile(item.DB_itemPath, nullptr);
    mediafile.addInfoToItem(&item);
}
