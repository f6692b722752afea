#include "report/TarnJsonWriter.h"

#include <QChar>

#include <algorithm>
#include <cstdio>

#include "report/TarnReportSink.h"

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

namespace {

// Quote, backslash and control characters escaped as Qt escapes them (the
// short forms, else \u00xx); a surrogate without its partner as \uxxxx;
// everything else as UTF-8.
const TarnReportSink::Escapes& jsonEscapes() {
    static const TarnReportSink::Escapes escapes = [] {
        static char controls[32][7];
        TarnReportSink::Escapes e = TarnReportSink::Escapes::of({{'"', "\\\""},
                                                                 {'\\', "\\\\"},
                                                                 {'\b', "\\b"},
                                                                 {'\f', "\\f"},
                                                                 {'\n', "\\n"},
                                                                 {'\r', "\\r"},
                                                                 {'\t', "\\t"}});
        for (int c = 0; c < 32; ++c) {
            if (e.ascii[c]) continue;
            std::snprintf(controls[c], sizeof controls[c], "\\u%04x", c);
            e.ascii[c] = controls[c];
        }
        e.jsonLoneSurrogates = true;
        return e;
    }();
    return escapes;
}

}  // namespace

void TarnJsonWriter::string(QStringView text) {
    beforeValue();
    sink_.append('"');
    sink_.appendEscaped(text, jsonEscapes());
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
