#pragma once

#include <QLatin1StringView>
#include <QStringView>

#include <utility>
#include <vector>

class TarnReportSink;

// Writes one JSON document as it goes, in the layout of Qt's indented JSON
// (QJsonDocument::Indented): four blanks per level, one member or element per
// line, "key": value, an empty container as an opening and a closing line,
// a line feed after the document. Strings are escaped as Qt escapes them.
//
// Qt sorts the members of an object by key; a caller that wants the same
// bytes gives the keys in that order.
class TarnJsonWriter {
  public:
    explicit TarnJsonWriter(TarnReportSink& sink) : sink_(sink) {}

    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    // The name of the next member of the open object (ASCII).
    void key(QLatin1StringView name);

    void string(QStringView text);
    // ASCII that needs no escape (hex digits, dates), as a string.
    void plainString(QLatin1StringView ascii);
    // Null for an empty text, else the text.
    void stringOrNull(QStringView text);
    void number(qint64 value);
    void boolean(bool value);
    void null();

    // For a document written in parts by several writers: the open
    // containers, outermost first, each 1 when it has a member already. A
    // writer given the nesting of another goes on where that one stands.
    std::vector<char> nesting() const { return hasMembers_; }
    void setNesting(std::vector<char> nesting) {
        hasMembers_ = std::move(nesting);
        afterKey_ = false;
    }

  private:
    // Before a value: after a key nothing; in an array the separator of the
    // previous element and the indent.
    void beforeValue();
    void open(char bracket);
    void close(char bracket);
    void newLineAndIndent(bool comma, qsizetype levels);

    TarnReportSink& sink_;
    // One entry per open container: whether it has a member yet.
    std::vector<char> hasMembers_;
    bool afterKey_ = false;
};
