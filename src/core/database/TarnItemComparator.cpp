#include "database/TarnItemComparator.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "items/TarnDatabaseItem.h"

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
    : key_(TarnSortKeys::fromName(key)), ascending_(ascending), invalidLast_(invalidLast) {}

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
    if (key_ == TarnSortKey::FileDate) {
        // Items without a date are last whichever way the column is sorted.
        const bool da = a->DB_Date.isValid(), db = b->DB_Date.isValid();
        if (!da || !db) return da == db ? 0 : (da ? -1 : 1);
    }
    const int c = compareField(*a, *b);
    return ascending_ ? c : -c;
}

int TarnItemComparator::compareField(const TarnDatabaseItem& a, const TarnDatabaseItem& b) const {
    if (!key_) return 0;
    switch (*key_) {
        case TarnSortKey::FileName:
            return compareText(a.DB_ClipName, b.DB_ClipName);
        case TarnSortKey::ClipName:
            return compareText(a.DB_NameInBin, b.DB_NameInBin);
        case TarnSortKey::Project:
            return compareText(a.get_DB_ProjectName(), b.get_DB_ProjectName());
        case TarnSortKey::FileSize:
            return threeWay(a.DB_filesize.value_or(0), b.DB_filesize.value_or(0));
        case TarnSortKey::Path:
            return compareText(a.DB_itemPath, b.DB_itemPath);
        case TarnSortKey::FileUID:
            return compareBytes(a.filePackageUID, b.filePackageUID);
        case TarnSortKey::MaterialUID:
            return compareBytes(a.materialPackageUID, b.materialPackageUID);
        case TarnSortKey::Hash:
            return threeWay(a.hash(), b.hash());
        case TarnSortKey::FileDate:
            return threeWay(a.DB_Date, b.DB_Date);
        case TarnSortKey::Compression: {
            const int c = threeWay(a.compressionCode(), b.compressionCode());
            return c ? c : threeWay(a.DB_DIDResolutionID, b.DB_DIDResolutionID);
        }
        case TarnSortKey::SampleRate:
            return threeWay(a.DB_samplerate().numerator, b.DB_samplerate().numerator);
        case TarnSortKey::FrameRate:
            return threeWay(a.DB_framerate().numerator, b.DB_framerate().numerator);
        case TarnSortKey::Bits:
            return threeWay(a.DB_bits, b.DB_bits);
    }
    return 0;
}

namespace {

struct SortEntry {
    quint32 index = 0;
    quint8 group = 0;  // validity and presence: compared first, in any direction
    quint8 sub = 0;    // undated after dated
    quint64 number = 0;
    // Texts: the eight UTF-16 units after `number`'s four.
    quint64 next = 0;
    quint64 third = 0;
    const quint8* bytes = nullptr;
    QString text;
};

// The text case-folded, as QString::toCaseFolded does it; texts of plain
// ASCII (nearly every name and path) fold letter by letter, many times faster.
QString folded(const QString& text) {
    QString out(text.size(), Qt::Uninitialized);
    const QChar* in = text.constData();
    QChar* to = out.data();
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = in[i].unicode();
        if (c >= 0x80) return text.toCaseFolded();
        to[i] = QChar(c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c);
    }
    return out;
}

// How many leading units every text shares: paths of one volume share their
// media folder, and comparing past it is all a sort by path would do.
qsizetype commonPrefix(const std::vector<SortEntry>& entries) {
    const QString* first = nullptr;
    qsizetype length = 0;
    for (const SortEntry& e : entries) {
        if (e.group != 1) continue;
        if (!first) {
            first = &e.text;
            length = first->size();
            continue;
        }
        qsizetype i = 0;
        while (i < length && i < e.text.size() && e.text[i] == first->at(i)) ++i;
        length = i;
        if (length == 0) break;
    }
    return length;
}

// The head of the text from unit `from` on (zero past its end).
quint64 headFrom(const QString& text, qsizetype from) {
    return from < text.size() ? TarnItemComparator::textHead(QStringView(text).mid(from)) : 0;
}

// Twelve units after the prefix that every text shares, kept in the entry
// itself, decide most pairs without reading either text.
void setTextHeads(std::vector<SortEntry>& entries) {
    const qsizetype shared = commonPrefix(entries);
    for (SortEntry& e : entries) {
        e.number = headFrom(e.text, shared);
        e.next = headFrom(e.text, shared + 4);
        e.third = headFrom(e.text, shared + 8);
    }
}

quint64 bigEndian64(const quint8* p) {
    quint64 v = 0;
    for (int i = 0; i < 8; ++i) v = (v << 8) | p[i];
    return v;
}

bool isTextKey(TarnSortKey key) {
    return key == TarnSortKey::FileName || key == TarnSortKey::ClipName ||
           key == TarnSortKey::Project || key == TarnSortKey::Path;
}

bool isByteKey(TarnSortKey key) {
    return key == TarnSortKey::FileUID || key == TarnSortKey::MaterialUID;
}

