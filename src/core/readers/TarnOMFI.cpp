#include "readers/TarnOMFI.h"

#include <QSet>
#include <QtEndian>

#include <algorithm>
#include <cstring>

#include "items/TarnDatabaseItem.h"
#include "log/xConsole.h"
#include "readers/TarnMacText.h"
#include "status/TarnProgressIndicator.h"
#include "status/TarnStatusViewController.h"
#include "support/TarnFileName.h"
#include "support/TarnRegularFile.h"

namespace {

constexpr quint8 kMagic[8] = {0xA4, 0x43, 0x4D, 0xA5, 0x48, 0x64, 0x72, 0xD7};

// Object 1 is the container's own TOC object; in a media database it carries
// the identifier tables: clips, a second table, files.
constexpr quint32 kTocObject = 1;
constexpr quint32 kClipTable = 0x101E9;
constexpr quint32 kSecondTable = 0x10202;
constexpr quint32 kFileTable = 0x10216;
constexpr quint32 kGlobalTypeName = 23;
constexpr quint32 kGlobalPropName = 24;
// Identifier table: a 16-bit count, then 20-byte records with the 8-byte key at
// 6 + 20k and the object ID at 14 + 20k.
constexpr quint32 kTableKeyOffset = 6;
constexpr quint32 kTableObjectOffset = 14;
constexpr quint32 kTableRecordSize = 20;
// Object lists: a 16-bit count, then 8-byte records whose object ID is at 2 + 8k.
constexpr quint32 kListObjectOffset = 2;
constexpr quint32 kListRecordSize = 8;

constexpr quint32 kNameProperties[] = {66145, 66175, 66200, 66205, 66273, 66135};
constexpr quint32 kUsageCode = 66365;
constexpr quint32 kEditRate = 66195;
constexpr quint32 kAttributes = 66190;
constexpr quint32 kAttributeList = 66155;
constexpr quint32 kAttributeName = 66135;
constexpr quint32 kDescriptor = 66355;
constexpr quint32 kSourceList = 66575;
constexpr quint32 kSourceReference = 66550;
constexpr quint32 kSourceEntries = 66420;
constexpr quint32 kSourceIdentifier = 66390;
constexpr quint32 kAudioRate = 67405;
constexpr quint32 kAudioMarker = 66095;
constexpr quint32 kSampleRate = 66330;
constexpr quint32 kAudioBits = 67401;
constexpr quint32 kPictureCode = 67801;
constexpr quint32 kResolutionID = 67831;
constexpr quint32 kPictureRate = 67821;
constexpr quint32 kPictureBits = 67865;

constexpr quint32 kAudioCode = 0x4455415F;  // "_AUD" as stored
constexpr qint32 kImportedUsageCode = 15;
constexpr int kObjectsPerProgressStep = 256;

// Work allowances: a unit is one TOC entry looked at or one list record
// visited. A sound database needs a small part of one pass over its bytes for
// all its items; the allowances are many passes.
constexpr quint64 kWorkPerByte = 16;
constexpr quint64 kBaseWork = 1u << 20;
constexpr quint64 kItemWorkPerByte = 2;
constexpr quint64 kBaseItemWork = 1u << 16;
// Answers that took more work than this are remembered; cheaper ones are
// worked out again, which costs no more than this each time.
constexpr quint64 kWorthRemembering = 32;

bool isNameProperty(quint32 propertyID) {
    for (quint32 p : kNameProperties) {
        if (p == propertyID) return true;
    }
    return false;
}

bool startsWith(const TarnOMFI::Value& value, const char* prefix) {
    const auto n = quint32(std::strlen(prefix));
    return value && value.length >= n && std::memcmp(value.data, prefix, n) == 0;
}

bool progressShown(TarnProgressIndicator* indicator) {
    return indicator && TarnStatusViewController::getTheController()->isRunning();
}

}  // namespace

TarnOMFI::TarnOMFI() = default;
TarnOMFI::~TarnOMFI() = default;

