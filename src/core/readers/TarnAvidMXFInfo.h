#pragma once

#include <QByteArray>

#include <array>
#include <cstdio>
#include <optional>
#include <string>

// The identity of an Avid OP-Atom MXF file, read from an already open stdio
// stream: the material package's name and UMID, the file source package's
// UMID and the project name that Avid keeps in the preface.
//
// The MXF parsing is FFmpeg's libavformat ("mxf" demuxer) reading the stream
// through its own I/O context; this class checks the header partition pack
// itself so that the status tells the kinds of failure apart, and finds the
// file's own source package in the header metadata: Avid writes one file per
// track, and each file's material package lists the tracks of all of them.
class TarnAvidMXFInfo {
  public:
    struct Info {
        std::optional<std::string> clipName;            // material package Name (UTF-8)
        std::optional<std::string> projectName;         // Avid project name of the preface (UTF-8)
        std::array<quint8, 32> materialPackageUID{};    // as stored in the file
        std::array<quint8, 32> fileSourcePackageUID{};  // this file's own, as stored
    };

    enum Status : int {
        kOK = 0,
        kFailed = -1,                 // the header metadata could not be read
        kOpenFailed = -2,             // no MXF file could be opened on the stream
        kHeaderPartitionFailed = -3,  // no header partition pack at the start
        kNotOPAtom = -4,              // the header partition's pattern is not OP-Atom
    };

    // Reads from the start of `stream`, which must be a regular file, and no
    // further than its size at the call; neither closes it nor keeps it.
    // `printDebug` lets libavformat's own messages reach the console while
    // library logging is on (below). Returns a Status value.
    static int read(FILE* stream, Info* info, int printDebug);
    // Releases what the record holds and zeroes it.
    static void free(Info* info);

    // libavformat's log goes to the console only while this is on. Initially
    // on when the environment variable TARN_DEBUG_AVFORMAT is set (not "0").
    static void setLibraryLogging(bool on);
    static bool libraryLogging();

    // "0x" followed by 64 hex digits (libavformat's text of a UMID) -> 32 bytes;
    // empty for any other text.
    static QByteArray parseUmidText(const QByteArray& text);
    // "060e2b34.04010102.0d010201.10030000" -> 16 bytes; empty otherwise.
    static QByteArray parseLabelText(const QByteArray& text);
    // An operational pattern label whose byte 12, the item complexity, is
    // 0x10: OP-Atom.
    static bool isOPAtom(const QByteArray& label);
};
