#include "TarnItemComparator.h"

#include <cstring>

#include "TarnDatabaseItem.h"

namespace {

template <typename T>
int threeWay(const T& a, const T& b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

int compareText(const QString& a, const QString& b) {
    const int c = a.compare(b, Qt::CaseInsensitive);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

int compareBytes(const quint8* a, const quint8* b) {
    const int c = std::memcmp(a, b, TarnDatabaseItem::kUIDBytes);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

}  // namespace

TarnItemComparator::TarnItemComparator(const QString& key, bool ascending, bool invalidLast)
    : key_(keyFromString(key)), ascending_(ascending), invalidLast_(invalidLast) {}

TarnItemComparator::Key TarnItemComparator::keyFromString(const QString& key) {
    static const struct {
        const char* name;
        Key key;
    } keys[] = {
        {"filename", Key::FileName},
        {"clipname", Key::ClipName},
        {"project", Key::Project},
        {"filesize", Key::FileSize},
        {"path", Key::Path},
        {"fileUID", Key::FileUID},
        {"materialUID", Key::MaterialUID},
        {"hash", Key::Hash},
        {"filedate", Key::FileDate},
        {"compression", Key::Compression},
        {"samplerate", Key::SampleRate},
        {"framerate", Key::FrameRate},
        {"bits", Key::Bits},
    };
    for (const auto& k : keys) {
        if (key == QLatin1String(k.name)) return k.key;
    }
    return Key::Unknown;
}

int TarnItemComparator::compare(const TarnDatabaseItem* a, const TarnDatabaseItem* b) const {
    if (!a) return b ? 1 : 0;
    if (!b) return -1;
    if (invalidLast_) {
        const bool va = a->DB_isValid, vb = b->DB_isValid;
        if (va != vb) {
            const int c = va ? -1 : 1;
            return ascending_ ? c : -c;
        }
        if (!va) return 0;
    }
    if (key_ == Key::FileDate) {
        // Items without a date are last whichever way the column is sorted.
        const bool da = a->DB_Date.isValid(), db = b->DB_Date.isValid();
        if (!da || !db) return da == db ? 0 : (da ? -1 : 1);
    }
    const int c = compareField(*a, *b);
    return ascending_ ? c : -c;
}

int TarnItemComparator::compareField(const TarnDatabaseItem& a, const TarnDatabaseItem& b) const {
    switch (key_) {
        case Key::FileName:
            return compareText(a.DB_ClipName, b.DB_ClipName);
        case Key::ClipName:
            return compareText(a.DB_NameInBin, b.DB_NameInBin);
        case Key::Project:
            return compareText(a.get_DB_ProjectName(), b.get_DB_ProjectName());
        case Key::FileSize:
            return threeWay(a.DB_filesize.value_or(0), b.DB_filesize.value_or(0));
        case Key::Path:
            return compareText(a.DB_itemPath, b.DB_itemPath);
        case Key::FileUID:
            return compareBytes(a.filePackageUID, b.filePackageUID);
        case Key::MaterialUID:
            return compareBytes(a.materialPackageUID, b.materialPackageUID);
        case Key::Hash:
            return threeWay(a.hash(), b.hash());
        case Key::FileDate:
            return threeWay(a.DB_Date, b.DB_Date);
        case Key::Compression: {
            const int c = threeWay(a.compressionCode(), b.compressionCode());
            return c ? c : threeWay(a.DB_DIDResolutionID, b.DB_DIDResolutionID);
        }
        case Key::SampleRate:
            return threeWay(a.DB_samplerate().numerator, b.DB_samplerate().numerator);
        case Key::FrameRate:
            return threeWay(a.DB_framerate().numerator, b.DB_framerate().numerator);
        case Key::Bits:
            return threeWay(a.DB_bits, b.DB_bits);
        case Key::Unknown:
            break;
    }
    return 0;
}
