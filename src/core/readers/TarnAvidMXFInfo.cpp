#include "readers/TarnAvidMXFInfo.h"

#include <QString>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "log/xConsole.h"
#include "support/TarnRegularFile.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavformat/avio.h>
#include <libavutil/dict.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

namespace {

// --- libavformat's log ------------------------------------------------------
// The callback is process-wide and runs on whichever thread logs. It forwards
// only on a thread that is inside read() with printDebug set, and only while
// library logging is on; everything else is dropped, so the library stays
// quiet by default and never writes to stderr.
std::atomic<bool> gLibraryLogging{false};
std::once_flag gLogSetup;
thread_local bool tForwardLog = false;
thread_local int tPrintPrefix = 1;

void logToConsole(void* avcl, int level, const char* fmt, va_list vl) {
    if (!tForwardLog || level > AV_LOG_VERBOSE || !gLibraryLogging.load(std::memory_order_relaxed))
        return;
    char line[1024];
    av_log_format_line2(avcl, level, fmt, vl, line, int(sizeof line), &tPrintPrefix);
    xConsole::xPrint(QString::fromUtf8(line));
}

void setUpLogging() {
    std::call_once(gLogSetup, [] {
        const char* env = std::getenv("TARN_DEBUG_AVFORMAT");
        if (env && *env && std::strcmp(env, "0") != 0) gLibraryLogging.store(true);
        av_log_set_callback(logToConsole);
    });
}

// Marks the calling thread as inside read() for the lifetime of the object.
class ForwardScope {
  public:
    explicit ForwardScope(bool on) : previous_(tForwardLog) { tForwardLog = on; }
    ~ForwardScope() { tForwardLog = previous_; }
    ForwardScope(const ForwardScope&) = delete;
    ForwardScope& operator=(const ForwardScope&) = delete;

