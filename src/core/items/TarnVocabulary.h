#pragma once

#include <QString>

#include <map>

class TarnDatabaseItem;

// The fixed words for the numbers that readers store in an item: compression
// names by resolution identifier, frame and sample rate labels, and DNx bit
// rates by identifier and frame rate.
//
// The media database (TarnCore) owns one instance, built once when the database
// is created, and never changes it; reading it from any thread is safe.
//
// Rate keys are doubles compared exactly: 29.97 matches a rate computed as
// 2997/100 but not 30000/1001, and 23.976 matches 23976/1000 but not
// 24000/1001. Avid writes both forms; only the first has a label.
class TarnVocabulary {
  public:
    TarnVocabulary();

    const std::map<quint32, QString>& resolutionIDDictionary() const { return resolutions_; }
    const std::map<double, QString>& frameratesDictionary() const { return rates_; }
    const std::map<quint32, std::map<double, QString>>& dnxDictionary() const { return dnx_; }

    // The DNx bit-rate label ("220x", "145") for the item's resolution
    // identifier and frame rate; null when there is none.
    QString getBitrateTextForItem(const TarnDatabaseItem& item) const;
    // The frame-rate column: the rate's label, else the numerator alone; null
    // when the denominator is 0.
    QString frameRateText(const TarnDatabaseItem& item) const;
    // The sample-rate column: DNx video (identifiers 1235..1274) shows its bit
    // rate instead; otherwise the sample rate's label, or null.
    QString sampleRateText(const TarnDatabaseItem& item) const;
    // The compression name: the resolution text, else the four-character code
    // with the identifier ("AVdn ID:3706"); null when the code is empty.
    QString compressionText(const TarnDatabaseItem& item) const;

  private:
    void initResolutionsDictionary();
    void initFrameratesDictionary();
    void initDNxDictionary();

    QString rateLabel(quint32 numerator, quint32 denominator) const;

    std::map<quint32, QString> resolutions_;
    std::map<double, QString> rates_;
    std::map<quint32, std::map<double, QString>> dnx_;
};
