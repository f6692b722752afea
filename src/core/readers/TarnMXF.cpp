#include "readers/TarnMXF.h"

#include <fcntl.h>
#include <unistd.h>

#include "items/TarnDatabaseItem.h"
#include "log/xConsole.h"
#include "support/TarnFileName.h"
#include "support/TarnRegularFile.h"

bool TarnMXF::openFile(const QString& path, TarnProgressIndicator* indicator) {
    (void)indicator;
    TARN_LOG(QStringLiteral("MXF file : open"));
    MXFinfo_.clear();

    // The platform file handle (a regular file only: never a FIFO or a device),
    // then a stdio stream over its descriptor. From here on the stream owns
    // the descriptor: fclose closes both, once.
    int fd = TarnRegularFile::openForReading(path, nullptr);
    // A folder under the name opens too (that never waits), and the info
    // reader then finds no file in it.
    if (fd < 0)
        fd = ::open(TarnFileName::encode(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return false;
    file_ = fdopen(fd, "rb");
    if (!file_) {
        ::close(fd);
        return false;
    }

    const int status = TarnAvidMXFInfo::read(file_, &info_, 1);
    fclose(file_);
    file_ = nullptr;

    if (status != TarnAvidMXFInfo::kOK) {
        switch (status) {
            case TarnAvidMXFInfo::kNotOPAtom:
                TARN_LOG(QStringLiteral("File is not OP-Atom"));
                break;
            case TarnAvidMXFInfo::kHeaderPartitionFailed:
                TARN_LOG(QStringLiteral("Failed to read header partition"));
                break;
            case TarnAvidMXFInfo::kOpenFailed:
                TARN_LOG(QStringLiteral("Failed to open file"));
                break;
            default:
                TARN_LOG(QStringLiteral("Failed to read info"));
                break;
        }
        TarnAvidMXFInfo::free(&info_);
        return true;  // counts as open, with nothing read
    }

    MXFinfo_.reserve(5);
    if (info_.clipName)
        MXFinfo_.insert(QStringLiteral("clipname"), QString::fromStdString(*info_.clipName));
    if (info_.projectName)
        MXFinfo_.insert(QStringLiteral("project"), QString::fromStdString(*info_.projectName));
    MXFinfo_.insert(
        QStringLiteral("fileUID"),
        QByteArray(reinterpret_cast<const char*>(info_.fileSourcePackageUID.data()), 32));
    MXFinfo_.insert(QStringLiteral("matUID"),
                    QByteArray(reinterpret_cast<const char*>(info_.materialPackageUID.data()), 32));
    TarnAvidMXFInfo::free(&info_);
    return true;
}

void TarnMXF::addInfoToItem(TarnDatabaseItem* item) {
    if (!item) return;
    // Absent keys give null texts and all-zero identifiers.
    item->DB_NameInBin = MXFinfo_.value(QStringLiteral("clipname")).toString();
    item->DB_ProjectName = MXFinfo_.value(QStringLiteral("project")).toString();
    item->setFileUIDWithNSData(
        swapUUIDfromMXFtoTarn(MXFinfo_.value(QStringLiteral("fileUID")).toByteArray()));
    item->setMaterialUIDWithNSData(
        swapUUIDfromMXFtoTarn(MXFinfo_.value(QStringLiteral("matUID")).toByteArray()));
}

// The material number of a basic UMID begins with a GUID's first three fields;
// MXF stores them big-endian, the media database, index files and bins
// little-endian.
QByteArray TarnMXF::swapUUIDfromMXFtoTarn(const QByteArray& mxfUmid) {
    if (mxfUmid.size() != 32) return QByteArray(32, '\0');
    QByteArray out = mxfUmid;
    for (int i = 0; i < 4; ++i) out[16 + i] = mxfUmid[19 - i];
    out[20] = mxfUmid[21];
    out[21] = mxfUmid[20];
    out[22] = mxfUmid[23];
    out[23] = mxfUmid[22];
    return out;
}
