#include "items/TarnDatabaseItem.h"

#include <QLocale>
#include <QMutex>
#include <QStringBuilder>
#include <QTimeZone>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "items/TarnFileSize.h"
#include "log/xConsole.h"
#include "support/TarnFileName.h"
#include "support/TarnPreferences.h"

namespace {

// The first four bytes of every SMPTE UMID: the universal label prefix.
constexpr quint8 kUMIDLabel[4] = {0x06, 0x0A, 0x2B, 0x34};

quint32 wordAt(const quint8* p) {
    quint32 w;
    std::memcpy(&w, p, 4);
    return w;
}

// Project names in index files are single bytes; Latin-1 keeps every byte as
// the character of the same code.
QString textFromBytes(const char* p, qsizetype n) {
    return QString::fromLatin1(p, n);
}

// A file name in an index is the name's bytes on disk: decoded losslessly, so
// the path built from it reaches the file (and a byte that is not UTF-8 stays
// visible to the portable-name check).
QString fileNameFromBytes(const char* p, qsizetype n) {
    return TarnFileName::decode(p, n);
}

bool isPortableChar(char16_t c) {
    if (c < 20 || c > 145) return false;
    switch (c) {
        case u'/':
        case u'\\':
        case u'?':
        case u'%':
        case u'*':
        case u'|':
        case u'"':
        case u'<':
        case u'>':
            return false;
        default:
            return true;
    }
}

QDateTime utcDate(qint64 seconds, qint64 nanoseconds) {
    return QDateTime::fromMSecsSinceEpoch(seconds * 1000 + nanoseconds / 1000000, Qt::UTC);
}

// Existence, size and creation date with one system call. The date is kept
// in UTC: a local-time conversion per file would take glibc's time zone lock,
// which the scanner threads would queue on; the display converts.
// Creation date: the birth time where the file system keeps one, else the
// status-change time, else the modification time.
// The file is looked up as `lookup` relative to dirFd (AT_FDCWD for a full
// path). Links are followed.
bool statFile(int dirFd, const QString& lookup, quint64& size, QDateTime& created) {
    // A short ASCII name (nearly every media file's) is its own bytes: it is
    // copied to the stack rather than encoded into a new array.
    char ascii[256];
    QByteArray encoded;
    const char* native = ascii;
    const qsizetype n = lookup.size();
    const auto* units = reinterpret_cast<const char16_t*>(lookup.constData());
    bool plain = n < qsizetype(sizeof ascii);
    for (qsizetype i = 0; plain && i < n; ++i) {
        plain = units[i] < 0x80;
        ascii[i] = char(units[i]);
    }
    if (plain) {
        ascii[n] = 0;
    } else {
        encoded = TarnFileName::encode(lookup);
        native = encoded.constData();
    }
    struct statx sx;
    if (::statx(dirFd, native, 0, STATX_BASIC_STATS | STATX_BTIME, &sx) != 0) {
        struct stat st;
        if (errno != ENOSYS || ::fstatat(dirFd, native, &st, 0) != 0) return false;
        size = quint64(st.st_size);
        created = st.st_ctim.tv_sec != 0 ? utcDate(st.st_ctim.tv_sec, st.st_ctim.tv_nsec)
                                         : utcDate(st.st_mtim.tv_sec, st.st_mtim.tv_nsec);
        return true;
    }
    size = sx.stx_size;
    const statx_timestamp& t = ((sx.stx_mask & STATX_BTIME) && sx.stx_btime.tv_sec != 0)
                                   ? sx.stx_btime
                                   : (sx.stx_ctime.tv_sec != 0 ? sx.stx_ctime : sx.stx_mtime);
    created = utcDate(t.tv_sec, t.tv_nsec);
    return true;
}

// The date in the system's time zone. Qt's own local-time conversion asks the
// C library, which looks at the zone file on disk for every date; the zone,
// looked up once, converts without a system call.
QDateTime localDate(const QDateTime& date) {
    static const QTimeZone zone = QTimeZone::systemTimeZone();
    return zone.isValid() ? date.toTimeZone(zone) : date.toLocalTime();
}

// The date in the user's locale (short date and time). The files of a media
// folder are often made within the same millisecond: the last text made in
// this thread serves an equal date in the same locale.
QString shortDateText(const QDateTime& date) {
    struct Last {
        qint64 msecs = 0;
        QLocale locale;
        QString text;
        bool made = false;
    };
    thread_local Last last;
    const qint64 msecs = date.toMSecsSinceEpoch();
    const QLocale locale;
    if (!last.made || last.msecs != msecs || last.locale != locale) {
        last.text = locale.toString(localDate(date), QLocale::ShortFormat);
        last.msecs = msecs;
        last.locale = locale;
        last.made = true;
    }
    return last.text;
}

}  // namespace