bool TarnOMFI::openFile(const QString& path, TarnProgressIndicator* indicator) {
    indicator_ = indicator;
    localWorkInProgressIndicator = indicator;
    clipTree_ = std::make_unique<UIDtoBentoObjTree>();
    secondTree_ = std::make_unique<UIDtoBentoObjTree>();
    fileTree_ = std::make_unique<UIDtoBentoObjTree>();
    objectTree_ = std::make_unique<TarnRBTree_u32t_u32t>();
    objectStarts_.clear();
    objectsInOrder_ = true;
    objectByID_.clear();
    firstObjectID_ = 0;
    compositions_ = 0;
    entryCount_ = 0;
    clipTableSeen_ = false;
    names_.clear();
    label_ = toc_ = nullptr;
    clipAnswers_.clear();
    fileAnswers_.clear();
    importAnswers_.clear();
    textAnswers_.clear();
    work_ = workLimit_ = databaseAllowance_ = itemAllowance_ = 0;

    std::optional<QByteArray> data = TarnRegularFile::readAll(path);
    if (!data) return false;
    data_ = std::move(*data);
    bytes_ = reinterpret_cast<const quint8*>(data_.constData());
    size_ = data_.size();
    if (size_ < kMinimumFileSize) return false;
    label_ = bytes_ + size_ - kLabelSize;
    if (std::memcmp(label_, kMagic, sizeof kMagic) != 0) return false;

    littleEndian_ = label_[10] == 'I' && label_[11] == 'I';
    if (qFromLittleEndian<quint16>(label_ + 12) == 2) {
        TARN_LOG(QStringLiteral("OMF 2 found at %1").arg(path));
        TARN_LOG(QStringLiteral("OMF 2 not supported"));
        return false;
    }

    const quint32 tocOffset = qFromLittleEndian<quint32>(label_ + 16);
    const quint32 tocSize = qFromLittleEndian<quint32>(label_ + 20);
    if (qsizetype(tocSize) > size_) return false;
    databaseAllowance_ = kWorkPerByte * quint64(size_) + kBaseWork;
    itemAllowance_ = kItemWorkPerByte * quint64(size_) + kBaseItemWork;
    workLimit_ = databaseAllowance_;
    // Entries that would run past the end of the file are not read.
    if (qsizetype(tocOffset) <= size_) {
        toc_ = bytes_ + tocOffset;
        const qsizetype fitting = (size_ - qsizetype(tocOffset)) / kTocEntrySize;
        entryCount_ = quint32(qMin<qsizetype>(tocSize / kTocEntrySize, fitting));
    }
    if (!readTOC()) return false;
    // A media database is nothing without its clip table; an OMF media file
    // needs only objects.
    const bool isDatabase = TarnFileName::hasExtension(path, QLatin1String("mdb"));
    return !isDatabase || clipTableSeen_;
}

quint32 TarnOMFI::howManyBentoObjectsV01() const {
    quint32 objects = 0;
    for (quint32 i = 0; i < entryCount_; ++i) {
        if (i == 0 || objectIDAt(i) != objectIDAt(i - 1)) ++objects;
    }
    return objects;
}

