#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "items/TarnDatabaseItem.h"
#include "items/TarnVocabulary.h"

namespace {

const TarnVocabulary& vocabulary() {
    static const TarnVocabulary v;
    return v;
}

struct Video {
    TarnDatabaseItem item;
    Video(quint32 resolutionID, quint32 num, quint32 den) {
        item.DB_DIDResolutionID = resolutionID;
        item.setFrameRateNumerator(num, den);
    }
};

QString resolution(quint32 id) {
    const auto& map = vocabulary().resolutionIDDictionary();
    auto it = map.find(id);
    return it == map.end() ? QString() : it->second;
}

}  // namespace

TEST(Vocabulary, ResolutionTableHoldsEveryIdentifierWithItsText) {
    const auto& map = vocabulary().resolutionIDDictionary();
    EXPECT_EQ(map.size(), 190u);
    // A sample from every group of rows, spelling and spacing as shown.
    EXPECT_EQ(resolution(75), "10:1");
    EXPECT_EQ(resolution(78), "15:1s");
    EXPECT_EQ(resolution(113), "3:1m");
    EXPECT_EQ(resolution(143), "DV25P 411");
    EXPECT_EQ(resolution(147), "DV 50p");
    EXPECT_EQ(resolution(152), "1:1 film");
    EXPECT_EQ(resolution(162), "MPEG 30");
    EXPECT_EQ(resolution(170), "1:1");
    EXPECT_EQ(resolution(171), "1:1");
    EXPECT_EQ(resolution(1244), "DNxHD-TR 960i SQ");
    EXPECT_EQ(resolution(1256), "DNxHD 444");
    EXPECT_EQ(resolution(1270), "DNxHD 444");
    EXPECT_EQ(resolution(1274), "DNxHR LB");
    EXPECT_EQ(resolution(2003), "1:1p 10b (HD1080p)");
    EXPECT_EQ(resolution(2021), "1:1 10b (NTSC)");
    EXPECT_EQ(resolution(2023), "1:1 10b (NTSC)");
    EXPECT_EQ(resolution(2022), "1:1 10b (PAL)");
    EXPECT_EQ(resolution(2127), "1:1 (HD720p)");
    EXPECT_EQ(resolution(553), "J2K NTSCi/29.97");
    EXPECT_EQ(resolution(566), "J2K PALp/24");
    EXPECT_EQ(resolution(2403), "DVCPro HD");
    EXPECT_EQ(resolution(3409), "AVC-Intra 50Mbps");
    EXPECT_EQ(resolution(3410), "AVC-Intra 100Mbps");
    EXPECT_EQ(resolution(3427), "XAVC Intra 100 23.976p");
    EXPECT_EQ(resolution(3712), "Apple ProRes HQ");
    EXPECT_EQ(resolution(3733), "Apple ProRes LT");
    EXPECT_EQ(resolution(3753), "Apple ProRes 422");
    EXPECT_EQ(resolution(3793), "Apple ProRes 444");
    EXPECT_EQ(resolution(3811), "Apple ProRes Proxy");
    EXPECT_EQ(resolution(4028), "HDV 720P (720P/23.976)");
    EXPECT_EQ(resolution(4051), "XDCAM HD 17.5Mbits 1080p/23.97");
    EXPECT_EQ(resolution(4071), "XDCAM HD 25Mbits (1080p/25)");
    EXPECT_EQ(resolution(4089), "XDCAM EX 35mbps 720p/25");
    EXPECT_EQ(resolution(4091), "XDCAM HD 50mbps 720p/25");
    // Gaps inside the numbered runs stay gaps.
    for (quint32 missing : {81u, 1236u, 1257u, 3704u, 3706u, 3722u, 3742u, 3806u, 4090u})
        EXPECT_TRUE(resolution(missing).isNull()) << missing;
}

TEST(Vocabulary, RateTableHasFifteenLabels) {
    const auto& rates = vocabulary().frameratesDictionary();
    ASSERT_EQ(rates.size(), 15u);
    EXPECT_EQ(rates.at(29.97), "29.97fps");
    EXPECT_EQ(rates.at(23.976), "23.976fps");
    EXPECT_EQ(rates.at(59.94), "59.94fps");
    EXPECT_EQ(rates.at(48.0), "48fps");
    EXPECT_EQ(rates.at(22050.0), "22.05 kHz");
    EXPECT_EQ(rates.at(44100.0), "44.1 kHz");
    EXPECT_EQ(rates.at(192000.0), "192 kHz");
}