  private:
    bool previous_;
};

void debugLine(bool printDebug, const QString& text) {
    if (printDebug && gLibraryLogging.load(std::memory_order_relaxed))
        xConsole::xPrint(QStringLiteral("TarnAvidMXFInfo: %1\n").arg(text));
}

// --- the header partition pack ---------------------------------------------
// Key 06 0E 2B 34 02 05 01 01 0D 01 02 01 01 02 xx 00, xx = 01..04 (open or
// closed, incomplete or complete); byte 7 is the registry version and varies.
bool isHeaderPartitionKey(const quint8* k) {
    static const quint8 prefix[] = {0x06, 0x0e, 0x2b, 0x34, 0x02, 0x05, 0x01};
    static const quint8 middle[] = {0x0d, 0x01, 0x02, 0x01, 0x01, 0x02};
    return std::memcmp(k, prefix, sizeof prefix) == 0 &&
           std::memcmp(k + 8, middle, sizeof middle) == 0 && k[14] >= 1 && k[14] <= 4 && k[15] == 0;
}

enum class PackRead { kOK, kStreamError, kNotAPack };

// What the header partition pack tells: the operational pattern label, and
// where the header metadata lies (right after the pack, HeaderByteCount bytes).
struct HeaderPartition {
    QByteArray operationalPattern;
    qint64 metadataStart = 0;
    quint64 metadataBytes = 0;
};

// Reads a key and its BER length (short form below 0x80, else 0x8n and n
// big-endian bytes) at the stream's position.
PackRead readKeyAndLength(FILE* stream, quint8 key[16], quint64* length) {
    quint8 kl[25];
    if (fread(kl, 1, 17, stream) != 17)
        return ferror(stream) ? PackRead::kStreamError : PackRead::kNotAPack;
    std::memcpy(key, kl, 16);
    *length = kl[16];
    if (!(*length & 0x80)) return PackRead::kOK;
    const size_t n = *length & 0x7f;
    if (n == 0 || n > 8) return PackRead::kNotAPack;
    if (fread(kl + 17, 1, n, stream) != n)
        return ferror(stream) ? PackRead::kStreamError : PackRead::kNotAPack;
    *length = 0;
    for (size_t i = 0; i < n; ++i) *length = (*length << 8) | kl[17 + i];
    return PackRead::kOK;
}

// Reads the header partition pack at the start of the stream. The header byte
// count sits 32 bytes into the pack (after the version, KAG size and three
// partition offsets), the operational pattern label 64 bytes in (after the
// header and index byte counts, index SID, body offset and body SID).
PackRead readHeaderPartition(FILE* stream, HeaderPartition* header) {
    if (fseeko(stream, 0, SEEK_SET) != 0) return PackRead::kStreamError;
    quint8 key[16];
    quint64 length = 0;
    const PackRead read = readKeyAndLength(stream, key, &length);
    if (read != PackRead::kOK) return read;
    if (!isHeaderPartitionKey(key)) return PackRead::kNotAPack;
    constexpr size_t kThroughPattern = 80;
    if (length < kThroughPattern) return PackRead::kNotAPack;
    quint8 pack[kThroughPattern];
    if (fread(pack, 1, sizeof pack, stream) != sizeof pack)
        return ferror(stream) ? PackRead::kStreamError : PackRead::kNotAPack;
    header->operationalPattern = QByteArray(reinterpret_cast<const char*>(pack + 64), 16);
    const qint64 valueStart = qint64(ftello(stream)) - qint64(sizeof pack);
    // A length beyond any file leaves no room for header metadata.
    constexpr quint64 kBeyondAnyFile = quint64(1) << 62;
    header->metadataStart = valueStart + qint64(qMin(length, kBeyondAnyFile));
    for (int i = 32; i < 40; ++i) header->metadataBytes = (header->metadataBytes << 8) | pack[i];
    return PackRead::kOK;
}

// --- the file's own source package -----------------------------------------
// An OP-Atom file holds the essence of one source package, named by the
// LinkedPackageUID (local tag 2701) of its essence container data set (key
// 06 0E 2B 34 02 53 01 01 0D 01 01 01 01 01 23 00).
bool isEssenceContainerDataKey(const quint8* k) {
    static const quint8 set[] = {0x06, 0x0e, 0x2b, 0x34, 0x02, 0x53, 0x01};
    static const quint8 kind[] = {0x0d, 0x01, 0x01, 0x01, 0x01, 0x01, 0x23, 0x00};
    return std::memcmp(k, set, sizeof set) == 0 && std::memcmp(k + 8, kind, sizeof kind) == 0;
}

// A key after which no header metadata follows: a body or footer partition
// pack (06 0E 2B 34 02 05 01 vv 0D 01 02 01 01 03..04 xx 00), the random index
// pack (... 01 11 01 00) or an essence element (06 0E 2B 34 01 02 01 vv 0D 01
// 03 ...). The primer pack (... 01 05 01 00) is header metadata.
bool endsHeaderMetadata(const quint8* k) {
    static const quint8 pack[] = {0x06, 0x0e, 0x2b, 0x34, 0x02, 0x05, 0x01};
    static const quint8 packKind[] = {0x0d, 0x01, 0x02, 0x01, 0x01};
    static const quint8 essence[] = {0x06, 0x0e, 0x2b, 0x34, 0x01, 0x02, 0x01};
    if (std::memcmp(k, pack, sizeof pack) == 0 &&
        std::memcmp(k + 8, packKind, sizeof packKind) == 0)
        return k[13] == 0x03 || k[13] == 0x04 || k[13] == 0x11;
    return std::memcmp(k, essence, sizeof essence) == 0 && k[8] == 0x0d && k[10] == 0x03;
}

// The LinkedPackageUID of a local set's value (2-byte tags, 2-byte lengths).
QByteArray linkedPackageUID(const QByteArray& set) {
    const auto* d = reinterpret_cast<const quint8*>(set.constData());
    for (qsizetype at = 0; at + 4 <= set.size();) {
        const int tag = d[at] << 8 | d[at + 1];
        const int length = d[at + 2] << 8 | d[at + 3];
        if (at + 4 + length > set.size()) break;
        if (tag == 0x2701 && length == 32) return set.mid(at + 4, 32);
        at += 4 + length;
    }
    return {};
}

// Walks the header metadata's KLV triplets, never past `fileSize`, for the
// package whose essence the file holds; empty when the file names none.
QByteArray essencePackageUID(FILE* stream, const HeaderPartition& header, qint64 fileSize) {
    qint64 end = fileSize;
    if (header.metadataBytes != 0 && header.metadataBytes < quint64(fileSize))
        end = qMin(fileSize, header.metadataStart + qint64(header.metadataBytes));
    constexpr quint64 kLargestSet = 64 * 1024;
    for (qint64 at = header.metadataStart; at + 17 <= end;) {
        quint8 key[16];
        quint64 length = 0;
        if (fseeko(stream, off_t(at), SEEK_SET) != 0 ||
            readKeyAndLength(stream, key, &length) != PackRead::kOK || endsHeaderMetadata(key))
            break;
        const qint64 valueAt = qint64(ftello(stream));
        if (valueAt < 0 || length > quint64(end - valueAt)) break;
        if (isEssenceContainerDataKey(key) && length <= kLargestSet) {
            QByteArray set(qsizetype(length), Qt::Uninitialized);
            if (fread(set.data(), 1, size_t(length), stream) != length) break;
            const QByteArray uid = linkedPackageUID(set);
            if (!uid.isEmpty()) return uid;
        }
        at = valueAt + qint64(length);
    }
    return {};
}

// --- libavformat reading the stdio stream ----------------------------------
// The size of the stream now, which no read goes past. A stream over a
// descriptor must be a regular file (never a FIFO or a device, which could
// block or never end); one without a descriptor lives in memory.
bool streamSize(FILE* stream, qint64* size) {
    const int fd = fileno(stream);
    if (fd >= 0) return TarnRegularFile::isRegular(fd, size);
    if (fseeko(stream, 0, SEEK_END) != 0) return false;
    *size = qint64(ftello(stream));
    return *size >= 0;
}

// Reads stop at the size the file had when reading began.
struct StreamSource {
    FILE* file = nullptr;
    qint64 size = 0;
    qint64 position = 0;
};

int readStream(void* opaque, uint8_t* buf, int size) {
    auto* source = static_cast<StreamSource*>(opaque);
    const qint64 left = source->size - source->position;
    if (left <= 0) return AVERROR_EOF;
    const size_t n = fread(buf, 1, size_t(qMin<qint64>(size, left)), source->file);
    if (n == 0) return ferror(source->file) ? AVERROR(EIO) : AVERROR_EOF;
    source->position += qint64(n);
    return int(n);
}

int64_t seekStream(void* opaque, int64_t offset, int whence) {
    auto* source = static_cast<StreamSource*>(opaque);
    whence &= ~AVSEEK_FORCE;
    if (whence == AVSEEK_SIZE) return source->size;
    if (whence != SEEK_SET && whence != SEEK_CUR && whence != SEEK_END) return -1;
    if (whence == SEEK_END) {
        offset += source->size;
        whence = SEEK_SET;
    }
    if (fseeko(source->file, off_t(offset), whence) != 0) return AVERROR(errno ? errno : EIO);
    source->position = qint64(ftello(source->file));
    return source->position;
}

// Owns the demuxer and its I/O context; frees both exactly once. The stream
// itself belongs to the caller.
class Demuxer {
  public:
    ~Demuxer() {
        if (format_) avformat_close_input(&format_);  // leaves the custom I/O to us
        if (io_) {
            av_freep(&io_->buffer);
            avio_context_free(&io_);
        }
    }
    // False when the contexts cannot be made; `opened` tells whether the
    // demuxer accepted the stream.
    bool open(StreamSource* stream, bool* opened, bool printDebug) {
        *opened = false;
        static const AVInputFormat* const mxf = av_find_input_format("mxf");
        constexpr int kBufferSize = 32 * 1024;
        auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
        if (!mxf || !buffer) {
            av_free(buffer);
            return false;
        }
        io_ = avio_alloc_context(buffer, kBufferSize, 0, stream, readStream, nullptr, seekStream);
        if (!io_) {
            av_free(buffer);
            return false;
        }
        format_ = avformat_alloc_context();
        if (!format_) return false;
        format_->pb = io_;
        format_->flags |= AVFMT_FLAG_CUSTOM_IO;
        // No probing: the demuxer is named. The format context is freed by a
        // failing open, the I/O context is not.
        const int rc = avformat_open_input(&format_, nullptr, mxf, nullptr);
        if (rc < 0) {
            char text[AV_ERROR_MAX_STRING_SIZE] = {};
            av_strerror(rc, text, sizeof text);
            debugLine(
                printDebug,
                QStringLiteral("libavformat refused the file: %1").arg(QString::fromUtf8(text)));
            format_ = nullptr;
            return true;
        }
        *opened = true;
        return true;
    }
    const AVFormatContext* format() const { return format_; }