bool TarnOMFI::readTOC() {
    const quint32 objects = howManyBentoObjectsV01();
    if (objects == 0) return false;

    const double steps = qMax(1.0, double(objects / kObjectsPerProgressStep));
    if (progressShown(indicator_)) {
        indicator_->setIndeterminate(false);
        indicator_->setMinValue(0);
        indicator_->setMaxValue(steps);
        indicator_->setDoubleValue(0);
    }
    if (MustReadDictionary) InitDictionary();

    quint32 seen = 0;
    for (quint32 i = 0; i < entryCount_; ++i) {
        const quint32 objectID = objectIDAt(i);
        if (i == 0 || objectID != objectIDAt(i - 1)) {
            if (!objectStarts_.empty() && objectID <= objectStarts_.back().first)
                objectsInOrder_ = false;
            objectStarts_.emplace_back(objectID, i);
            ++seen;
            if (seen % kObjectsPerProgressStep == 0 && progressShown(indicator_)) {
                indicator_->setDoubleValue(double(seen / kObjectsPerProgressStep));
            }
        }
        const quint32 propertyID = propertyIDAt(i);
        if (objectID == kTocObject) {
            if (propertyID == kClipTable) {
                clipTableSeen_ = true;
                if (clipTree_->isEmpty()) readIdentifierTable(i, *clipTree_, true);
            } else if (propertyID == kSecondTable && secondTree_->isEmpty()) {
                readIdentifierTable(i, *secondTree_, false);
            } else if (propertyID == kFileTable && fileTree_->isEmpty()) {
                readIdentifierTable(i, *fileTree_, false);
            }
        }
        if (propertyID == kGlobalTypeName || propertyID == kGlobalPropName) readGlobalName(i);
    }
    if (!objectsInOrder_) {
        for (const auto& [objectID, index] : objectStarts_)
            objectTree_->TreeInsert(objectID, index);
        objectStarts_.clear();
    } else if (!objectStarts_.empty()) {
        // A table at most four times the objects (and a little) is worth it.
        const quint64 range = quint64(objectStarts_.back().first) - objectStarts_.front().first + 1;
        if (range <= 4 * quint64(objectStarts_.size()) + 1024) {
            firstObjectID_ = objectStarts_.front().first;
            objectByID_.assign(size_t(range), kNoIndex);
            for (const auto& [objectID, index] : objectStarts_)
                objectByID_[objectID - firstObjectID_] = index;
        }
    }
    if (indicator_) indicator_->setDoubleValue(steps);
    return true;
}

void TarnOMFI::readIdentifierTable(quint32 index, UIDtoBentoObjTree& tree, bool countsClips) {
    const Value value = valueFor(index);
    const std::optional<quint16> count = countAt(value);
    if (!count) return;
    for (quint32 k = 0; k < *count; ++k) {
        const quint32 keyAt = kTableKeyOffset + kTableRecordSize * k;
        const quint32 objectAt = kTableObjectOffset + kTableRecordSize * k;
        if (quint64(objectAt) + 4 > value.length) break;
        tree.insert(qFromLittleEndian<quint64>(value.data + keyAt),
                    qFromLittleEndian<quint32>(value.data + objectAt));
        if (countsClips) ++compositions_;
    }
}

void TarnOMFI::readGlobalName(quint32 index) {
    if (tocWord(index, 5) != 1) return;
    const Value value = valueFor(index);
    if (!value) return;
    QString name = QString::fromLatin1(reinterpret_cast<const char*>(value.data), value.length);
    while (name.endsWith(QChar(0))) name.chop(1);
    names_.insert(objectIDAt(index), name);
}

void TarnOMFI::InitDictionary() {
    static const std::pair<quint32, const char*> kStandardNames[] = {
        {1, "CM_StdObjID_TOC"},
        {2, "CM_StdObjID_TOC_Seed"},
        {3, "CM_StdObjID_TOC_MinSeed"},
        {4, "CM_StdObjID_TOC_Object"},
        {5, "CM_StdObjID_TOC_Container"},
        {6, "CM_StdObjID_TOC_Deleted"},
        {7, "CM_StdObjID_TOC_Free"},
        {8, "CM_StdObjID_TOC_NewValuesTOC"},
        {9, "CM_StdObjID_TOC_Target"},
        {10, "CM_StdObjID_TOC_DeleteList"},
        {19, "CM_StdObjID_TOC_Type"},
        {21, "CM_StdObjID_7BitASCII"},
        {22, "CM_StdObjID_8BitASCII"},
        {23, "CM_StdObjID_GlobalTypeName"},
        {24, "CM_StdObjID_GlobalPropName"},
        {25, "CM_StdObjID_DynamicValues"},
        {26, "CM_StdObjID_BaseTypes"},
        {27, "CM_StdObjID_BaseTypeList"},
        {28, "CM_StdObjID_TargetContainer"},
        {29, "CM_StdObjID_ValueUpdates"},
        {30, "CM_StdObjID_UpdatesData"},
        {31, "CM_StdObjID_ObjReferences"},
        {32, "CM_StdObjID_ObjRefData"},
        {40, "CM_StdObjID_32BitImmValue"},
        {41, "CM_StdObjID_16BitImmValue"},
        {42, "CM_StdObjID_8BitImmValue"},
    };
    for (const auto& [id, name] : kStandardNames) names_.insert(id, QString::fromLatin1(name));
}

