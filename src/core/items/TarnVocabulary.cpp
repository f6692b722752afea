#include "items/TarnVocabulary.h"

#include <initializer_list>

#include "items/TarnDatabaseItem.h"

namespace {

struct ResolutionRow {
    const char* text;
    std::initializer_list<quint32> ids;
};

// numerator / denominator, a denominator of 0 counting as 1.
double rateOf(quint32 numerator, quint32 denominator) {
    return double(numerator) / double(denominator == 0 ? 1u : denominator);
}

// The identifiers of DNx video: 1235 through 1274.
bool isDNxIdentifier(quint32 id) {
    return id - 1235u < 40u;
}

}  // namespace

TarnVocabulary::TarnVocabulary() {
    initResolutionsDictionary();
    initFrameratesDictionary();
    initDNxDictionary();
}

void TarnVocabulary::initResolutionsDictionary() {
    // Avid resolution identifiers (the OMF "DIDResolutionID") and the names the
    // editing system gives them. Several ProRes and AVC-Intra identifiers share
    // a name (one per raster and rate). 4051 reads "23.97", as the editing
    // system writes it.
    static const ResolutionRow rows[] = {
        {"10:1", {75}},
        {"2:1", {76}},
        {"3:1", {77}},
        {"15:1s", {78}},
        {"4:1s", {79}},
        {"2:1s", {80}},
        {"20:1", {82}},
        {"3:1", {97}},
        {"2:1", {98}},
        {"35:1", {102}},
        {"14:1", {103}},
        {"28:1", {104}},
        {"10:1m", {110}},
        {"4:1m", {111}},
        {"8:1m", {112}},
        {"3:1m", {113}},
        {"DV 25 411", {140}},
        {"DV 25 420", {141}},
        {"DV 50", {142}},
        {"DV25P 411", {143}},
        {"DV25P 420", {144}},
        {"DV 50p", {147}},
        {"1:1", {151}},
        {"1:1 film", {152}},
        {"MPEG 50", {160}},
        {"MPEG 40", {161}},
        {"MPEG 30", {162}},
        {"1:1", {170, 171}},
        {"DNxHD 1080p HQX", {1235}},
        {"DNxHD 1080p SQ", {1237}},
        {"DNxHD 1080p HQ", {1238}},
        {"DNxHD 1080i HQX", {1241}},
        {"DNxHD 1080i SQ", {1242}},
        {"DNxHD 1080i HQ", {1243}},
        {"DNxHD-TR 960i SQ", {1244}},
        {"DNxHD 720p HQX", {1250}},
        {"DNxHD 720p HQ", {1251}},
        {"DNxHD 720p SQ", {1252}},
        {"DNxHD 1080p LQ", {1253}},
        {"DNxHD 444", {1256}},
        {"DNxHD 100 720p", {1258}},
        {"DNxHD 100 1080p", {1259}},
        {"DNxHD 100 1080i", {1260}},
        {"DNxHD 444", {1270}},
        {"DNxHR HQX", {1271}},
        {"DNxHR HQ", {1272}},
        {"DNxHR SQ", {1273}},
        {"DNxHR LB", {1274}},
        {"1:1 10b (HD1080i)", {2000}},
        {"1:1p 10b (HD1080p)", {2003}},
        {"1:1p 10b (HD720p)", {2004}},
        {"1:1 10b (PAL)", {2022}},
        {"1:1 10b (NTSC)", {2021, 2023}},
        {"1:1 10b (PAL)", {2024}},
        {"1:1 (HD1080i)", {2125}},
        {"1:1 (HD1080p)", {2126}},
        {"1:1 (HD720p)", {2127}},
        {"J2K 1080i/59.94", {550}},
        {"J2K 1080p/23.976", {551}},
        {"J2K 720p/59.94", {552}},
        {"J2K NTSCi/29.97", {553}},
        {"J2K NTSCp/23.976", {554}},
        {"J2K PALi/25", {555}},
        {"J2K PALp/25", {556}},
        {"J2K 1080i/50", {557}},
        {"J2K 1080p/29.97", {558}},
        {"J2K 1080p/25", {559}},
        {"J2K 1080p/24", {560}},
        {"J2K 720p/50", {561}},
        {"J2K 720p/29.97", {562}},
        {"J2K 720p/25", {563}},
        {"J2K 720p/23.976", {564}},
        {"J2K NTSCp/24", {565}},
        {"J2K PALp/24", {566}},
        {"DVCPro HD", {2400, 2401, 2402, 2403}},
        {"AVC-Intra 50Mbps", {3400, 3401, 3402, 3403, 3404, 3405, 3406, 3407, 3408, 3409}},
        {"AVC-Intra 100Mbps", {3410, 3411, 3412, 3413, 3414, 3415, 3416, 3417, 3418, 3419}},
        {"XAVC Intra 100 50i", {3425}},
        {"XAVC Intra 100 59i", {3426}},
        {"XAVC Intra 100 23.976p", {3427}},
        {"XAVC Intra 100 25p", {3428}},
        {"XAVC Intra 100 29.97p", {3429}},
        {"Apple ProRes HQ", {3700, 3701, 3702, 3703, 3705, 3708, 3709, 3710, 3712}},
        {"Apple ProRes LT", {3721, 3723, 3725, 3726, 3727, 3728, 3729, 3732, 3733}},
        {"Apple ProRes 422", {3740, 3741, 3743, 3744, 3745, 3746, 3748, 3750, 3751, 3752, 3753}},
        {"Apple ProRes 444",
         {3780, 3781, 3782, 3783, 3784, 3785, 3786, 3787, 3788, 3789, 3790, 3791, 3792, 3793}},
        {"Apple ProRes Proxy", {3800, 3801, 3802, 3803, 3804, 3805, 3807, 3809, 3811}},
        {"HDV 1080i (1080i/50)", {4003}},
        {"HDV 1080i (1080i/60)", {4004}},
        {"HDV 1080p (1080p/23.976)", {4027}},
        {"HDV 720P (720P/23.976)", {4028}},
        {"HDV 720P (720P/59.94)", {4029}},
        {"HDV 720P (720P/50)", {4061}},
        {"HDV 720P (720P/25)", {4062}},
        {"XDCAM HD 35mbps 1080i/50", {4043}},
        {"XDCAM HD 35mbps 1080i/60", {4044}},
        {"XDCAM HD 35mbps 1080p/23.976", {4045}},
        {"XDCAM HD 17.5Mbits 1080i/50", {4049}},
        {"XDCAM HD 17.5Mbits 1080i/60", {4050}},
        {"XDCAM HD 17.5Mbits 1080p/23.97", {4051}},
        {"XDCAM HD 25Mbits 1080p/23.976", {4052}},
        {"XDCAM HD 25Mbits (1080p/25)", {4071}},
        {"XDCAM HD 50mbps 1080i/60", {4073}},
        {"XDCAM HD 50mbps 1080i/50", {4074}},
        {"XDCAM HD 50mbps 1080p/29.97", {4075}},
        {"XDCAM HD 50mbps 1080p/25", {4076}},
        {"XDCAM HD 50mbps 1080p/23.976", {4077}},
        {"XDCAM HD 50mbps 720p/60", {4078}},
        {"XDCAM HD 50mbps 720p/50", {4079}},
        {"XDCAM EX 35mbps 1080i/60", {4080}},
        {"XDCAM EX 35mbps 1080i/50", {4081}},
        {"XDCAM EX 35mbps 1080p/29.97", {4082}},
        {"XDCAM EX 35mbps 1080p/25", {4083}},
        {"XDCAM EX 35mbps 1080p/23.976", {4084}},
        {"XDCAM EX 35mbps 720p/60", {4085}},
        {"XDCAM EX 35mbps 720p/50", {4086}},
        {"XDCAM EX 35mbps 720p/23.976", {4087}},
        {"XDCAM EX 35mbps 720p/29.97", {4088}},
        {"XDCAM EX 35mbps 720p/25", {4089}},
        {"XDCAM HD 50mbps 720p/25", {4091}},
    };
    for (const auto& row : rows) {
        for (quint32 id : row.ids) resolutions_.emplace(id, QString::fromLatin1(row.text));
    }
}