TarnDatabaseItem::TarnDatabaseItem() {
    std::memset(filePackageUID, 0, sizeof filePackageUID);
    std::memset(materialPackageUID, 0, sizeof materialPackageUID);
    std::memset(CompressionFourCC, 0, sizeof CompressionFourCC);
}

QString TarnDatabaseItem::GetProjectNameUnmanaged() {
    return QStringLiteral("_00_TRN_UNMANAGED_FILES");
}
QString TarnDatabaseItem::GetProjectNameEmpty() {
    return QStringLiteral("_00_TRN_EMPTY_PROJECT_NAME");
}
QString TarnDatabaseItem::GetProjectNameNull() {
    return QStringLiteral("_00_TRN_NULL_PROJECT_NAME");
}

QString TarnDatabaseItem::kindForUsageCode(qint32 usageCode) {
    switch (usageCode) {
        case 1:
            return QStringLiteral("PRECOMP");
        case 2:
            return QStringLiteral("UC_SUBCLIP");
        case 3:
            return QStringLiteral("UC_EFFECT");
        case 4:
            return QStringLiteral("UC_GROUP");
        case 5:
            return QStringLiteral("UC_GROUPOOFTER");
        case 6:
            return QStringLiteral("UC_MOTION");
        case 8:
            return QStringLiteral("UC_8");
        case 9:
            return QStringLiteral("UC_PRECOMPUTE_FILE");
        case 15:
            return QStringLiteral("IMPORTED");
        default:
            return QString(QLatin1String(""));
    }
}

void TarnDatabaseItem::setupWithPmrBytes(const void* bytes, qsizetype length, quint32 uidSize,
                                         bool useByteSwap) {
    if ((uidSize != 2 && uidSize != 8) || !bytes || length <= 0) return;
    DB_SizeofUID = uidSize;
    const auto* b = static_cast<const quint8*>(bytes);
    const qsizetype uidBytes = uidSize == 8 ? 32 : 8;
    // A short identifier sits in bytes 16..23 of the 32-byte buffer.
    const qsizetype uidOffset = uidSize == 8 ? 0 : 16;

    // Reads a 16-bit count at p, its bytes swapped when asked.
    auto count16 = [&](qsizetype p) -> quint16 {
        quint16 v;
        std::memcpy(&v, b + p, 2);
        return useByteSwap ? quint16((v >> 8) | (v << 8)) : v;
    };

    qsizetype p = 0;
    do {
        if (p > length) break;
        if (!(p + uidBytes < length)) break;
        std::memcpy(filePackageUID + uidOffset, b + p, uidBytes);
        p += uidBytes;

        if (!(p + 2 < length)) break;
        quint16 nameLength = count16(p);
        if (nameLength == 0 || nameLength > 255 || p + 2 + nameLength >= length) break;
        DB_ClipName = fileNameFromBytes(reinterpret_cast<const char*>(b + p + 2), nameLength);
        p += 2 + nameLength;

        if (!(p + 2 < length)) break;
        quint16 projectLength = count16(p);
        if (projectLength > 64 || p + 2 + projectLength >= length) break;
        if (projectLength > 0) {
            DB_ProjectName = textFromBytes(reinterpret_cast<const char*>(b + p + 2), projectLength);
        }
        p += 2 + projectLength;

        if (!(p + uidBytes < length)) break;
        std::memcpy(materialPackageUID + uidOffset, b + p, uidBytes);
        p += uidBytes;
    } while (p + 3 < length);

    checkForAudioTypeByExtension();
    DB_isReferenced = true;
    DB_isGoodUUID = checkUUID();
}

