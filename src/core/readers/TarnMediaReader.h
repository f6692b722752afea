#pragma once

#include <QString>

#include <optional>

class TarnDatabaseItem;
class TarnProgressIndicator;

// What every media file reader answers. Optional operations are announced by
// `capabilities()`, so the front can tell which ones a reader offers.
class TarnMediaReader {
  public:
    enum Capability : unsigned {
        kAddInfoToItem = 1u << 0,
    };

    virtual ~TarnMediaReader() = default;

    // 1 OMF/MDB, 3 AAF, 4 MXF.
    virtual unsigned getType() const = 0;
    virtual bool openFile(const QString& path, TarnProgressIndicator* indicator) = 0;
    virtual unsigned capabilities() const { return 0; }
    virtual void addInfoToItem(TarnDatabaseItem* item) { (void)item; }
    // Only the OMF reader knows a composition count.
    virtual std::optional<quint64> getMDBCompositionsCount() const { return std::nullopt; }
};
