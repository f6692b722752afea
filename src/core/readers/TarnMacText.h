#pragma once

#include <QByteArrayView>
#include <QString>

// Text in the single-byte encodings of classic Mac OS: Mac OS Roman, in which
// big-endian (classic Mac OS) editing systems wrote names, and Mac OS
// Cyrillic, in which bins name the folders of linked media. Uses the
// platform's codec when Qt offers one, else a table of the 128 upper codes.
class TarnMacText {
  public:
    enum class Encoding { Roman, Cyrillic };

    // "" (not null) for no bytes.
    static QString toString(Encoding encoding, QByteArrayView bytes);
    // The table alone, for the platforms without the codec.
    static QString toStringWithTable(Encoding encoding, QByteArrayView bytes);
};
