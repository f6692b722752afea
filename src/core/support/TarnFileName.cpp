#include "support/TarnFileName.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace {

// A raw byte 0x80..0xFF stands as U+DC80..U+DCFF (ASCII is always valid).
constexpr char16_t kRawBase = 0xDC00;
constexpr char16_t kReplacement = 0xFFFD;

bool isRawByteUnit(char16_t c) {
    return c >= 0xDC80 && c <= 0xDCFF;
}

bool isContinuation(uchar c) {
    return (c & 0xC0) == 0x80;
}

// The length of the valid UTF-8 sequence at p (at most `left` bytes), or 0.
// Overlong forms, surrogates and code points above U+10FFFF are invalid.
int validSequenceLength(const uchar* p, qsizetype left) {
    const uchar c = p[0];
    if (c < 0x80) return 1;
    if (c >= 0xC2 && c <= 0xDF) return left >= 2 && isContinuation(p[1]) ? 2 : 0;
    if (c >= 0xE0 && c <= 0xEF) {
        if (left < 3 || !isContinuation(p[1]) || !isContinuation(p[2])) return 0;
        if (c == 0xE0 && p[1] < 0xA0) return 0;  // overlong
        if (c == 0xED && p[1] > 0x9F) return 0;  // surrogate
        return 3;
    }
    if (c >= 0xF0 && c <= 0xF4) {
        if (left < 4 || !isContinuation(p[1]) || !isContinuation(p[2]) || !isContinuation(p[3]))
            return 0;
        if (c == 0xF0 && p[1] < 0x90) return 0;  // overlong
        if (c == 0xF4 && p[1] > 0x8F) return 0;  // above U+10FFFF
        return 4;
    }
    return 0;
}

char32_t codePoint(const uchar* p, int length) {
    switch (length) {
        case 2:
            return char32_t(p[0] & 0x1F) << 6 | (p[1] & 0x3F);
        case 3:
            return char32_t(p[0] & 0x0F) << 12 | char32_t(p[1] & 0x3F) << 6 | (p[2] & 0x3F);
        default:
            return char32_t(p[0] & 0x07) << 18 | char32_t(p[1] & 0x3F) << 12 |
                   char32_t(p[2] & 0x3F) << 6 | (p[3] & 0x3F);
    }
}

