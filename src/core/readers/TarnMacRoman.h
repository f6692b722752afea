#pragma once

#include <QString>

// Text in Mac OS Roman, the single-byte encoding of names written by big-endian
// (classic Mac OS) editing systems. Uses the platform's codec when Qt offers
// one, else a table of the 128 upper codes.
class TarnMacRoman {
  public:
    static QString toString(const char* bytes, qsizetype length);
    // The table alone, for the platforms without the codec.
    static QString toStringWithTable(const char* bytes, qsizetype length);
};
