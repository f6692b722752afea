#include <gtest/gtest.h>

#include <QUrl>

#include "support/TarnFileName.h"
#include "support/TarnUtilities.h"

// The file-name codec: bytes -> text -> the same bytes, whatever the bytes.
namespace {

struct CodecCase {
    const char* label;
    QByteArray bytes;
    bool raw;          // holds bytes that are not UTF-8
    int replacements;  // U+FFFD in the shown text
};

TEST(FileNameCodec, EveryNameComesBackByteForByte) {
    const CodecCase cases[] = {
        {"empty", QByteArray(), false, 0},
        {"ascii", "plain_Clip 01.mxf", false, 0},
        {"utf-8 e acute", "caf\xC3\xA9.mxf", false, 0},
        {"utf-8 four bytes", "clip \xF0\x9F\x8E\xAC.wav", false, 0},
        {"utf-8 noncharacter U+FFFE", "a\xEF\xBF\xBE", false, 0},
        {"latin-1 e acute", "caf\xE9.mxf", true, 1},
        {"folder of two bad bytes", "\xFF\xFE_folder", true, 2},
        {"overlong slash", "a\xC0\xAF", true, 2},
        {"encoded surrogate", "\xED\xA0\x80x", true, 3},
        {"an escape's own UTF-8", "\xED\xB3\xA9", true, 3},
        {"cut sequence", "euro\xE2\x82", true, 2},
        {"above U+10FFFF", "\xF4\x90\x80\x80", true, 4},
        {"lone continuation", "\x80", true, 1},
    };
    for (const CodecCase& c : cases) {
        SCOPED_TRACE(c.label);
        const QString text = TarnFileName::decode(c.bytes);
        EXPECT_EQ(TarnFileName::encode(text), c.bytes);
        EXPECT_EQ(TarnFileName::holdsRawBytes(text), c.raw);
        EXPECT_TRUE(c.raw || text == QString::fromUtf8(c.bytes));
        const QString shown = TarnFileName::displayText(text);
        EXPECT_EQ(shown.count(QChar(0xFFFD)), c.replacements);
        EXPECT_FALSE(TarnFileName::holdsRawBytes(shown));
    }
    // Qt's own classes are asked only about the part of a path they can reach.
    const QString folder = QStringLiteral("/v/") + TarnFileName::decode("\xFF\xFE_folder");
    EXPECT_EQ(TarnFileName::plainAncestor(folder + QStringLiteral("/clip.mxf")), "/v");
    EXPECT_EQ(TarnFileName::plainAncestor(QStringLiteral("/v")), "/v");
}

// "%" in text: an escape stands for its byte, a lone sign stays. The URL of a
// path whose name holds "%" (or any byte) gives the name back, no doubling.
TEST(FileNameCodec, PercentSignsInTextAndInUrls) {
    const QPair<const char*, QByteArray> escapes[] = {
        {"Mix 100%.wav", "Mix 100%.wav"},   {"a%41b.wav", "aAb.wav"},
        {"Clip%20One.wav", "Clip One.wav"}, {"%%", "%%"},
        {"trailing%", "trailing%"},         {"one%4", "one%4"},
        {"caf%E9.mxf", "caf\xE9.mxf"},      {"caf%c3%a9", "caf\xC3\xA9"},
    };
    for (const auto& [text, bytes] : escapes) {
        SCOPED_TRACE(text);
        const QString decoded = TarnFileName::removingPercentEncoding(QString::fromLatin1(text));
        EXPECT_EQ(TarnFileName::encode(decoded), bytes);
        EXPECT_EQ(TarnUtilities::stringByRemovingPercentEncoding(QString::fromLatin1(text)),
                  decoded);
    }
    for (const QByteArray name : {"Mix 100%.wav", "a%41b.wav", "Clip%20One.wav", "%%", "end%",
                                  "caf\xE9.mxf", "(take 2) & more;=@+.mxf"}) {
        SCOPED_TRACE(name.constData());
        const QString path = QStringLiteral("/Volumes/Media/") + TarnFileName::decode(name);
        const QString url = TarnFileName::urlText(path);
        EXPECT_TRUE(url.startsWith(QLatin1String("file:///Volumes/Media/")));
        const QString last = url.mid(url.lastIndexOf(QLatin1Char('/')) + 1);
        EXPECT_EQ(TarnFileName::encode(TarnFileName::removingPercentEncoding(last)), name);
        EXPECT_EQ(TarnFileName::pathFromUrlText(url), path);
        // Names that Qt can represent read as Qt writes their URLs.
        EXPECT_TRUE(TarnFileName::holdsRawBytes(path) ||
                    url == QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
    }
}

// Index files and media files are told apart by their extension; a hidden
// file such as ".pmr" has none, so it is never taken for an index.
TEST(FileNameCodec, ExtensionOfTheLastComponent) {
    const struct {
        const char* path;
        const char* extension;
    } cases[] = {
        {"/media/1/msmFMID.pmr", "pmr"},
        {"/media/clip.v1.MXF", "MXF"},
        {"/media/.pmr", ""},
        {"/media/..pmr", "pmr"},
        {"/media.d/clip", ""},
        {"clip.", ""},
        {"clip", ""},
        {"", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TarnFileName::extension(QString::fromUtf8(c.path)), QLatin1String(c.extension))
            << c.path;
    }
    EXPECT_TRUE(TarnFileName::hasExtension(QStringLiteral("/m/A.Mxf"), QLatin1String("mxf")));
    EXPECT_FALSE(TarnFileName::hasExtension(QStringLiteral("/m/.mxf"), QLatin1String("mxf")));
}

}  // namespace