void appendUtf8(QByteArray& out, char32_t c) {
    if (c < 0x80) {
        out.append(char(c));
    } else if (c < 0x800) {
        out.append(char(0xC0 | (c >> 6))).append(char(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.append(char(0xE0 | (c >> 12)))
            .append(char(0x80 | ((c >> 6) & 0x3F)))
            .append(char(0x80 | (c & 0x3F)));
    } else {
        out.append(char(0xF0 | (c >> 18)))
            .append(char(0x80 | ((c >> 12) & 0x3F)))
            .append(char(0x80 | ((c >> 6) & 0x3F)))
            .append(char(0x80 | (c & 0x3F)));
    }
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The position of the next raw byte at or after `from` (never the low half
// of a surrogate pair), or -1.
qsizetype nextRawByte(QStringView text, qsizetype from) {
    const qsizetype n = text.size();
    for (qsizetype i = from; i < n; ++i) {
        const char16_t c = text[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < n && text[i + 1].isLowSurrogate()) {
            ++i;
        } else if (isRawByteUnit(c)) {
            return i;
        }
    }
    return -1;
}

}  // namespace

QString TarnFileName::decode(const char* bytes, qsizetype size) {
    if (!bytes) return QString();
    const auto* p = reinterpret_cast<const uchar*>(bytes);
    qsizetype ascii = 0;
    while (ascii < size && p[ascii] < 0x80) ++ascii;
    if (ascii == size) return QString::fromLatin1(bytes, size);

    QString out;
    out.reserve(size);
    out.append(QLatin1String(bytes, ascii));
    for (qsizetype i = ascii; i < size;) {
        const int length = validSequenceLength(p + i, size - i);
        if (length == 0) {
            out.append(QChar(char16_t(kRawBase + p[i])));
            ++i;
        } else if (length == 1) {
            out.append(QLatin1Char(char(p[i])));
            ++i;
        } else {
            const char32_t c = codePoint(p + i, length);
            if (c >= 0x10000) {
                out.append(QChar::highSurrogate(c)).append(QChar::lowSurrogate(c));
            } else {
                out.append(QChar(char16_t(c)));
            }
            i += length;
        }
    }
    return out;
}

QByteArray TarnFileName::encode(QStringView text) {
    bool ascii = true;
    for (const QChar c : text) {
        if (c.unicode() >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii) return text.toLatin1();
    QByteArray out;
    out.reserve(text.size());
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = text[i].unicode();
        if (c < 0x80) {
            out.append(char(c));
        } else if (QChar::isHighSurrogate(c) && i + 1 < n && text[i + 1].isLowSurrogate()) {
            appendUtf8(out, QChar::surrogateToUcs4(c, text[i + 1].unicode()));
            ++i;
        } else if (isRawByteUnit(c)) {
            out.append(char(c - kRawBase));
        } else if (QChar::isSurrogate(c)) {
            appendUtf8(out, kReplacement);  // no decoded name holds one
        } else {
            appendUtf8(out, c);
        }
    }
    return out;
}

bool TarnFileName::holdsRawBytes(QStringView text) {
    return nextRawByte(text, 0) >= 0;
}

namespace {
// The extension as a view into the path (empty when there is none).
QStringView extensionView(QStringView path) {
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot <= slash + 1) return {};
    return path.mid(dot + 1);
}
}  // namespace

QString TarnFileName::extension(const QString& path) {
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot <= slash + 1) return QString();
    return path.mid(dot + 1);
}

bool TarnFileName::hasExtension(const QString& path, QLatin1StringView ext) {
    // Asked for every file a scan meets: no copy of the extension is made.
    return extensionView(path).compare(ext, Qt::CaseInsensitive) == 0;
}

QString TarnFileName::displayText(const QString& text) {
    qsizetype i = nextRawByte(text, 0);
    if (i < 0) return text;
    QString out = text;
    for (; i >= 0; i = nextRawByte(out, i + 1)) out[i] = QChar(kReplacement);
    return out;
}

QString TarnFileName::urlText(const QString& path) {
    // The characters a file URL's path keeps as they are.
    static const QByteArray kept = QByteArrayLiteral("/!$&'()*+,;=:@");
    return QStringLiteral("file://") + QString::fromLatin1(encode(path).toPercentEncoding(kept));
}

QString TarnFileName::removingPercentEncoding(QStringView text) {
    if (!text.contains(QLatin1Char('%'))) return text.toString();
    const QByteArray in = encode(text);
    QByteArray out;
    out.reserve(in.size());
    for (qsizetype i = 0; i < in.size(); ++i) {
        if (in[i] == '%' && i + 2 < in.size() && hexValue(in[i + 1]) >= 0 &&
            hexValue(in[i + 2]) >= 0) {
            out.append(char(hexValue(in[i + 1]) << 4 | hexValue(in[i + 2])));
            i += 2;
        } else {
            out.append(in[i]);
        }
    }
    return decode(out);
}

QString TarnFileName::pathFromUrlText(const QString& url) {
    QStringView path(url);
    if (path.startsWith(QLatin1String("file://"))) {
        // "file:///path" or "file://host/path"
        path = path.mid(7);
        path = path.mid(qMax<qsizetype>(path.indexOf(QLatin1Char('/')), 0));
    } else if (path.startsWith(QLatin1String("file:"))) {
        path = path.mid(5);
    }
    return removingPercentEncoding(path);
}

QString TarnFileName::plainAncestor(const QString& path) {
    QString plain = path;
    while (holdsRawBytes(plain)) {
        const qsizetype slash = plain.lastIndexOf(QLatin1Char('/'));
        if (slash < 0) return QString();
        plain.truncate(slash == 0 ? 1 : slash);
    }
    return plain;
}

bool TarnFileName::open(QFile& file, const QString& path, QIODevice::OpenMode mode) {
    if (!holdsRawBytes(path)) {
        file.setFileName(path);
        return file.open(mode);
    }
    int flags = O_CLOEXEC;
    if ((mode & QIODevice::ReadWrite) == QIODevice::ReadWrite) {
        flags |= O_RDWR | O_CREAT;
    } else if (mode & QIODevice::WriteOnly) {
        flags |= O_WRONLY | O_CREAT;
    } else {
        flags |= O_RDONLY;
    }
    if ((mode & QIODevice::WriteOnly) &&
        ((mode & QIODevice::Truncate) || !(mode & (QIODevice::Append | QIODevice::ReadOnly))))
        flags |= O_TRUNC;
    if (mode & QIODevice::Append) flags |= O_APPEND;
    const int fd = ::open(encode(path).constData(), flags, 0666);
    if (fd < 0) return false;
    if (!file.open(fd, mode, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return false;
    }
    return true;
}