bool TarnDatabaseItem::isPlainFileName(const QString& name) {
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           !name.contains(QLatin1Char('/')) && !name.contains(QLatin1Char('\\')) &&
           !name.contains(QChar(0));  // the system would end the name there
}

namespace {
// Built at its exact length: the path is kept for the life of the item, and a
// grown string would carry spare capacity for every item.
QString inFolder(const QString& folderPath, const QString& name) {
    const QLatin1StringView slash(folderPath.endsWith(QLatin1Char('/')) ? "" : "/");
    return folderPath % slash % name;
}
}  // namespace

void TarnDatabaseItem::placeInFolder(const QString& folderPath, int dirFd) {
    if (isPlainFileName(DB_ClipName)) {
        DB_itemPath = inFolder(folderPath, DB_ClipName);
        validatePathAt(dirFd, DB_ClipName);
        return;
    }
    // A damaged index can hold any bytes: "..", "../../Avid Projects" or
    // nothing joined to the folder would name a folder outside it, or the
    // media folder itself.
    TARN_LOG(QStringLiteral("**** Warning **** \"%1\" in the media index of %2 is no file name: "
                            "the item has no path")
                 .arg(DB_ClipName, folderPath));
    DB_itemPath = QString();
    validatePath();
    DB_FileExists = false;
    if (!DB_filesize) DB_filesize = 0;
    DB_isPortableFilename = false;
}

void TarnDatabaseItem::setupWithUnrefFile(const QString& folderPath, const QString& clipname) {
    // A folder listing gives plain names; anything else is no file of the folder.
    DB_itemPath = isPlainFileName(clipname) ? inFolder(folderPath, clipname) : QString();
    DB_ClipName = clipname;
    checkForAudioTypeByExtension();
    if (hash() == 0 && readsOwnMxfFile()) readOwnMediaFile();
    if (DB_ProjectName.isNull()) DB_ProjectName = GetProjectNameUnmanaged();
    DB_isReferenced = false;
    DB_isGoodUUID = checkUUID();
}

// The MXF reader runs only for ".mxf" files of at least 1025 bytes (smaller
// ones cannot hold a header partition with packages) and only while the user
// wants media files read ("ScanMXF" = 1). An unlisted file has no size yet when
// it is set up, so the size is taken from the disk then.
bool TarnDatabaseItem::readsOwnMxfFile() const {
    if (DB_itemPath.isEmpty()) return false;
    if (!TarnFileName::hasExtension(DB_itemPath, QLatin1String("mxf"))) return false;
    if (TarnPreferences::shared()->integer(QLatin1String(TarnPreferences::kScanMXF)) != 1)
        return false;
    quint64 size = 0;
    QDateTime created;
    if (DB_filesize) {
        size = *DB_filesize;
    } else if (!statFile(AT_FDCWD, DB_itemPath, size, created)) {
        return false;
    }
    return size >= 1025;
}

namespace {
std::atomic<TarnDatabaseItem::OwnFileReader> ownFileReader{nullptr};
}

void TarnDatabaseItem::setOwnFileReader(OwnFileReader reader) {
    ownFileReader.store(reader);
}

void TarnDatabaseItem::readOwnMediaFile() {
    if (auto reader = ownFileReader.load()) reader(*this);
}

void TarnDatabaseItem::addinfoToItemFromCorrespondingFile() {
    if (!DB_FileExists || DB_itemPath.isEmpty()) return;
    DB_isReferenced = false;
    if (readsOwnMxfFile()) readOwnMediaFile();
}

void TarnDatabaseItem::setFileUIDWithNSData(const QByteArray& data) {
    const auto n = data.size();
    if (n == 32) {
        std::memcpy(filePackageUID, data.constData(), 32);
    } else if (n == 8) {
        std::memcpy(filePackageUID + 16, data.constData(), 8);
    }
    DB_SizeofUID = quint32(n / 4);
}

void TarnDatabaseItem::setMaterialUIDWithNSData(const QByteArray& data) {
    const auto n = data.size();
    if (n == 32) {
        std::memcpy(materialPackageUID, data.constData(), 32);
    } else if (n == 8) {
        std::memcpy(materialPackageUID + 16, data.constData(), 8);
    }
    DB_SizeofUID = quint32(n / 4);
}

