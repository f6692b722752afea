#pragma once

#include <QByteArray>
#include <QVariantHash>

#include <cstdio>

#include "readers/TarnAvidMXFInfo.h"
#include "readers/TarnMediaReader.h"

// Reader of an Avid MXF OP-Atom media file: keeps the clip name, the project
// and the two UMIDs of the file and maps them onto a media item.
//
// A file that cannot be read as OP-Atom still opens successfully, with
// nothing read: the item then gets no names and all-zero identifiers, which
// the item judges itself.
class TarnMXF : public TarnMediaReader {
  public:
    unsigned getType() const override { return 4; }
    unsigned capabilities() const override { return kAddInfoToItem; }
    // False only when the file cannot be opened; the indicator is not used.
    bool openFile(const QString& path, TarnProgressIndicator* indicator) override;
    // Name in bin, project and both identifiers (in the system's byte order).
    void addInfoToItem(TarnDatabaseItem* item) override;

    // A UMID as MXF stores it -> the system's order: bytes 16..19 reversed,
    // 20..21 and 22..23 swapped, the rest unchanged. Anything but 32 bytes
    // gives 32 zero bytes.
    static QByteArray swapUUIDfromMXFtoTarn(const QByteArray& mxfUmid);

    // What the last open read: "clipname", "project" (QString), "fileUID",
    // "matUID" (32 QByteArray bytes as stored); empty after a failed read.
    const QVariantHash& MXFinfo() const { return MXFinfo_; }

  private:
    FILE* file_ = nullptr;  // open only while the info reader runs
    TarnAvidMXFInfo::Info info_;
    QVariantHash MXFinfo_;
};