TEST(Vocabulary, DNxTableRowsAndCells) {
    const auto& dnx = vocabulary().dnxDictionary();
    ASSERT_EQ(dnx.size(), 11u);
    std::set<quint32> ids;
    for (const auto& [id, row] : dnx) ids.insert(id);
    EXPECT_EQ(
        ids, (std::set<quint32>{1235, 1237, 1238, 1241, 1242, 1243, 1244, 1250, 1251, 1252, 1253}));
    EXPECT_EQ(dnx.at(1235).size(), 4u);
    EXPECT_EQ(dnx.at(1241).size(), 2u);
    EXPECT_EQ(dnx.at(1250).size(), 5u);
    EXPECT_EQ(dnx.at(1250).at(59.94), "220x");
    EXPECT_EQ(dnx.at(1252).at(50.0), "120");
    EXPECT_EQ(dnx.at(1253).at(24.0), "36");
    EXPECT_EQ(dnx.at(1253).at(29.97), "45");
    EXPECT_EQ(dnx.at(1237).at(23.976), "115");
}

TEST(Vocabulary, BitrateMatchesRatesExactly) {
    EXPECT_EQ(vocabulary().getBitrateTextForItem(Video(1235, 2997, 100).item), "220x");
    EXPECT_TRUE(vocabulary().getBitrateTextForItem(Video(1235, 30000, 1001).item).isNull());
    EXPECT_EQ(vocabulary().getBitrateTextForItem(Video(1238, 23976, 1000).item), "175");
    EXPECT_TRUE(vocabulary().getBitrateTextForItem(Video(1238, 24000, 1001).item).isNull());
    EXPECT_EQ(vocabulary().getBitrateTextForItem(Video(1244, 25, 1).item), "120");
    EXPECT_EQ(vocabulary().getBitrateTextForItem(Video(1244, 25, 0).item), "120");
    EXPECT_TRUE(vocabulary().getBitrateTextForItem(Video(1241, 23976, 1000).item).isNull());
    EXPECT_TRUE(vocabulary().getBitrateTextForItem(Video(1235, 0, 1).item).isNull());
    EXPECT_TRUE(vocabulary().getBitrateTextForItem(Video(3700, 25, 1).item).isNull());
}

TEST(Vocabulary, FrameRateColumn) {
    EXPECT_EQ(vocabulary().frameRateText(Video(0, 2997, 100).item), "29.97fps");
    EXPECT_EQ(vocabulary().frameRateText(Video(0, 25, 1).item), "25fps");
    EXPECT_EQ(vocabulary().frameRateText(Video(0, 30000, 1001).item), "30000");
    EXPECT_EQ(vocabulary().frameRateText(Video(0, 24000, 1001).item), "24000");
    EXPECT_TRUE(vocabulary().frameRateText(Video(0, 25, 0).item).isNull());
    EXPECT_EQ(vocabulary().frameRateText(Video(0, 0, 1).item), "0");
}

TEST(Vocabulary, SampleRateColumnShowsBitrateForDNx) {
    auto sample = [](quint32 id, quint32 num, quint32 den) {
        Video v(id, 2997, 100);
        v.item.setSampleRateNumerator(num, den);
        return vocabulary().sampleRateText(v.item);
    };
    EXPECT_EQ(sample(1235, 48000, 1), "220x");
    EXPECT_EQ(sample(1234, 48000, 1), "48 kHz");
    EXPECT_EQ(sample(1275, 48000, 1), "48 kHz");
    // 1274 and 1256 are in the range but have no bit-rate row: the column stays empty.
    EXPECT_TRUE(sample(1274, 48000, 1).isNull());
    EXPECT_TRUE(sample(1256, 48000, 1).isNull());
    EXPECT_EQ(sample(0, 48000, 0), "48 kHz");
    EXPECT_EQ(sample(0, 44100, 1), "44.1 kHz");
    EXPECT_TRUE(sample(0, 0, 1).isNull());
    EXPECT_TRUE(sample(0, 11025, 1).isNull());
}

TEST(Vocabulary, CompressionTextFallsBackToTheCode) {
    TarnDatabaseItem item;
    item.DB_DIDResolutionID = 3706;
    std::memcpy(item.CompressionFourCC, "AVdn", 4);
    EXPECT_EQ(vocabulary().compressionText(item), "AVdn ID:3706");
    item.DB_DIDResolutionID = 3700;
    EXPECT_EQ(vocabulary().compressionText(item), "Apple ProRes HQ");
    TarnDatabaseItem empty;
    empty.DB_DIDResolutionID = 3706;
    EXPECT_TRUE(vocabulary().compressionText(empty).isNull());
}