void TarnDatabaseItem::checkForAudioTypeByExtension() {
    for (const char* audio : {"aif", "wav", "sd2", "lrc"}) {
        if (TarnFileName::hasExtension(DB_ClipName, QLatin1String(audio))) {
            std::memcpy(CompressionFourCC, "_AUD", 4);
            break;
        }
    }
    if (isAudio()) DB_CompressionString = QStringLiteral("Audio");
}

bool TarnDatabaseItem::checkUUID() {
    if (DB_SizeofUID != 8) return true;
    if (std::memcmp(filePackageUID, kUMIDLabel, 4) == 0 &&
        std::memcmp(materialPackageUID, kUMIDLabel, 4) == 0)
        return true;
    TARN_LOG(QStringLiteral("UMID: %1 :: File: %2 ").arg(getFileUIDString(), DB_ClipName));
    return false;
}

void TarnDatabaseItem::validatePath() {
    validateLookingUp(AT_FDCWD, DB_itemPath);
}

void TarnDatabaseItem::validatePathAt(int dirFd, const QString& name) {
    // An absolute name would escape the folder that DB_itemPath names.
    if (dirFd < 0 || name.isEmpty() || name.startsWith(QLatin1Char('/'))) {
        validatePath();
        return;
    }
    validateLookingUp(dirFd, name);
}

void TarnDatabaseItem::validateLookingUp(int dirFd, const QString& lookup) {
    DB_isValid_initial = false;
    DB_isValid = false;
    // An empty path would otherwise look up ".aaf" in the working folder.
    if (DB_itemPath.isEmpty()) return;

    quint64 size = 0;
    QDateTime created;
    if (statFile(dirFd, lookup, size, created)) {
        DB_FileExists = true;
        DB_isValid_initial = true;
        DB_isValid = true;
        DB_filesize = size;
        DB_setDate(created);
    } else {
        // An AMA link: the editing system keeps a ".aaf" beside the name.
        const QString ama = DB_itemPath + QStringLiteral(".aaf");
        if (statFile(AT_FDCWD, ama, size, created)) {
            DB_FileExists = true;
            DB_isValid_initial = true;
            DB_isValid = true;
            DB_isAMA = true;
            DB_filesize = size;
            DB_itemPath = ama;
        }
    }
    if (!DB_filesize) DB_filesize = 0;

    bool portable = true;
    for (QChar c : DB_ClipName) {
        if (!isPortableChar(c.unicode())) {
            portable = false;
            break;
        }
    }
    if (!portable) {
        TARN_LOG(
            QStringLiteral("**** Warning **** %1 This filename contains non-Portable characters")
                .arg(DB_ClipName));
    }
    DB_isPortableFilename = portable;
}

QString TarnDatabaseItem::getFileUIDString() const {
    return getStringForUID(filePackageUID);
}

QString TarnDatabaseItem::getMaterialUIDString() const {
    return getStringForUID(materialPackageUID);
}

QString TarnDatabaseItem::getStringForUID(const quint8* uid) const {
    if (!uid) return QString();
    static const char digits[] = "0123456789abcdef";
    // "{ " + 64 digits + 7 dashes + " }" at most, made in place and copied once.
    char text[80];
    int n = 0;
    text[n++] = '{';
    text[n++] = ' ';
    auto put = [&](quint8 byte) {
        text[n++] = digits[byte >> 4];
        text[n++] = digits[byte & 0x0f];
    };
    if (DB_SizeofUID == 8) {
        for (int i = 0; i < 32; ++i) {
            put(uid[i]);
            if (i % 4 == 3 && i != 31) text[n++] = '-';
        }
    } else {
        for (int i = 16; i < 24; ++i) put(uid[i]);
    }
    text[n++] = ' ';
    text[n++] = '}';
    return QString::fromLatin1(text, n);
}

QString TarnDatabaseItem::get_DB_ProjectName() const {
    if (DB_ProjectName.isNull()) return GetProjectNameNull();
    if (DB_ProjectName.isEmpty()) return GetProjectNameEmpty();
    return DB_ProjectName;
}