  private:
    AVFormatContext* format_ = nullptr;
    AVIOContext* io_ = nullptr;
};

// The value of a metadata entry, null when the entry is absent.
const char* value(const AVDictionary* dict, const char* key) {
    const AVDictionaryEntry* e = av_dict_get(dict, key, nullptr, AV_DICT_MATCH_CASE);
    return e ? e->value : nullptr;
}
QByteArray tag(const AVDictionary* dict, const char* key) {
    return QByteArray(value(dict, key));
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Strict hex: an even number of digits, nothing else.
QByteArray fromStrictHex(const QByteArray& digits) {
    if (digits.size() % 2 != 0) return {};
    QByteArray out;
    out.reserve(digits.size() / 2);
    for (qsizetype i = 0; i < digits.size(); i += 2) {
        const int hi = hexDigit(digits[i]);
        const int lo = hexDigit(digits[i + 1]);
        if (hi < 0 || lo < 0) return {};
        out.append(char(hi << 4 | lo));
    }
    return out;
}

// A stream that libavformat adds for a material track whose essence lies in
// another file: a data stream that names the track's kind in "data_type".
bool isStandIn(const AVStream* stream) {
    return stream->codecpar->codec_type == AVMEDIA_TYPE_DATA &&
           value(stream->metadata, "data_type") != nullptr;
}

// libavformat makes a stream of every track of the material package, each
// tagged with the UMID of the source package that holds its essence. Avid
// writes one file per track and every file's material package lists them all,
// so the other files' packages are named too. The file's own package is the
// one its essence container data names; without that, the first stream that
// is not a stand-in for another file's track.
QByteArray fileSourcePackageUID(const AVFormatContext* format, const QByteArray& own) {
    QByteArray first;
    QByteArray firstInFile;
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        const AVStream* stream = format->streams[i];
        const QByteArray umid =
            TarnAvidMXFInfo::parseUmidText(tag(stream->metadata, "file_package_umid"));
        if (umid.isEmpty()) continue;
        if (!own.isEmpty() && umid == own) return umid;
        if (first.isEmpty()) first = umid;
        if (firstInFile.isEmpty() && !isStandIn(stream)) firstInFile = umid;
    }
    return firstInFile.isEmpty() ? first : firstInFile;
}

}  // namespace

