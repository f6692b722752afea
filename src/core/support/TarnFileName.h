#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>
#include <QStringView>

class QFile;

// File names as the file system keeps them: bytes. Most are UTF-8, but a
// volume written by another system may hold names that are not (a Latin-1
// "caf\xe9.mxf"); Qt's own file classes turn those bytes into replacement
// characters and then cannot find the file again.
//
// The codec here is lossless. Valid UTF-8 decodes as usual; each byte of an
// invalid sequence becomes the lone low surrogate U+DC80 + (byte - 0x80),
// which no valid UTF-8 can produce. Encoding turns those back into their
// bytes, so encode(decode(b)) == b for every byte string b. Every path that
// goes to the system (open, stat, rename, unlink, listing) is encoded here,
// never by QFile::encodeName.
class TarnFileName {
  public:
    static QString decode(const char* bytes, qsizetype size);
    static QString decode(const QByteArray& bytes) {
        return decode(bytes.constData(), bytes.size());
    }
    static QByteArray encode(QStringView text);

    // True when the text holds bytes that are not UTF-8 (see above).
    static bool holdsRawBytes(QStringView text);
    // The text to show: every raw byte as U+FFFD, as file managers show
    // such names. Never for the file system.
    static QString displayText(const QString& text);

    // "file://" and the path's bytes, percent-encoded as a file URL's path.
    static QString urlText(const QString& path);
    // Percent escapes back to bytes, then decoded; a "%" that is not followed
    // by two hex digits stays as it is.
    static QString removingPercentEncoding(QStringView text);
    // A "file://" URL text back to its path (percent escapes removed).
    static QString pathFromUrlText(const QString& url);

    // The extension of the path's last component, without its dot ("mxf" of
    // "/media/clip.v1.mxf"). A name that only starts with a dot (".pmr") is
    // a hidden file without one.
    static QString extension(const QString& path);
    // The extension is `ext`, in any case.
    static bool hasExtension(const QString& path, QLatin1StringView ext);

    // The path itself, or its nearest ancestor without raw bytes: the place
    // to ask Qt's own classes about (the volume of a file, for example).
    static QString plainAncestor(const QString& path);

    // Opens `file` on the path through the codec (QFile itself would
    // re-encode the name and miss the file).
    static bool open(QFile& file, const QString& path, QIODevice::OpenMode mode);
};