const quint8* TarnOMFI::pDataFor(quint32 index) const {
    return valueFor(index).data;
}

TarnOMFI::Value TarnOMFI::valueFor(quint32 index) const {
    if (index == kNoIndex || index >= entryCount_) return {};
    const quint32 length = tocWord(index, 4);
    if (length == 0) return {};
    if (tocWord(index, 5) == 1) {
        const quint64 offset = tocWord(index, 3);
        if (offset + length > quint64(size_)) return {};
        return {bytes_ + offset, length};
    }
    // Immediate: the value sits in the entry itself, from word 3 to the entry's end.
    const qsizetype entry = qsizetype(index) * kTocEntrySize;
    if (length > kTocEntrySize - 12 || toc_ + entry + 24 > bytes_ + size_) return {};
    return {toc_ + entry + 12, length};
}

quint32 TarnOMFI::lookForProperty(quint32 propertyID, quint32 index) const {
    if (index >= entryCount_) return 0;
    const quint32 objectID = objectIDAt(index);
    for (quint32 i = index; i < entryCount_ && objectIDAt(i) == objectID && spend(); ++i) {
        if (propertyIDAt(i) == propertyID) return i;
    }
    return 0;
}

quint32 TarnOMFI::tocIndexForObject(quint32 objectID) const {
    if (!objectTree_) return kNoIndex;
    quint32 index = kNoIndex;
    if (!objectByID_.empty()) {
        if (objectID >= firstObjectID_ && objectID - firstObjectID_ < objectByID_.size())
            index = objectByID_[objectID - firstObjectID_];
    } else if (objectsInOrder_) {
        const auto at = std::lower_bound(
            objectStarts_.begin(), objectStarts_.end(), objectID,
            [](const std::pair<quint32, quint32>& start, quint32 id) { return start.first < id; });
        if (at != objectStarts_.end() && at->first == objectID) index = at->second;
    } else {
        index = objectTree_->TreefindNode(objectID);
    }
    return index < entryCount_ ? index : kNoIndex;
}

QString TarnOMFI::GetStringForObjectAt(quint32 index) const {
    if (index >= entryCount_) return {};
    const quint32 objectID = objectIDAt(index);
    for (quint32 i = index; i < entryCount_ && objectIDAt(i) == objectID && spend(); ++i) {
        if (!isNameProperty(propertyIDAt(i))) continue;
        const Value value = valueFor(i);
        if (!value) return {};
        return textFromBytes(value.data, value.length);
    }
    return {};
}

QString TarnOMFI::textFromBytes(const quint8* bytes, quint32 length) const {
    quint32 begin = 0;
    quint32 end = length;
    while (begin < end && bytes[begin] == 0) ++begin;
    while (end > begin && bytes[end - 1] == 0) --end;
    const auto* text = reinterpret_cast<const char*>(bytes + begin);
    // Little-endian containers come from systems that write plain ASCII; the
    // upper half is kept byte for byte, as the media index's names are.
    if (littleEndian_) return QString::fromLatin1(text, end - begin);
    return TarnMacText::toString(TarnMacText::Encoding::Roman, QByteArrayView(text, end - begin));
}

QString TarnOMFI::getDescriptionForTOCindex(quint32 index) const {
    if (index >= entryCount_) return QStringLiteral("TOC index %1 out of range").arg(index);
    return QStringLiteral("TOC[%1] object %2 property %3 type %4 value %5 length %6 storage %7")
        .arg(index)
        .arg(objectIDAt(index))
        .arg(propertyIDAt(index))
        .arg(tocWord(index, 2))
        .arg(tocWord(index, 3))
        .arg(tocWord(index, 4))
        .arg(tocWord(index, 5));
}

TarnOMFI::Value TarnOMFI::propertyValue(quint32 propertyID, quint32 objectIndex) const {
    const quint32 at = lookForProperty(propertyID, objectIndex);
    return at == 0 ? Value{} : valueFor(at);
}