void TarnVocabulary::initFrameratesDictionary() {
    // Video edit rates and audio sample rates share one map: their ranges
    // never meet.
    static const std::pair<double, const char*> rows[] = {
        {29.97, "29.97fps"}, {23.976, "23.976fps"}, {59.94, "59.94fps"}, {30, "30fps"},
        {60, "60fps"},       {24, "24fps"},         {48, "48fps"},       {25, "25fps"},
        {50, "50fps"},       {22050, "22.05 kHz"},  {32000, "32 kHz"},   {44100, "44.1 kHz"},
        {48000, "48 kHz"},   {96000, "96 kHz"},     {192000, "192 kHz"},
    };
    for (const auto& [rate, text] : rows) rates_.emplace(rate, QString::fromLatin1(text));
}

void TarnVocabulary::initDNxDictionary() {
    // Bit rates in Mbit/s of each DNxHD resolution at the rates it exists in;
    // "x" marks the 10-bit variants.
    struct Cell {
        double rate;
        const char* text;
    };
    struct Row {
        quint32 id;
        std::initializer_list<Cell> cells;
    };
    static const Row rows[] = {
        {1235, {{23.976, "175x"}, {24, "175x"}, {25, "185x"}, {29.97, "220x"}}},
        {1237, {{23.976, "115"}, {24, "115"}, {25, "120"}, {29.97, "145"}}},
        {1238, {{23.976, "175"}, {24, "175"}, {25, "185"}, {29.97, "220"}}},
        {1241, {{25, "185x"}, {29.97, "220x"}}},
        {1242, {{25, "120"}, {29.97, "145"}}},
        {1243, {{25, "185"}, {29.97, "220"}}},
        {1244, {{25, "120"}, {29.97, "145"}}},
        {1250, {{23.976, "90x"}, {25, "90x"}, {29.97, "110x"}, {50, "185x"}, {59.94, "220x"}}},
        {1251, {{23.976, "90"}, {25, "90"}, {29.97, "110"}, {50, "185"}, {59.94, "220"}}},
        {1252, {{23.976, "60"}, {25, "60"}, {29.97, "75"}, {50, "120"}, {59.94, "145"}}},
        {1253, {{23.976, "36"}, {24, "36"}, {25, "36"}, {29.97, "45"}}},
    };
    for (const auto& row : rows) {
        auto& byRate = dnx_[row.id];
        for (const auto& cell : row.cells)
            byRate.emplace(cell.rate, QString::fromLatin1(cell.text));
    }
}

