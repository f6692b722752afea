#include "report/TarnJsonWriter.h"

#include <QChar>

#include <algorithm>

#include "report/TarnReportSink.h"

namespace {

char hexDigit(uint v) {
    return char(v < 10 ? '0' + v : 'a' + v - 10);
}

}  // namespace

// A separator (",\n" or "\n") and four blanks per level, in one piece while
// the nesting is shallow.
void TarnJsonWriter::newLineAndIndent(bool comma, qsizetype levels) {
    static const char kPiece[] =
        ",\n                                                                ";
    constexpr qsizetype kMaxLevels = (sizeof kPiece - 3) / 4;
    const qsizetype start = comma ? 0 : 1;
    const qsizetype shallow = std::min(levels, kMaxLevels);
    sink_.append(QLatin1StringView(kPiece + start, 2 - start + 4 * shallow));
    for (qsizetype i = shallow; i < levels; ++i) sink_.append(QLatin1StringView("    "));
}

void TarnJsonWriter::beforeValue() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (hasMembers_.empty()) return;  // the document itself
    const bool comma = hasMembers_.back() != 0;
    hasMembers_.back() = 1;
    newLineAndIndent(comma, qsizetype(hasMembers_.size()));
}

void TarnJsonWriter::key(QLatin1StringView name) {
    beforeValue();
    sink_.append('"');
    sink_.append(name);
    sink_.append(QLatin1StringView("\": "));
    afterKey_ = true;
}

void TarnJsonWriter::open(char bracket) {
    beforeValue();
    sink_.append(bracket);
    hasMembers_.push_back(0);
}

// Qt puts every member on a line of its own; an empty container has its
// closing bracket on the line after the opening one.
void TarnJsonWriter::close(char bracket) {
    if (hasMembers_.empty()) return;
    hasMembers_.pop_back();
    newLineAndIndent(false, qsizetype(hasMembers_.size()));
    sink_.append(bracket);
    if (hasMembers_.empty()) sink_.append('\n');
}

void TarnJsonWriter::beginObject() {
    open('{');
}

void TarnJsonWriter::endObject() {
    close('}');
}

void TarnJsonWriter::beginArray() {
    open('[');
}

void TarnJsonWriter::endArray() {
    close(']');
}

// Quote, backslash and control characters are escaped (the usual short forms,
// else \u00xx); a surrogate without its partner cannot be UTF-8 and is written
// as \uxxxx; everything else goes out as UTF-8.
void TarnJsonWriter::string(QStringView text) {
    beforeValue();
    sink_.append('"');
    qsizetype start = 0;
    auto replace = [&](qsizetype i, QLatin1StringView with) {
        sink_.appendText(text.sliced(start, i - start));
        sink_.append(with);
        start = i + 1;
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c >= 0x20 && c != u'"' && c != u'\\') {
            if (!QChar::isSurrogate(c)) continue;
            if (QChar::isHighSurrogate(c) && i + 1 < text.size() &&
                QChar::isLowSurrogate(text[i + 1].unicode())) {
                ++i;  // a pair: one character, written as UTF-8
                continue;
            }
        }
        switch (c) {
            case u'"':
                replace(i, QLatin1StringView("\\\""));
                break;
            case u'\\':
                replace(i, QLatin1StringView("\\\\"));
                break;
            case u'\b':
                replace(i, QLatin1StringView("\\b"));
                break;
            case u'\f':
                replace(i, QLatin1StringView("\\f"));
                break;
            case u'\n':
                replace(i, QLatin1StringView("\\n"));
                break;
            case u'\r':
                replace(i, QLatin1StringView("\\r"));
                break;
            case u'\t':
                replace(i, QLatin1StringView("\\t"));
                break;
            default: {
                const char escape[6] = {'\\',
                                        'u',
                                        hexDigit(c >> 12),
                                        hexDigit((c >> 8) & 0xF),
                                        hexDigit((c >> 4) & 0xF),
                                        hexDigit(c & 0xF)};
                replace(i, QLatin1StringView(escape, 6));
            }
        }
    }
    sink_.appendText(text.sliced(start));
    sink_.append('"');
}

void TarnJsonWriter::plainString(QLatin1StringView ascii) {
    beforeValue();
    sink_.append('"');
    sink_.append(ascii);
    sink_.append('"');
}

void TarnJsonWriter::stringOrNull(QStringView text) {
    if (text.isEmpty()) {
        null();
    } else {
        string(text);
    }
}

void TarnJsonWriter::number(qint64 value) {
    beforeValue();
    char digits[24];
    char* end = digits + sizeof digits;
    char* p = end;
    // Digits from the magnitude as unsigned, so the smallest value has one too.
    quint64 magnitude = value < 0 ? 0 - quint64(value) : quint64(value);
    do {
        *--p = char('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (value < 0) *--p = '-';
    sink_.append(QLatin1StringView(p, end - p));
}

void TarnJsonWriter::boolean(bool value) {
    beforeValue();
    sink_.append(value ? QLatin1StringView("true") : QLatin1StringView("false"));
}

void TarnJsonWriter::null() {
    beforeValue();
    sink_.append(QLatin1StringView("null"));
}