std::optional<quint32> TarnOMFI::numberAt(const Value& value, quint32 offset) const {
    if (!value || quint64(offset) + 4 > value.length) return std::nullopt;
    return littleEndian_ ? qFromLittleEndian<quint32>(value.data + offset)
                         : qFromBigEndian<quint32>(value.data + offset);
}

std::optional<quint16> TarnOMFI::countAt(const Value& value) const {
    if (!value || value.length < 2) return std::nullopt;
    return littleEndian_ ? qFromLittleEndian<quint16>(value.data)
                         : qFromBigEndian<quint16>(value.data);
}

std::optional<quint32> TarnOMFI::storedWordAt(const Value& value, quint32 offset) {
    if (!value || quint64(offset) + 4 > value.length) return std::nullopt;
    return qFromLittleEndian<quint32>(value.data + offset);
}

// The object named by the first 32-bit value of a property: a number, in the
// container's byte order.
quint32 TarnOMFI::referencedObjectIndex(quint32 propertyID, quint32 objectIndex) const {
    const std::optional<quint32> objectID = numberAt(propertyValue(propertyID, objectIndex), 0);
    return objectID ? tocIndexForObject(*objectID) : kNoIndex;
}

bool TarnOMFI::spend() const {
    if (work_ >= workLimit_) return false;
    ++work_;
    return true;
}

void TarnOMFI::addInfoToItem(TarnDatabaseItem* item) {
    if (!item || !clipTree_ || entryCount_ == 0) return;
    const quint64 materialKey = qFromLittleEndian<quint64>(item->DB_materialPackageUID() + 16);
    const quint64 fileKey = qFromLittleEndian<quint64>(item->DB_filePackageUID() + 16);

    quint32 clip = kNoIndex;
    if (const auto objectID = clipTree_->find(materialKey)) clip = tocIndexForObject(*objectID);
    quint32 fileObject = kNoIndex;
    if (const auto objectID = fileTree_->find(fileKey)) fileObject = tocIndexForObject(*objectID);

    // One item may take its own allowance out of what the database has left.
    workLimit_ = qMin(databaseAllowance_, work_ + itemAllowance_);
    if (clip != kNoIndex) {
        const ClipAnswer answer = clipAnswer(clip);
        item->DB_NameInBin = answer.name;
        if (answer.usageCode) item->DB_usageCode = qint32(*answer.usageCode);
        if (answer.frameRate) {
            item->setFrameRateNumerator(answer.frameRate->numerator, answer.frameRate->denominator);
        }
        if (answer.imported) item->DB_usageCode = kImportedUsageCode;
    }
    if (fileObject != kNoIndex) {
        const FileAnswer answer = fileAnswer(fileObject);
        if (!answer.project.isNull()) item->DB_ProjectName = answer.project;
        if (const auto& record = answer.compression) {
            qToLittleEndian<quint32>(record->fourCC, item->DB_CompressionFourCC());
            item->DB_DIDResolutionID = record->resolutionID;
            item->setSampleRateNumerator(record->numerator, record->denominator);
            item->DB_bits = record->bits;
        }
    }
    workLimit_ = databaseAllowance_;
}

TarnOMFI::ClipAnswer TarnOMFI::clipAnswer(quint32 clipIndex) const {
    const auto known = clipAnswers_.constFind(clipIndex);
    if (known != clipAnswers_.constEnd()) return *known;
    const quint64 before = work_;
    ClipAnswer answer;
    answer.name = GetStringForObjectAt(clipIndex);
    answer.usageCode = numberAt(propertyValue(kUsageCode, clipIndex), 0);
    const Value rate = propertyValue(kEditRate, clipIndex);
    if (rate && rate.length >= 8)
        answer.frameRate = TarnRate{*numberAt(rate, 0), *numberAt(rate, 4)};
    answer.imported = hasImportSetting(clipIndex);
    if (work_ - before > kWorthRemembering) clipAnswers_.insert(clipIndex, answer);
    return answer;
}

