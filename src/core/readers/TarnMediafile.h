#pragma once

#include <QString>

#include <memory>

#include "readers/TarnMediaReader.h"

// The front every caller uses for a media file: it picks a reader by the
// file's extension (case-insensitive), opens the file through it and forwards
// the request to copy what was read into an item.
//   "mdb", "omf", "aif", "wav" -> OMF/Bento reader (type 1)
//   "mxf"                      -> MXF reader (type 4)
//   "aaf"                      -> AAF reader, which never succeeds (type 3)
class TarnMediafile {
  public:
    TarnMediafile();

    // Stores the reader and takes its capability flags.
    void SetDataSource(std::unique_ptr<TarnMediaReader> reader);
    TarnMediaReader* dataSource() const { return dataSource_.get(); }

    bool openFile(const QString& path, TarnProgressIndicator* indicator);
    // Forwarded only when there is a reader that answers it.
    void addInfoToItem(TarnDatabaseItem* item);
    // Opens the item's own file and copies what it says into the item: the
    // reader the items layer is given (TarnDatabaseItem::setOwnFileReader).
    static void readItemsOwnFile(TarnDatabaseItem& item);
    // The reader's count, or 0 without a reader, after a failed open, or when
    // the reader has none.
    quint64 getMDBCompositionsCount() const;

    unsigned type() const { return type_; }
    unsigned capabilityFlags() const { return flags_; }
    bool isOpen() const { return isOpen_; }
    QString FileUrl() const { return fileUrl_; }

  private:
    unsigned type_ = 0;
    std::unique_ptr<TarnMediaReader> dataSource_;
    unsigned flags_ = 0;
    bool isOpen_ = false;
    QString fileUrl_;
};
