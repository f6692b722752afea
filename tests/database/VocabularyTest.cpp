#include <gtest/gtest.h>

#include <cstring>

#include "items/TarnDatabaseItem.h"
#include "items/TarnVocabulary.h"

namespace {

const TarnVocabulary& vocabulary() {
    static const TarnVocabulary v;
    return v;
}

}  // namespace

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
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.id << " " << c.num << "/" << c.den);
        TarnDatabaseItem item;
        item.DB_DIDResolutionID = c.id;
        item.setFrameRateNumerator(c.num, c.den);
        item.setSampleRateNumerator(c.sampleNum, c.sampleDen);
        EXPECT_EQ(vocabulary().getBitrateTextForItem(item), QString::fromUtf8(c.bitrate));
        EXPECT_EQ(vocabulary().frameRateText(item), QString::fromUtf8(c.frameRate));
        EXPECT_EQ(vocabulary().sampleRateText(item), QString::fromUtf8(c.sampleRate));
    }
}

TEST(Vocabulary, CompressionTextFallsBackToTheCode) {
    TarnDatabaseItem item;
    item.DB_DIDResolutionID = 3706;
    EXPECT_TRUE(vocabulary().compressionText(item).isNull());
    std::memcpy(item.CompressionFourCC, "AVdn", 4);
    EXPECT_EQ(vocabulary().compressionText(item), "AVdn ID:3706");
    item.DB_DIDResolutionID = 3700;
    EXPECT_EQ(vocabulary().compressionText(item), "Apple ProRes HQ");
}