TarnOMFI::FileAnswer TarnOMFI::fileAnswer(quint32 fileIndex) const {
    const auto known = fileAnswers_.constFind(fileIndex);
    if (known != fileAnswers_.constEnd()) return *known;
    const quint64 before = work_;
    FileAnswer answer;
    answer.project = getProjectNameForObjAt(fileIndex);
    CompressionData record;
    if (getCompression_data(&record, fileIndex)) answer.compression = record;
    if (work_ - before > kWorthRemembering) fileAnswers_.insert(fileIndex, answer);
    return answer;
}

QString TarnOMFI::remembered(AnswerKind kind, quint32 index, Question question) const {
    const quint64 key = quint64(kind) << 32 | index;
    const auto known = textAnswers_.constFind(key);
    if (known != textAnswers_.constEnd()) return *known;
    const quint64 before = work_;
    const QString answer = (this->*question)(index);
    if (work_ - before > kWorthRemembering) textAnswers_.insert(key, answer);
    return answer;
}

bool TarnOMFI::visitListedObjects(const Value& list, bool lastFirst,
                                  const std::function<bool(quint32)>& visit) const {
    const std::optional<quint16> count = countAt(list);
    if (!count) return false;
    // Records that fit in the value.
    const quint32 fitting = list.length < kListObjectOffset + 4
                                ? 0
                                : (list.length - kListObjectOffset - 4) / kListRecordSize + 1;
    const quint32 n = qMin<quint32>(*count, fitting);
    // An object listed again gives the same answer; long lists skip repeats so
    // that a damaged list cannot multiply the work.
    QSet<quint32> seen;
    for (quint32 step = 0; step < n && spend(); ++step) {
        const quint32 k = lastFirst ? n - 1 - step : step;
        const quint32 objectID = *storedWordAt(list, kListObjectOffset + kListRecordSize * k);
        if (n > 8) {
            if (seen.contains(objectID)) continue;
            seen.insert(objectID);
        }
        const quint32 index = tocIndexForObject(objectID);
        if (index != kNoIndex && visit(index)) return true;
    }
    return false;
}

bool TarnOMFI::hasImportSetting(quint32 clipIndex) const {
    const quint32 list = referencedObjectIndex(kAttributes, clipIndex);
    if (list == kNoIndex) return false;
    const auto known = importAnswers_.constFind(list);
    if (known != importAnswers_.constEnd()) return *known;
    const quint64 before = work_;
    const bool imported =
        visitListedObjects(propertyValue(kAttributeList, list), false, [&](quint32 attribute) {
            return startsWith(propertyValue(kAttributeName, attribute), "_IMPORTSETTING");
        });
    if (work_ - before > kWorthRemembering) importAnswers_.insert(list, imported);
    return imported;
}

QString TarnOMFI::getProjectAttributeForObjectAt(quint32 index) const {
    const quint32 list = referencedObjectIndex(kAttributes, index);
    if (list == kNoIndex) return {};
    return remembered(kProjectOfList, list, &TarnOMFI::projectOfAttributeList);
}

QString TarnOMFI::projectOfAttributeList(quint32 listIndex) const {
    // The last project attribute wins: look from the end.
    QString project;
    visitListedObjects(propertyValue(kAttributeList, listIndex), true, [&](quint32 attribute) {
        const quint32 nameAt = lookForProperty(kAttributeName, attribute);
        if (nameAt == 0 || !startsWith(valueFor(nameAt), "_PJ")) return false;
        // The project's name is the attribute's next entry.
        const quint32 next = nameAt + 1;
        if (next < entryCount_ && objectIDAt(next) == objectIDAt(nameAt)) {
            project = GetStringForObjectAt(next);
        }
        return true;
    });
    return project;
}

QString TarnOMFI::getProjectNameForObjAt(quint32 index) const {
    const QString own = getProjectAttributeForObjectAt(index);
    if (!own.isNull()) return own;
    // Else through the sources: each listed object refers to an object whose
    // list holds source identifiers; a source that the file table knows may
    // carry the project.
    return lastProjectAmong(propertyValue(kSourceList, index), kProjectOfListed,
                            &TarnOMFI::projectOfListedObject);
}