QByteArray TarnAvidMXFInfo::parseUmidText(const QByteArray& text) {
    if (text.size() != 66 || !text.startsWith("0x")) return {};
    return fromStrictHex(text.mid(2));
}

QByteArray TarnAvidMXFInfo::parseLabelText(const QByteArray& text) {
    if (text.size() != 35) return {};
    for (int dot : {8, 17, 26})
        if (text[dot] != '.') return {};
    QByteArray digits = text;
    digits.replace('.', "");
    return digits.size() == 32 ? fromStrictHex(digits) : QByteArray();
}

bool TarnAvidMXFInfo::isOPAtom(const QByteArray& label) {
    // 06 0E 2B 34 04 01 01 vv 0D 01 02 01 10 xx xx xx: an operational pattern
    // label (any registry version) whose item complexity is OP-Atom.
    static const QByteArray designator = QByteArray::fromHex("060e2b34040101");
    static const QByteArray patterns = QByteArray::fromHex("0d010201");
    return label.size() == 16 && label.startsWith(designator) && label.mid(8, 4) == patterns &&
           quint8(label[12]) == 0x10;
}

void TarnAvidMXFInfo::setLibraryLogging(bool on) {
    setUpLogging();
    gLibraryLogging.store(on);
}

bool TarnAvidMXFInfo::libraryLogging() {
    setUpLogging();
    return gLibraryLogging.load();
}

void TarnAvidMXFInfo::free(Info* info) {
    if (info) *info = Info{};
}

int TarnAvidMXFInfo::read(FILE* stream, Info* info, int printDebug) {
    setUpLogging();
    if (!stream || !info) return kOpenFailed;
    free(info);
    const ForwardScope forward(printDebug != 0);
    StreamSource source{stream, 0, 0};
    if (!streamSize(stream, &source.size)) return kOpenFailed;

    HeaderPartition header;
    switch (readHeaderPartition(stream, &header)) {
        case PackRead::kStreamError:
            return kOpenFailed;
        case PackRead::kNotAPack:
            return kHeaderPartitionFailed;
        case PackRead::kOK:
            break;
    }
    // Decided before the metadata is parsed: a file of another pattern is
    // refused even when its header metadata is damaged.
    if (!isOPAtom(header.operationalPattern)) return kNotOPAtom;
    const QByteArray own = essencePackageUID(stream, header, source.size);
    if (fseeko(stream, 0, SEEK_SET) != 0) return kOpenFailed;

    Demuxer demuxer;
    bool opened = false;
    if (!demuxer.open(&source, &opened, printDebug != 0)) return kOpenFailed;
    if (!opened) return kFailed;
    const AVFormatContext* format = demuxer.format();

    // The demuxer reports the header partition's pattern as well; both agree
    // unless it found another header than the one at the start.
    const QByteArray reported = parseLabelText(tag(format->metadata, "operational_pattern_ul"));
    if (!reported.isEmpty() && !isOPAtom(reported)) return kNotOPAtom;

    const QByteArray material = parseUmidText(tag(format->metadata, "material_package_umid"));
    const QByteArray file = fileSourcePackageUID(format, own);
    if (material.size() != 32 || file.size() != 32) {
        debugLine(printDebug != 0, QStringLiteral("no material or file package UMID"));
        return kFailed;
    }
    std::memcpy(info->materialPackageUID.data(), material.constData(), 32);
    std::memcpy(info->fileSourcePackageUID.data(), file.constData(), 32);

    // libavformat leaves out empty texts: an empty name reads as none.
    if (const char* clip = value(format->metadata, "material_package_name")) info->clipName = clip;
    if (const char* project = value(format->metadata, "project_name")) info->projectName = project;
    return kOK;
}
