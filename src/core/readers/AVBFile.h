#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include "items/TarnDatabaseItem.h"

// Reader of an Avid bin (".avb") for one purpose: the short identifiers of the
// media files the bin references. It does not parse the bin's objects; after
// checking the header it scans the bytes for the media reference marker
// ("LMSM" with the word 0x0202 eight bytes on) and takes the 8 bytes that follow
// as bytes 16..23 of the referenced file's package UMID.
class AVBFile {
  public:
    AVBFile() = default;

    // Reads the whole file: true when it is at least 119 bytes long and starts
    // with 06 00 "Domain" "DJBO". Logs "Opened avid BIN <path>" on success.
    bool dataWithContentsOfURL(const QString& path);
    // The same check for bytes already in memory (nothing is logged).
    bool dataWithBytes(QByteArray data);

    // One new item per referenced file, holding only the short identifier,
    // in order of first reference; empty when the bin references nothing.
    // References to the same file give one item (see the .cpp).
    QList<TarnItemPtr> getUIDS() const;

    // Always empty: writes a dump of the bin's chunk structure to the log.
    QList<TarnItemPtr> getAMAUIDS() const;

    // The older scan: like getUIDS, and marks linked media (a folder name
    // starting with "AMA ") with DB_isAMA; logs every hit. Kept for
    // diagnostics; nothing calls it in the normal flow.
    QList<TarnItemPtr> getAMAUIDSold() const;

  private:
    QByteArray filedata_;
};
