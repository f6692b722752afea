// The texts shown for an item's size, rates and compression.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "items/TarnDatabaseItem.h"
#include "items/TarnFileSize.h"
#include "items/TarnVocabulary.h"

// Sizes are divided only while strictly above 1000 (or 1024), and huge values
// stay in the last unit.
TEST(FileSize, TextAtTheBoundaries) {
    struct Case {
        double bytes;
        const char* decimal;
        const char* binary;
    };
    const Case cases[] = {
        {0, "0 byte", "0 byte"},
        {1, "1 byte", "1 byte"},
        {2, "   2 bytes", "   2 bytes"},
        {999, " 999 bytes", " 999 bytes"},
        {1000, "1000.00 bytes", "1000 bytes"},
        {1001, "1.00 kB", "1001 bytes"},
        {1024, "1.02 kB", "1024.00 bytes"},
        {1025, "1.02 kB", "1.00 KiB"},
        {1e6, "1000.00 kB", "976.56 KiB"},
        {1e6 + 1, "1.00 MB", "976.56 KiB"},
        {1048577, "1.05 MB", "1.00 MiB"},
        {1.5e12, "1.50 TB", "1.36 TiB"},
        {-5, "  -5 bytes", "  -5 bytes"},
        {std::ldexp(1.0, 64), "18.45 EB", "16.00 EiB"},
        {std::ldexp(1.0, 80), "1.21 YB", "1024.00 ZiB"},
        {3e30, "3000000.00 YB", "2481541.84 YiB"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bytes);
        EXPECT_EQ(TarnFileSize::toHumanBytes(c.bytes), c.decimal);
        EXPECT_EQ(TarnFileSize::toHumanBytes_2(c.bytes), c.binary);
    }
    EXPECT_EQ(TarnFileSize(1001).description(), "1.00 kB");
}

// The bit rate needs an exact frame rate match; the sample rate column shows
// the bit rate for DNx resolutions; unknown rates show their numerator.
TEST(Vocabulary, RateColumns) {
    struct Case {
        quint32 id, num, den, sampleNum, sampleDen;
        const char *bitrate, *frameRate, *sampleRate;
    };
    const Case cases[] = {
        {1235, 2997, 100, 48000, 1, "220x", "29.97fps", "220x"},
        {1235, 30000, 1001, 48000, 1, nullptr, "30000", nullptr},
        {1238, 23976, 1000, 0, 1, "175", "23.976fps", "175"},
        {1238, 24000, 1001, 0, 1, nullptr, "24000", nullptr},
        {1244, 25, 0, 48000, 1, "120", nullptr, "120"},
        {1241, 23976, 1000, 44100, 1, nullptr, "23.976fps", nullptr},
        {1234, 25, 1, 48000, 1, nullptr, "25fps", "48 kHz"},
        {1274, 25, 1, 48000, 1, nullptr, "25fps", nullptr},
        {1275, 0, 1, 48000, 0, nullptr, "0", "48 kHz"},
        {0, 25, 1, 44100, 1, nullptr, "25fps", "44.1 kHz"},
        {0, 25, 1, 11025, 1, nullptr, "25fps", nullptr},
    };
    const TarnVocabulary vocabulary;
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.id << " " << c.num << "/" << c.den);
        TarnDatabaseItem item;
        item.DB_DIDResolutionID = c.id;
        item.setFrameRateNumerator(c.num, c.den);
        item.setSampleRateNumerator(c.sampleNum, c.sampleDen);
        EXPECT_EQ(vocabulary.getBitrateTextForItem(item), QString::fromUtf8(c.bitrate));
        EXPECT_EQ(vocabulary.frameRateText(item), QString::fromUtf8(c.frameRate));
        EXPECT_EQ(vocabulary.sampleRateText(item), QString::fromUtf8(c.sampleRate));
    }
}

TEST(Vocabulary, CompressionTextFallsBackToTheCode) {
    const TarnVocabulary vocabulary;
    TarnDatabaseItem item;
    item.DB_DIDResolutionID = 3706;
    EXPECT_TRUE(vocabulary.compressionText(item).isNull());
    std::memcpy(item.CompressionFourCC, "AVdn", 4);
    EXPECT_EQ(vocabulary.compressionText(item), "AVdn ID:3706");
    item.DB_DIDResolutionID = 3700;
    EXPECT_EQ(vocabulary.compressionText(item), "Apple ProRes HQ");
}
