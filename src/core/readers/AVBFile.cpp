#include "readers/AVBFile.h"

#include <QHash>
#include <QtEndian>

#include <cstring>

#include "log/xConsole.h"
#include "readers/TarnMacText.h"
#include "support/TarnRegularFile.h"

namespace {

// 06 00 "Domain" "DJBO": the first object of every bin is its header.
constexpr char kBinHeader[12] = {0x06, 0x00, 'D', 'o', 'm', 'a', 'i', 'n', 'D', 'J', 'B', 'O'};
constexpr qsizetype kMinimumBinSize = 119;
constexpr qsizetype kFirstChunk = 119;
constexpr qsizetype kCreatorOffset = 71;
// A reference starting in the last 32 bytes of a file is not taken.
constexpr qsizetype kTailGuard = 32;
constexpr quint16 kReferenceKind = 0x0202;

const uchar* at(const QByteArray& data, qsizetype offset) {
    return reinterpret_cast<const uchar*>(data.constData()) + offset;
}

quint16 u16At(const QByteArray& data, qsizetype offset) {
    return qFromLittleEndian<quint16>(at(data, offset));
}

quint32 u32At(const QByteArray& data, qsizetype offset) {
    return qFromLittleEndian<quint32>(at(data, offset));
}

bool tagAt(const QByteArray& data, qsizetype offset, const char* tag) {
    return std::memcmp(data.constData() + offset, tag, 4) == 0;
}

// At `pos` (with at least 18 bytes left) stands a media reference record.
bool isReference(const QByteArray& data, qsizetype pos) {
    return tagAt(data, pos, "LMSM") && u16At(data, pos + 8) == kReferenceKind;
}

TarnItemPtr itemForReference(const QByteArray& data, qsizetype pos) {
    auto item = std::make_shared<TarnDatabaseItem>();
    std::memcpy(item->DB_filePackageUID() + 16, data.constData() + pos + 10, 8);
    return item;
}

// Bin items carry no path, so the item's full equality (identifier and path)
// never holds between two of them. What a bin says is "this file", and a file
// is its identifier: items are merged when equal by identifier (hash, then
// isEqualByUUID), which is the item's equality reduced to the part a bin
// holds. The first reference keeps its place.
void addUnique(QList<TarnItemPtr>& set, QMultiHash<quint32, qsizetype>& index, TarnItemPtr item) {
    const quint32 h = item->hash();
    for (auto it = index.constFind(h); it != index.constEnd() && it.key() == h; ++it) {
        if (set[it.value()]->isEqualByUUID(item.get())) return;
    }
    index.insert(h, set.size());
    set.append(std::move(item));
}

// Text of up to `length` bytes at `offset`, cut at the end of the file.
QByteArray bytesAt(const QByteArray& data, qsizetype offset, qsizetype length) {
    if (offset >= data.size() || length <= 0) return {};
    return data.mid(offset, qMin(length, data.size() - offset));
}

QString hex8(quint64 v) {
    return QStringLiteral("%1").arg(v, 8, 16, QLatin1Char('0'));
}

}  // namespace

bool AVBFile::dataWithContentsOfURL(const QString& path) {
    std::optional<QByteArray> data = TarnRegularFile::readAll(path);
    if (!dataWithBytes(data ? std::move(*data) : QByteArray())) return false;
    TARN_LOG(QStringLiteral("Opened avid BIN %1").arg(path));
    return true;
}

bool AVBFile::dataWithBytes(QByteArray data) {
    filedata_.clear();
    if (data.size() < kMinimumBinSize || std::memcmp(data.constData(), kBinHeader, 12) != 0)
        return false;
    filedata_ = std::move(data);
    return true;
}

