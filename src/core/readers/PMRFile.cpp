#include "readers/PMRFile.h"

#include <QtEndian>

#include <limits>

#include "support/TarnRegularFile.h"

namespace {

constexpr quint32 kMagic = 1961;
constexpr qsizetype kHeaderSize = 12;
constexpr qsizetype kMinimumFileSize = 30;
// Fewest bytes an entry can take: a short entry is refused when fewer are left.
constexpr qsizetype kMinimumEntrySize = 29;

qsizetype identifierBytes(quint32 uidSize) {
    if (uidSize == 8) return 32;
    if (uidSize == 2) return 8;
    return 0;  // no identifier bytes; the item ignores such entries
}

}  // namespace

quint32 PMRFile::readU32(qsizetype offset) const {
    const auto* p = reinterpret_cast<const uchar*>(filedata_.constData()) + offset;
    return useByteSwap_ ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p);
}

quint16 PMRFile::readU16(qsizetype offset) const {
    const auto* p = reinterpret_cast<const uchar*>(filedata_.constData()) + offset;
    return useByteSwap_ ? qFromBigEndian<quint16>(p) : qFromLittleEndian<quint16>(p);
}

bool PMRFile::dataWithContentsOfURL(const QString& path) {
    // Offsets are 32-bit: an index of 4 GiB or more is not one the system wrote.
    std::optional<QByteArray> data =
        TarnRegularFile::readAll(path, std::numeric_limits<quint32>::max());
    return dataWithBytes(data ? std::move(*data) : QByteArray());
}

bool PMRFile::dataWithBytes(QByteArray data) {
    filedata_.clear();
    uuidLength_ = position_ = itemsCount_ = 0;
    useByteSwap_ = stopped_ = false;
    if (data.size() < kMinimumFileSize || data.size() > std::numeric_limits<quint32>::max())
        return false;

    const auto* b = reinterpret_cast<const uchar*>(data.constData());
    if (qFromLittleEndian<quint32>(b) == kMagic) {
        useByteSwap_ = false;
    } else if (qFromBigEndian<quint32>(b) == kMagic) {
        useByteSwap_ = true;
    } else {
        return false;
    }
    filedata_ = std::move(data);
    uuidLength_ = readU32(4);
    itemsCount_ = readU32(8);
    return true;
}

TarnItemPtr PMRFile::FillItem(TarnItemPtr item) {
    if (!item || itemsCount_ == 0 || stopped_) return nullptr;
    const qsizetype len = filedata_.size();
    if (position_ == 0) position_ = quint32(kHeaderSize);
    const qsizetype start = position_;

    // Each step moves `position_` on only when its field fits, so a damaged
    // entry leaves the reader inside it; `stopped_` makes the end final.
    auto fail = [this]() -> TarnItemPtr {
        stopped_ = true;
        return nullptr;
    };
    if (start >= len || start + (kMinimumEntrySize - 1) >= len) return fail();

    const qsizetype uidBytes = identifierBytes(uuidLength_);
    qsizetype offset = start + uidBytes;
    if (offset >= len) return fail();
    position_ = quint32(offset);

    // Name: 1..255 single-byte characters.
    if (offset + 2 >= len) return fail();
    const quint16 nameLength = readU16(offset);
    if (nameLength == 0 || nameLength > 255 || offset + 2 + nameLength >= len) return fail();
    offset += 2 + nameLength;
    position_ = quint32(offset);

    // Project: 0..64 characters.
    if (offset + 2 >= len) return fail();
    const quint16 projectLength = readU16(offset);
    if (projectLength > 64 || offset + 2 + projectLength >= len) return fail();
    offset += 2 + projectLength;
    position_ = quint32(offset);

    offset += uidBytes;
    if (offset >= len) return fail();
    position_ = quint32(offset);

    // A four-byte trailer closes the entry; it travels with the entry's bytes.
    if (offset + 3 >= len) return fail();
    offset += 4;
    position_ = quint32(offset);

    item->setupWithPmrBytes(filedata_.constData() + start, offset - start, uuidLength_,
                            useByteSwap_);
    return item;
}