QString TarnVocabulary::rateLabel(quint32 numerator, quint32 denominator) const {
    auto it = rates_.find(rateOf(numerator, denominator));
    return it == rates_.end() ? QString() : it->second;
}

QString TarnVocabulary::getBitrateTextForItem(const TarnDatabaseItem& item) const {
    const TarnRate rate = item.DB_framerate();
    if (rate.numerator == 0) return QString();
    auto row = dnx_.find(item.DB_DIDResolutionID);
    if (row == dnx_.end()) return QString();
    auto cell = row->second.find(rateOf(rate.numerator, rate.denominator));
    return cell == row->second.end() ? QString() : cell->second;
}

QString TarnVocabulary::frameRateText(const TarnDatabaseItem& item) const {
    const TarnRate rate = item.DB_framerate();
    if (rate.denominator == 0) return QString();
    QString label = rateLabel(rate.numerator, rate.denominator);
    return label.isNull() ? QString::number(rate.numerator) : label;
}

QString TarnVocabulary::sampleRateText(const TarnDatabaseItem& item) const {
    if (isDNxIdentifier(item.DB_DIDResolutionID)) return getBitrateTextForItem(item);
    const TarnRate rate = item.DB_samplerate();
    if (rate.numerator == 0) return QString();
    return rateLabel(rate.numerator, rate.denominator);
}

QString TarnVocabulary::compressionText(const TarnDatabaseItem& item) const {
    auto it = resolutions_.find(item.DB_DIDResolutionID);
    if (it != resolutions_.end()) return it->second;
    const char* code = item.DB_CompressionFourCC();
    if (code[0] == 0) return QString();
    // The code's bytes as characters; a zero byte inside a short code adds nothing.
    QString text;
    for (int i = 0; i < 4; ++i) {
        if (code[i] != 0) text += QChar(uchar(code[i]));
    }
    return text + QStringLiteral(" ID:%1").arg(item.DB_DIDResolutionID);
}