void setDate(SortEntry& e, const TarnDatabaseItem& item, const std::vector<qint64>* dates) {
    const bool dated =
        dates ? (*dates)[e.index] != std::numeric_limits<qint64>::min() : item.DB_Date.isValid();
    if (!dated) {
        e.sub = 1;
        return;
    }
    const qint64 ms = dates ? (*dates)[e.index] : item.DB_Date.toMSecsSinceEpoch();
    e.number = quint64(ms) ^ (quint64(1) << 63);  // signed order as unsigned
}

// The item's value for `key` in `e`: a case-folded text (its heads are set
// once every text is known), a number, or the identifier's bytes (with their
// first eight).
void setField(SortEntry& e, const TarnDatabaseItem& item, TarnSortKey key,
              const std::vector<qint64>* dates) {
    switch (key) {
        case TarnSortKey::FileName:
            e.text = folded(item.DB_ClipName);
            break;
        case TarnSortKey::ClipName:
            e.text = folded(item.DB_NameInBin);
            break;
        case TarnSortKey::Project:
            e.text = folded(item.get_DB_ProjectName());
            break;
        case TarnSortKey::Path:
            e.text = folded(item.DB_itemPath);
            break;
        case TarnSortKey::FileSize:
            e.number = item.DB_filesize.value_or(0);
            break;
        case TarnSortKey::FileUID:
            e.bytes = item.filePackageUID;
            e.number = bigEndian64(e.bytes);
            break;
        case TarnSortKey::MaterialUID:
            e.bytes = item.materialPackageUID;
            e.number = bigEndian64(e.bytes);
            break;
        case TarnSortKey::Hash:
            e.number = item.hash();
            break;
        case TarnSortKey::FileDate:
            setDate(e, item, dates);
            break;
        case TarnSortKey::Compression:
            e.number = (quint64(item.compressionCode()) << 32) | item.DB_DIDResolutionID;
            break;
        case TarnSortKey::SampleRate:
            e.number = item.DB_samplerate().numerator;
            break;
        case TarnSortKey::FrameRate:
            e.number = item.DB_framerate().numerator;
            break;
        case TarnSortKey::Bits:
            e.number = item.DB_bits;
            break;
    }
}

// The field order of two entries of the same group, ascending.
int compareFields(const SortEntry& a, const SortEntry& b, TarnSortKey key) {
    if (a.number != b.number) return a.number < b.number ? -1 : 1;
    if (isTextKey(key)) {
        if (a.next != b.next) return a.next < b.next ? -1 : 1;
        if (a.third != b.third) return a.third < b.third ? -1 : 1;
        return QString::compare(a.text, b.text, Qt::CaseSensitive);
    }
    if (isByteKey(key)) return std::memcmp(a.bytes, b.bytes, TarnDatabaseItem::kUIDBytes);
    return 0;
}

}  // namespace

quint64 TarnItemComparator::textHead(QStringView text) {
    quint64 head = 0;
    for (int i = 0; i < 4; ++i) head = (head << 16) | (i < text.size() ? text[i].unicode() : 0);
    return head;
}

std::vector<qint64> TarnItemComparator::dateKeys(const QList<TarnItemPtr>& items) {
    std::vector<qint64> keys(size_t(items.size()), std::numeric_limits<qint64>::min());
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (items[i] && items[i]->DB_Date.isValid())
            keys[size_t(i)] = items[i]->DB_Date.toMSecsSinceEpoch();
    }
    return keys;
}

void TarnItemComparator::sort(QList<quint32>& indexes, const QList<TarnItemPtr>& items,
                              const std::vector<qint64>* dates) const {
    if (dates && dates->size() != size_t(items.size())) dates = nullptr;
    std::vector<SortEntry> entries(size_t(indexes.size()));
    for (qsizetype n = 0; n < indexes.size(); ++n) {
        SortEntry& e = entries[size_t(n)];
        e.index = indexes[n];
        const TarnDatabaseItem* item =
            e.index < quint32(items.size()) ? items[e.index].get() : nullptr;
        if (!item) {
            e.group = 3;
        } else if (invalidLast_ && !item->DB_isValid) {
            e.group = ascending_ ? 2 : 0;
        } else {
            e.group = 1;
            if (key_) setField(e, *item, *key_, dates);
        }
    }
    if (key_ && isTextKey(*key_)) setTextHeads(entries);
    std::stable_sort(entries.begin(), entries.end(), [&](const SortEntry& a, const SortEntry& b) {
        if (a.group != b.group) return a.group < b.group;
        if (a.group != 1) return false;
        if (a.sub != b.sub) return a.sub < b.sub;
        if (a.sub != 0 || !key_) return false;
        const int c = compareFields(a, b, *key_);
        return ascending_ ? c < 0 : c > 0;
    });
    for (qsizetype n = 0; n < indexes.size(); ++n) indexes[n] = entries[size_t(n)].index;
}
