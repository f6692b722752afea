// The OMF Bento reader on arbitrary bytes: the input becomes a media database
// file, which is opened and asked about a few items.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QtEndian>

#include <cstddef>
#include <cstdint>

#include "OmfSeeds.h"
#include "items/TarnDatabaseItem.h"
#include "log/xConsole.h"
#include "readers/TarnOMFI.h"

namespace {

const QString& inputPath() {
    // A memory-backed folder when there is one: rewriting a disk file for every
    // input would wait on its writeback.
    static const QDir folder =
        QDir(QStringLiteral("/dev/shm")).exists() ? QDir(QStringLiteral("/dev/shm")) : QDir::temp();
    static const QString path =
        folder.filePath(QStringLiteral("fuzz_omf_%1.mdb").arg(QCoreApplication::applicationPid()));
    return path;
}

void completeItem(TarnOMFI& reader, quint64 fileKey, quint64 materialKey) {
    TarnDatabaseItem item;
    qToLittleEndian<quint64>(fileKey, item.filePackageUID + 16);
    qToLittleEndian<quint64>(materialKey, item.materialPackageUID + 16);
    reader.addInfoToItem(&item);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const QList<fixtures::MdbClip> clips = fixtures::omfSeedClips();
    {
        QFile file(inputPath());
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return 0;
        file.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    TarnOMFI reader;
    reader.openFile(inputPath(), nullptr);
    for (const fixtures::MdbClip& clip : clips) {
        completeItem(reader, clip.fileShortUID, clip.materialShortUID);
    }
    // Keys taken from the input itself, for tables the fuzzer made up.
    if (size >= 16) {
        completeItem(reader, qFromLittleEndian<quint64>(data),
                     qFromLittleEndian<quint64>(data + 8));
    }
    // The console keeps its text in memory: clear it now and then.
    static unsigned runs = 0;
    if (++runs % 4096 == 0) xConsole::sharedInstance()->Reset();
    return 0;
}
