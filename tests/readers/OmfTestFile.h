#pragma once

#include <QTemporaryDir>

#include <memory>

#include "FixtureFiles.h"
#include "ItemFacts.h"
#include "MdbWriter.h"
#include "OmfSeeds.h"
#include "readers/TarnOMFI.h"

// Writes container bytes to a temporary file and opens them with the OMF reader.
struct OmfTestFile {
    bool open(const QByteArray& bytes, const char* name = "msmMMOB.mdb",
              TarnProgressIndicator* indicator = nullptr) {
        path = dir.filePath(QString::fromLatin1(name));
        fixtures::writeFile(path, bytes);
        reader = std::make_unique<TarnOMFI>();
        return reader->openFile(path, indicator);
    }

    // What an item carrying the two short identifiers gets from the container.
    QString complete(quint64 fileShortUID, quint64 materialShortUID) {
        TarnDatabaseItem item;
        for (int i = 0; i < 8; ++i) {
            item.DB_filePackageUID()[16 + i] = quint8(fileShortUID >> (8 * i));
            item.DB_materialPackageUID()[16 + i] = quint8(materialShortUID >> (8 * i));
        }
        reader->addInfoToItem(&item);
        return omfFacts(item);
    }
    QString complete(const fixtures::MdbClip& clip) {
        return complete(clip.fileShortUID, clip.materialShortUID);
    }

    QTemporaryDir dir;
    QString path;
    std::unique_ptr<TarnOMFI> reader;
};
