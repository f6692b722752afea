#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <cstring>

#include <memory>

#include "FixtureFiles.h"
#include "MdbWriter.h"
#include "items/TarnDatabaseItem.h"
#include "readers/TarnOMFI.h"

// Writes container bytes to a temporary file and opens them with the OMF reader.
class OmfTestFile {
  public:
    bool open(const QByteArray& bytes, const char* name = "msmMMOB.mdb",
              TarnProgressIndicator* indicator = nullptr) {
        path = dir.filePath(QString::fromLatin1(name));
        fixtures::writeFile(path, bytes);
        reader = std::make_unique<TarnOMFI>();
        return reader->openFile(path, indicator);
    }

    // An item carrying the two short identifiers, completed from the container.
    TarnItemPtr complete(quint64 fileShortUID, quint64 materialShortUID) {
        auto item = std::make_shared<TarnDatabaseItem>();
        for (int i = 0; i < 8; ++i) {
            item->filePackageUID[16 + i] = quint8(fileShortUID >> (8 * i));
            item->materialPackageUID[16 + i] = quint8(materialShortUID >> (8 * i));
        }
        reader->addInfoToItem(item.get());
        return item;
    }

    TarnItemPtr complete(const fixtures::MdbClip& clip) {
        return complete(clip.fileShortUID, clip.materialShortUID);
    }

    QTemporaryDir dir;
    QString path;
    std::unique_ptr<TarnOMFI> reader;
};

// A picture clip and an audio clip with everything set.
inline fixtures::MdbClip pictureClip(quint64 n) {
    fixtures::MdbClip c;
    c.fileShortUID = 0x1000000000000000ull + n;
    c.materialShortUID = 0x2000000000000000ull + n;
    c.clipName = QStringLiteral("Shot %1").arg(n);
    c.project = QStringLiteral("Feature");
    c.usageCode = 2;
    c.frameRate = {25, 1};
    c.resolutionID = 1237;
    std::memcpy(c.fourCC, "AVdn", 4);
    c.sampleRate = {25, 1};
    c.bits = 8;
    return c;
}

inline fixtures::MdbClip audioClip(quint64 n) {
    fixtures::MdbClip c = pictureClip(n);
    c.audio = true;
    c.clipName = QStringLiteral("Sound %1").arg(n);
    c.sampleRate = {48000, 1};
    c.bits = 24;
    return c;
}
