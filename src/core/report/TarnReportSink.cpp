#include "report/TarnReportSink.h"

#include <QChar>

#include <algorithm>

TarnReportSink::TarnReportSink(QIODevice* device, qsizetype bufferSize)
    : device_(device),
      size_(std::max<qsizetype>(bufferSize, 64)),
      buffer_(std::make_unique<char[]>(size_t(size_))) {}

TarnReportSink::~TarnReportSink() {
    flush();
}

void TarnReportSink::appendPieces(QLatin1StringView ascii) {
    const char* p = ascii.data();
    qsizetype left = ascii.size();
    while (left > 0) {
        if (used_ == size_) spill();
        const qsizetype n = std::min(left, size_ - used_);
        std::copy_n(p, n, buffer_.get() + used_);
        used_ += n;
        p += n;
        left -= n;
    }
}

const TarnReportSink::Escapes TarnReportSink::kNoEscapes{};

void TarnReportSink::appendEscaped(QStringView text, const Escapes& escapes) {
    const char16_t* p = text.utf16();
    const char16_t* const end = p + text.size();
    while (p != end) {
        if (*p >= 0x80) {
            const char16_t* q = p;
            while (q != end && *q >= 0x80) ++q;
            appendNonAscii(p, q, escapes.jsonLoneSurrogates);
            p = q;
        } else if (const char* replacement = escapes.ascii[*p]) {
            append(QLatin1StringView(replacement));
            ++p;
        } else {
            p = appendPlain(p, end, escapes);
        }
    }
}

const char16_t* TarnReportSink::appendPlain(const char16_t* p, const char16_t* end,
                                            const Escapes& escapes) {
    if (used_ == size_) spill();
    char* out = buffer_.get() + used_;
    const char16_t* stop = p + std::min<qsizetype>(end - p, size_ - used_);
    while (p != stop && *p < 0x80 && !escapes.ascii[*p]) *out++ = char(*p++);
    used_ = out - buffer_.get();
    return p;
}

// UTF-16 units of 0x80 and above: two or three bytes each, four for a
// surrogate pair; a surrogate without its partner is "?" as in
// QString::toUtf8, or "\uXXXX" as in Qt's JSON.
void TarnReportSink::appendNonAscii(const char16_t* p, const char16_t* end,
                                    bool jsonLoneSurrogates) {
    while (p != end) {
        char32_t c = *p++;
        if (QChar::isSurrogate(c)) {
            if (QChar::isHighSurrogate(c) && p != end && QChar::isLowSurrogate(*p)) {
                c = QChar::surrogateToUcs4(char16_t(c), *p++);
            } else {
                appendLoneSurrogate(char16_t(c), jsonLoneSurrogates);
                continue;
            }
        }
        char bytes[4];
        int n;
        if (c < 0x800) {
            bytes[0] = char(0xC0 | (c >> 6));
            n = 1;
        } else if (c < 0x10000) {
            bytes[0] = char(0xE0 | (c >> 12));
            bytes[1] = char(0x80 | ((c >> 6) & 0x3F));
            n = 2;
        } else {
            bytes[0] = char(0xF0 | (c >> 18));
            bytes[1] = char(0x80 | ((c >> 12) & 0x3F));
            bytes[2] = char(0x80 | ((c >> 6) & 0x3F));
            n = 3;
        }
        bytes[n++] = char(0x80 | (c & 0x3F));
        append(QLatin1StringView(bytes, n));
    }
}

void TarnReportSink::appendLoneSurrogate(char16_t c, bool json) {
    if (!json) {
        append('?');
        return;
    }
    static const char digits[] = "0123456789abcdef";
    const char text[6] = {
        '\\',           'u', digits[c >> 12], digits[(c >> 8) & 0xF], digits[(c >> 4) & 0xF],
        digits[c & 0xF]};
    append(QLatin1StringView(text, 6));
}

void TarnReportSink::spill() {
    writeOut(buffer_.get(), used_);
    used_ = 0;
}

bool TarnReportSink::flush() {
    spill();
    return ok_;
}

// A device may take less than it was given (a pipe, a socket): the rest is
// offered again until all is written or the device fails.
void TarnReportSink::writeOut(const char* data, qsizetype length) {
    while (ok_ && length > 0) {
        const qint64 written = device_->write(data, length);
        if (written <= 0) {
            ok_ = false;
            break;
        }
        data += written;
        length -= written;
    }
}
