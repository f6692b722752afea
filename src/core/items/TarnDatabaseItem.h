#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

// A rate as stored by the readers: numerator over denominator.
struct TarnRate {
    quint32 numerator = 0;
    quint32 denominator = 0;
    friend bool operator==(const TarnRate&, const TarnRate&) = default;
};

// The one record of the media database: one media file of the editing system
// (an MXF or OMF essence file, an AMA link, or a file that the media index
// does not list).
//
// Identity is the short identifier: bytes 16..23 of the file package UMID. The
// UMIDs are kept in the system's own byte order, in which the 8 bytes at 16..23
// are the little-endian fields of a GUID (MXF stores them big-endian; the
// readers convert).
//
// A record is set up on a scanner thread and published to the database under
// its lock; afterwards the flags that actions and re-validation change are
// atomics, the rest is read-only.
class TarnDatabaseItem {
  public:
    static constexpr int kUIDBytes = 32;

    TarnDatabaseItem();
    TarnDatabaseItem(const TarnDatabaseItem&) = delete;
    TarnDatabaseItem& operator=(const TarnDatabaseItem&) = delete;

    // Project-name constants.
    static QString GetProjectNameUnmanaged();  // "_00_TRN_UNMANAGED_FILES"
    static QString GetProjectNameEmpty();      // "_00_TRN_EMPTY_PROJECT_NAME"
    static QString GetProjectNameNull();       // "_00_TRN_NULL_PROJECT_NAME"
    // The kind word of a usage code ("PRECOMP", "IMPORTED", ...; "" for others).
    static QString kindForUsageCode(qint32 usageCode);

    // Builds the record from one entry of a media index file ("msmFMID.pmr").
    // Does nothing unless uidSize is 2 or 8 and there are bytes. A truncated or
    // inconsistent entry ends the parse at the first field that does not fit.
    void setupWithPmrBytes(const void* bytes, qsizetype length, quint32 uidSize, bool useByteSwap);
    // Builds the record for a file found on disk that no index lists.
    void setupWithUnrefFile(const QString& folderPath, const QString& clipname);
    // Places an index entry in its media folder: DB_itemPath = folder + "/" +
    // DB_ClipName, looked up in the open folder dirFd (see validatePathAt).
    // A name that is no plain file name (see isPlainFileName) never becomes
    // a path: the item stays as the index describes it, as a file that does
    // not exist with a non-portable name, and the log says why.
    void placeInFolder(const QString& folderPath, int dirFd);
    // A name that stays inside its folder: not empty, not "." or "..", and
    // without a separator ("/", or "\" of other systems).
    static bool isPlainFileName(const QString& name);
    // Identifiers of 8 or 32 bytes from a reader; another length only records
    // the size (in 32-bit words) and copies nothing.
    void setFileUIDWithNSData(const QByteArray& data);
    void setMaterialUIDWithNSData(const QByteArray& data);

    // Looks the file up on disk: existence, size, creation date, the AMA
    // fallback (path + ".aaf") and the portable-name check.
    void validatePath();
    // The same check with the file looked up by name in an open folder
    // (dirFd), which spares the kernel a walk of the full path for every
    // file of a media folder. DB_itemPath must already be that folder's path
    // plus name; without a folder or a name it is validatePath().
    void validatePathAt(int dirFd, const QString& name);
    // Completes an index record from its own media file (MXF only).
    void addinfoToItemFromCorrespondingFile();
    void checkForAudioTypeByExtension();
    bool checkUUID();

    QString getFileUIDString() const;
    QString getMaterialUIDString() const;
    // "{ xxxxxxxx-...-xxxxxxxx }" for 32-byte identifiers, "{ 16 hex digits }"
    // of bytes 16..23 otherwise; null for a null buffer.
    QString getStringForUID(const quint8* uid) const;

    QString get_DB_ProjectName() const;
    void DB_setDate(const QDateTime& date);
    QString DB_Date_String() const;

    quint32 hash() const;
    bool isEqual(const TarnDatabaseItem* other) const;
    bool isEqualByUUID(const TarnDatabaseItem* other) const;
    bool isLessByUUID(const TarnDatabaseItem* other) const;

    QString description() const;

    void setFrameRateNumerator(quint32 numerator, quint32 denominator);
    void setSampleRateNumerator(quint32 numerator, quint32 denominator);
    TarnRate DB_framerate() const;
    TarnRate DB_samplerate() const;

    quint8* DB_filePackageUID() { return filePackageUID; }
    const quint8* DB_filePackageUID() const { return filePackageUID; }
    quint8* DB_materialPackageUID() { return materialPackageUID; }
    const quint8* DB_materialPackageUID() const { return materialPackageUID; }
    char* DB_CompressionFourCC() { return CompressionFourCC; }
    const char* DB_CompressionFourCC() const { return CompressionFourCC; }
    // The four-character code as a 32-bit number in host order ("_AUD" is 0x4455415F).
    quint32 compressionCode() const;
    bool isAudio() const;  // the code reads "_AUD"

    // The short identifier: bytes 16..23 of the file package UMID.
    quint64 shortFileUID() const;

    quint8 filePackageUID[kUIDBytes];
    quint8 materialPackageUID[kUIDBytes];
    char CompressionFourCC[4];

    std::atomic<bool> DB_isValid_initial{true};
    std::atomic<bool> DB_isValid{true};
    std::atomic<bool> DB_FileExists{false};
    bool DB_isAMA = false;
    bool DB_isGoodUUID = true;
    bool DB_isPortableFilename = true;
    bool DB_isReferenced = false;
    quint32 DB_SizeofUID = 0;
    qint32 DB_usageCode = 0;
    quint32 DB_DIDResolutionID = 0;
    quint32 DB_bits = 0;
    QString DB_ClipName;
    QString DB_ProjectName;  // null: no project; empty: an empty one
    QString DB_itemPath;     // absolute path; null: none
    std::optional<quint64> DB_filesize;
    QString DB_NameInBin;
    QDateTime DB_Date;
    QString DB_CompressionString;

    // The items layer lies below the readers: the reader of an item's own
    // media file (used by setupWithUnrefFile and
    // addinfoToItemFromCorrespondingFile) is installed from above, by the
    // database before it scans. Without one, no media file is read.
    using OwnFileReader = void (*)(TarnDatabaseItem& item);
    static void setOwnFileReader(OwnFileReader reader);

  private:
    void validateLookingUp(int dirFd, const QString& lookup);
    bool readsOwnMxfFile() const;
    void readOwnMediaFile();

    std::atomic<quint64> framerate_{0};
    std::atomic<quint64> samplerate_{0};
    mutable QString dateString_;
    mutable std::atomic<bool> dateStringMade_{false};
};

using TarnItemPtr = std::shared_ptr<TarnDatabaseItem>;
