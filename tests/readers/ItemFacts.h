#pragma once

#include <QStringList>

#include "MxfWriter.h"
#include "QtPrinters.h"
#include "items/TarnDatabaseItem.h"
#include "readers/TarnMXF.h"

// What the readers gave an item, as text that compares in one go.

inline QString textOrNull(const QString& text) {
    return text.isNull() ? "(null)" : text;
}

// Clip name, project and the file and material package identifiers in hex.
inline QStringList mxfFacts(const TarnDatabaseItem& item) {
    const auto hex = [](const quint8* uid) {
        return QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(uid), 32).toHex());
    };
    return {textOrNull(item.DB_NameInBin), textOrNull(item.DB_ProjectName),
            hex(item.DB_filePackageUID()), hex(item.DB_materialPackageUID())};
}

// The facts an item should get from the file of `clip` that holds `fileUMID`,
// the UMIDs turned into the system's order.
inline QStringList mxfFacts(const fixtures::MxfClip& clip, const QByteArray& fileUMID) {
    const auto hex = [](const QByteArray& umid) {
        return QString::fromLatin1(TarnMXF::swapUUIDfromMXFtoTarn(umid).toHex());
    };
    return {textOrNull(clip.clipName), textOrNull(clip.projectName), hex(fileUMID),
            hex(clip.materialUMID)};
}

// Name, project, usage code, compression, resolution, frame rate, sample rate
// and bits from a media database.
inline QString omfFacts(const TarnDatabaseItem& item) {
    const auto rate = [](TarnRate r) {
        return QString("%1/%2").arg(r.numerator).arg(r.denominator);
    };
    const QByteArray fourCC = QByteArray(item.DB_CompressionFourCC(), 4).replace('\0', '.');
    return QStringList{textOrNull(item.DB_NameInBin),
                       textOrNull(item.DB_ProjectName),
                       QString::number(item.DB_usageCode),
                       QString::fromLatin1(fourCC),
                       QString::number(item.DB_DIDResolutionID),
                       rate(item.DB_framerate()),
                       rate(item.DB_samplerate()),
                       QString::number(item.DB_bits)}
        .join(" | ");
}
