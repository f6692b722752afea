#include "readers/TarnAvidMXFInfo.h"

#include <QString>

#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "log/xConsole.h"

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

// Reads the header partition pack at the start of the stream and returns its
// operational pattern label. The label sits 64 bytes into the pack (after the
// version, KAG size, five partition offsets and counts, index SID, body offset
// and body SID).
PackRead readHeaderPartition(FILE* stream, QByteArray* operationalPattern) {
    if (fseeko(stream, 0, SEEK_SET) != 0) return PackRead::kStreamError;
    quint8 kl[25];
    const size_t got = fread(kl, 1, 17, stream);
    if (got < 17) return ferror(stream) ? PackRead::kStreamError : PackRead::kNotAPack;
    if (!isHeaderPartitionKey(kl)) return PackRead::kNotAPack;

    // BER length: short form below 0x80, else 0x8n and n big-endian bytes.
    quint64 length = kl[16];
    if (length & 0x80) {
        const size_t n = length & 0x7f;
        if (n == 0 || n > 8) return PackRead::kNotAPack;
        if (fread(kl + 17, 1, n, stream) != n)
            return ferror(stream) ? PackRead::kStreamError : PackRead::kNotAPack;
        length = 0;
        for (size_t i = 0; i < n; ++i) length = (length << 8) | kl[17 + i];
    }
    constexpr size_t kThroughPattern = 80;
    if (length < kThroughPattern) return PackRead::kNotAPack;
    quint8 pack[kThroughPattern];
    if (fread(pack, 1, sizeof pack, stream) != sizeof pack)
        return ferror(stream) ? PackRead::kStreamError : PackRead::kNotAPack;
    *operationalPattern = QByteArray(reinterpret_cast<const char*>(pack + 64), 16);
    return PackRead::kOK;
}

// --- libavformat reading the stdio stream ----------------------------------
int readStream(void* opaque, uint8_t* buf, int size) {
    FILE* stream = static_cast<FILE*>(opaque);
    const size_t n = fread(buf, 1, size_t(size), stream);
    if (n == 0) return ferror(stream) ? AVERROR(EIO) : AVERROR_EOF;
    return int(n);
}

int64_t seekStream(void* opaque, int64_t offset, int whence) {
    FILE* stream = static_cast<FILE*>(opaque);
    whence &= ~AVSEEK_FORCE;
    if (whence == AVSEEK_SIZE) {
        struct stat st;
        if (fstat(fileno(stream), &st) != 0 || !S_ISREG(st.st_mode)) return -1;
        return st.st_size;
    }
    if (whence != SEEK_SET && whence != SEEK_CUR && whence != SEEK_END) return -1;
    if (fseeko(stream, off_t(offset), whence) != 0) return AVERROR(errno ? errno : EIO);
    return ftello(stream);
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
    bool open(FILE* stream, bool* opened, bool printDebug) {
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

    QByteArray pattern;
    switch (readHeaderPartition(stream, &pattern)) {
        case PackRead::kStreamError:
            return kOpenFailed;
        case PackRead::kNotAPack:
            return kHeaderPartitionFailed;
        case PackRead::kOK:
            break;
    }
    // Decided before the metadata is parsed: a file of another pattern is
    // refused even when its header metadata is damaged.
    if (!isOPAtom(pattern)) return kNotOPAtom;
    if (fseeko(stream, 0, SEEK_SET) != 0) return kOpenFailed;

    Demuxer demuxer;
    bool opened = false;
    if (!demuxer.open(stream, &opened, printDebug != 0)) return kOpenFailed;
    if (!opened) return kFailed;
    const AVFormatContext* format = demuxer.format();

    // The demuxer reports the header partition's pattern as well; both agree
    // unless it found another header than the one at the start.
    const QByteArray reported = parseLabelText(tag(format->metadata, "operational_pattern_ul"));
    if (!reported.isEmpty() && !isOPAtom(reported)) return kNotOPAtom;

    const QByteArray material = parseUmidText(tag(format->metadata, "material_package_umid"));
    QByteArray file;
    for (unsigned i = 0; i < format->nb_streams && file.isEmpty(); ++i)
        file = parseUmidText(tag(format->streams[i]->metadata, "file_package_umid"));
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