QList<TarnItemPtr> AVBFile::getUIDS() const {
    QList<TarnItemPtr> set;
    const qsizetype len = filedata_.size();
    if (len - kTailGuard < kFirstChunk + 1) return set;
    QMultiHash<quint32, qsizetype> index;
    // Byte by byte, trusting no chunk length: a reference is found in any chunk.
    for (qsizetype pos = kFirstChunk; pos < len - kTailGuard; ++pos) {
        if (isReference(filedata_, pos)) {
            addUnique(set, index, itemForReference(filedata_, pos));
            pos += 8;
        }
    }
    return set;
}

QList<TarnItemPtr> AVBFile::getAMAUIDSold() const {
    QList<TarnItemPtr> set;
    const qsizetype len = filedata_.size();
    if (len >= 32 && len <= 64) return set;
    QMultiHash<quint32, qsizetype> index;
    qsizetype pos = 32;
    while (pos < len - kTailGuard) {
        if (!isReference(filedata_, pos)) {
            ++pos;
            continue;
        }
        TarnItemPtr item = itemForReference(filedata_, pos);
        TARN_LOG(QStringLiteral("%1 %2 Found at pos %3")
                     .arg(hex8(u32At(filedata_, pos + 10)), hex8(u32At(filedata_, pos + 14)))
                     .arg(pos));
        const quint16 nameLength = u16At(filedata_, pos + 18);
        if (nameLength != 0 && tagAt(filedata_, pos + 20, "AMA ")) {
            const QString folder = TarnMacText::toString(TarnMacText::Encoding::Cyrillic,
                                                         bytesAt(filedata_, pos + 20, nameLength));
            TARN_LOG(QStringLiteral("foundAMA Folder:: %1").arg(folder));
            item->DB_isAMA = true;
        }
        addUnique(set, index, std::move(item));
        pos += 19;
    }
    return set;
}

QList<TarnItemPtr> AVBFile::getAMAUIDS() const {
    const qsizetype len = filedata_.size();
    TARN_LOG(QStringLiteral("avb::0001::Bin header matched pattern"));
    TARN_LOG(QStringLiteral("<Domain>"));
    if (len >= 12 && tagAt(filedata_, 8, "DJBO")) {
        const QByteArray creator =
            len > kCreatorOffset + 1
                ? bytesAt(filedata_, kCreatorOffset, u16At(filedata_, kCreatorOffset))
                : QByteArray();
        TARN_LOG(QStringLiteral("<%1 :: DJBO, len 0x6f> created with \"%2\"")
                     .arg(hex8(8), QString::fromLatin1(creator)));
    }

    QString dump = QStringLiteral("\n");
    qint64 pos = kFirstChunk;
    if (len >= kFirstChunk + 1) {
        // The walk trusts the chunk lengths; one running past the end ends it.
        while (pos < len) {
            if (pos + 8 > len) break;  // no room for a chunk header
            const bool named = tagAt(filedata_, pos, "ELIF") || tagAt(filedata_, pos, "FNIW");
            const quint32 bodyLength = u32At(filedata_, pos + 4);
            if (named) {
                const QString tag = QString::fromLatin1(filedata_.constData() + pos, 4);
                const auto byteAt = [&](qint64 offset) {
                    return offset < len ? uchar(filedata_[offset]) : 0;
                };
                const quint16 textLength = pos + 12 <= len ? u16At(filedata_, pos + 10) : 0;
                const auto hex2 = [](uchar b) {
                    return QStringLiteral("%1").arg(b, 2, 16, QLatin1Char('0'));
                };
                dump += QStringLiteral("<%1 :: %2, len %3> b+8 = %4 b+9 = %5\n")
                            .arg(hex8(quint64(pos)), tag, hex8(bodyLength), hex2(byteAt(pos + 8)),
                                 hex2(byteAt(pos + 9)));
                dump += QStringLiteral("-1-> %1\n")
                            .arg(QString::fromLatin1(bytesAt(filedata_, pos + 12, textLength)));
            }
            pos += 8 + qint64(bodyLength);
        }
    }
    TARN_LOG(dump);
    TARN_LOG(QStringLiteral("<%1 :: Bin EOF").arg(hex8(quint64(pos))));
    return {};
}