void TarnDatabaseItem::DB_setDate(const QDateTime& date) {
    DB_Date = date;
}

QString TarnDatabaseItem::DB_Date_String() const {
    // Made once, on first request, in the user's locale (short date and time).
    static QMutex mutex;
    if (dateStringMade_.load(std::memory_order_acquire)) return dateString_;
    QMutexLocker locker(&mutex);
    if (!dateStringMade_.load(std::memory_order_relaxed)) {
        if (DB_Date.isValid()) dateString_ = shortDateText(DB_Date);
        dateStringMade_.store(true, std::memory_order_release);
    }
    return dateString_;
}

quint32 TarnDatabaseItem::hash() const {
    return wordAt(filePackageUID + 16) ^ wordAt(filePackageUID + 20);
}

quint64 TarnDatabaseItem::shortFileUID() const {
    quint64 v;
    std::memcpy(&v, filePackageUID + 16, 8);
    return v;
}

bool TarnDatabaseItem::isEqualByUUID(const TarnDatabaseItem* other) const {
    if (!other) return false;
    return other->hash() == hash() &&
           wordAt(other->filePackageUID + 16) == wordAt(filePackageUID + 16) &&
           wordAt(other->filePackageUID + 20) == wordAt(filePackageUID + 20);
}

bool TarnDatabaseItem::isLessByUUID(const TarnDatabaseItem* other) const {
    if (!other) return false;
    const quint32 a = wordAt(filePackageUID + 16), oa = wordAt(other->filePackageUID + 16);
    if (a != oa) return a < oa;
    const quint32 b = wordAt(filePackageUID + 20), ob = wordAt(other->filePackageUID + 20);
    if (b == ob) return false;
    return b < ob;
}

bool TarnDatabaseItem::isEqual(const TarnDatabaseItem* other) const {
    if (!isEqualByUUID(other)) return false;
    if (DB_itemPath.isNull() || other->DB_itemPath.isNull()) return false;
    return DB_itemPath == other->DB_itemPath;
}

QString TarnDatabaseItem::description() const {
    QString d = QStringLiteral("TarnDatabaseItem");
    if (!DB_itemPath.isNull()) d += QStringLiteral("\n        Path:%1").arg(DB_itemPath);
    if (!DB_ClipName.isNull()) d += QStringLiteral("\n        File:%1").arg(DB_ClipName);
    if (!DB_NameInBin.isNull()) d += QStringLiteral("\n Name in Bin:%1").arg(DB_NameInBin);
    if (!DB_ProjectName.isNull()) d += QStringLiteral("\n     Project:%1").arg(DB_ProjectName);
    if (DB_filesize)
        d += QStringLiteral("\n   File Size:%1")
                 .arg(TarnFileSize(double(*DB_filesize)).description());
    d += QStringLiteral("\n    File UID:%1").arg(getFileUIDString());
    d += QStringLiteral("\nMaterial UID:%1").arg(getMaterialUIDString());
    if (!DB_CompressionString.isNull())
        d += QStringLiteral("\n Compression:%1").arg(DB_CompressionString);
    return d;
}

void TarnDatabaseItem::setFrameRateNumerator(quint32 numerator, quint32 denominator) {
    framerate_.store(quint64(numerator) | (quint64(denominator) << 32), std::memory_order_relaxed);
}

void TarnDatabaseItem::setSampleRateNumerator(quint32 numerator, quint32 denominator) {
    samplerate_.store(quint64(numerator) | (quint64(denominator) << 32), std::memory_order_relaxed);
}

TarnRate TarnDatabaseItem::DB_framerate() const {
    const quint64 v = framerate_.load(std::memory_order_relaxed);
    return {quint32(v), quint32(v >> 32)};
}

TarnRate TarnDatabaseItem::DB_samplerate() const {
    const quint64 v = samplerate_.load(std::memory_order_relaxed);
    return {quint32(v), quint32(v >> 32)};
}

quint32 TarnDatabaseItem::compressionCode() const {
    quint32 v;
    std::memcpy(&v, CompressionFourCC, 4);
    return v;
}

bool TarnDatabaseItem::isAudio() const {
    return std::memcmp(CompressionFourCC, "_AUD", 4) == 0;
}