QString TarnOMFI::projectOfListedObject(quint32 listedIndex) const {
    const quint32 reference = referencedObjectIndex(kSourceReference, listedIndex);
    if (reference == kNoIndex) return {};
    return remembered(kProjectOfEntries, reference, &TarnOMFI::projectOfSourceEntries);
}

QString TarnOMFI::projectOfSourceEntries(quint32 referenceIndex) const {
    return lastProjectAmong(propertyValue(kSourceEntries, referenceIndex), kProjectOfIdentifier,
                            &TarnOMFI::projectOfSourceIdentifier);
}

QString TarnOMFI::lastProjectAmong(const Value& list, AnswerKind kind, Question question) const {
    const std::optional<quint16> count = countAt(list);
    QString project;
    for (quint32 k = 0; count && k < *count && spend(); ++k) {
        const auto objectID = storedWordAt(list, kListObjectOffset + kListRecordSize * k);
        if (!objectID) break;
        const quint32 object = tocIndexForObject(*objectID);
        if (object == kNoIndex) continue;
        const QString found = remembered(kind, object, question);
        if (!found.isNull()) project = found;
    }
    return project;
}

QString TarnOMFI::projectOfSourceIdentifier(quint32 objectIndex) const {
    const quint32 at = lookForProperty(kSourceIdentifier, objectIndex);
    if (at == 0) return {};
    const Value uid = valueFor(at);
    if (!uid) return {};
    quint64 key = 0;
    if (uid.length == 32) {
        key = qFromLittleEndian<quint64>(uid.data + 16);
    } else if (uid.length == 12) {
        key = qFromLittleEndian<quint64>(uid.data + 4);
    } else {
        xConsole::xPrint(
            QStringLiteral("ERROR IN OMFI PARSER. UID capacity is::%1l\n").arg(uid.length));
        xConsole::xPrint(QStringLiteral("[TarnOMFI getProjectNameForObjAt]"));
        xConsole::xPrint(getDescriptionForTOCindex(at) + QLatin1Char('\n'));
        return {};
    }
    const auto fileObject = fileTree_->find(key);
    if (!fileObject) return {};
    const quint32 source = tocIndexForObject(*fileObject);
    return source == kNoIndex ? QString() : getProjectAttributeForObjectAt(source);
}

bool TarnOMFI::getCompression_data(CompressionData* record, quint32 index) const {
    if (!record) return false;
    *record = CompressionData{};
    const quint32 descriptor = referencedObjectIndex(kDescriptor, index);
    if (descriptor == kNoIndex) return false;
    if (audioCompression(record, descriptor)) return true;
    return pictureCompression(record, descriptor);
}

bool TarnOMFI::audioCompression(CompressionData* record, quint32 descriptor) const {
    quint32 rateAt = lookForProperty(kAudioRate, descriptor);
    if (rateAt == 0 && lookForProperty(kAudioMarker, descriptor) != 0) {
        rateAt = lookForProperty(kSampleRate, descriptor);
    }
    if (rateAt == 0) return false;
    record->fourCC = kAudioCode;
    const Value rate = valueFor(rateAt);
    if (rate && rate.length >= 8) {
        record->numerator = *numberAt(rate, 0);
        record->denominator = *numberAt(rate, 4);
    }
    if (const auto bits = numberAt(propertyValue(kAudioBits, descriptor), 0)) record->bits = *bits;
    return true;
}

bool TarnOMFI::pictureCompression(CompressionData* record, quint32 descriptor) const {
    const auto code = storedWordAt(propertyValue(kPictureCode, descriptor), 0);
    if (!code) return false;
    record->fourCC = *code;
    if (const auto id = numberAt(propertyValue(kResolutionID, descriptor), 0)) {
        record->resolutionID = *id;
    }
    const quint32 rateAt = lookForProperty(kPictureRate, descriptor);
    if (rateAt == 0) return true;
    if (lookForProperty(kSampleRate, descriptor) != 0) {
        if (const auto rate = numberAt(valueFor(rateAt), 0)) record->numerator = *rate;
        record->denominator = 1;
        if (const auto bits = numberAt(propertyValue(kPictureBits, descriptor), 0)) {
            record->bits = *bits;
        }
    }
    return true;
}
