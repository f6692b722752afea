#pragma once

#include <QByteArray>
#include <QString>

#include "items/TarnDatabaseItem.h"

// Reader of a media folder's file index ("msmFMID.pmr", "amaFMID.pmr"): a
// 12-byte header (magic 1961, UID size in 32-bit words, entry count) and the
// entries back to back, each naming one media file of the folder with its file
// and material identifiers. The magic tells the byte order: read little-endian
// it is 1961; the bytes 00 00 07 A9 mark a big-endian file, whose 16- and
// 32-bit fields are swapped on reading. Identifiers are copied as stored.
//
// The file is read into memory at once and walked front to back, once.
class PMRFile {
  public:
    PMRFile() = default;

    // Reads the whole file and its header. True when the header was
    // recognised; a missing file, one shorter than 30 bytes or an unknown
    // magic leaves ItemsCount() at 0.
    bool dataWithContentsOfURL(const QString& path);
    // The same for bytes already in memory.
    bool dataWithBytes(QByteArray data);

    // Fills `item` from the next entry and returns it, or returns null when
    // there is no further valid entry. An entry that does not fit ends the
    // reading for good: every later call returns null too.
    TarnItemPtr FillItem(TarnItemPtr item);

    // Entries claimed by the header (0 when the file could not be read).
    quint32 ItemsCount() const { return itemsCount_; }
    // UID size from the header, in 32-bit words: 8 (UMIDs) or 2 (short form).
    quint32 UUIDlength() const { return uuidLength_; }
    bool usebyteswap() const { return useByteSwap_; }
    // Offset of the next entry; 0 until reading starts.
    quint32 position() const { return position_; }

  private:
    quint32 readU32(qsizetype offset) const;
    quint16 readU16(qsizetype offset) const;

    QByteArray filedata_;
    quint32 uuidLength_ = 0;
    quint32 position_ = 0;
    quint32 itemsCount_ = 0;
    bool useByteSwap_ = false;
    bool stopped_ = false;
};
