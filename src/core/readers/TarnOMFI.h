#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QtEndian>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "items/TarnDatabaseItem.h"
#include "items/TarnRBTree_u32t_u32t.h"
#include "readers/TarnMediaReader.h"
#include "readers/UIDtoBentoObjTree.h"

// Reader of Bento containers: OMF 1 media files and the editing system's media
// databases (msmMMOB.mdb). The file is read whole; its table of contents (TOC)
// is indexed once into ordered trees so that completing an item costs a few
// lookups and short forward scans. OMF 2 containers are recognised and refused.
//
// Byte order: TOC words, the label's TOC position, identifiers and the object
// IDs in identifier tables and object lists are used as stored, little-endian.
// Counts and numbers inside values follow the label's byte order, and so does
// an object named by a property's first 32-bit value (attribute list,
// descriptor, source reference).
//
// Work: answers are remembered per object, so that items mapped to the same
// clip or file object cost a lookup, and every scan counts against a
// allowance that grows with the file's size, per item and per database. A
// damaged database cannot make completing items cost more than a few passes
// over its bytes; past the allowance, answers are absent.
class TarnOMFI : public TarnMediaReader {
  public:
    static constexpr quint32 kNoIndex = 0xFFFFFFFFu;
    static constexpr qsizetype kLabelSize = 24;
    static constexpr qsizetype kTocEntrySize = 24;
    static constexpr qsizetype kMinimumFileSize = 128;

    // The bytes of one property value, bounds-checked; empty when absent.
    struct Value {
        const quint8* data = nullptr;
        quint32 length = 0;
        explicit operator bool() const { return data != nullptr; }
    };

    // What a file object's descriptor says about its essence.
    struct CompressionData {
        quint32 fourCC = 0;  // as stored: "_AUD" is 0x4455415F
        quint32 numerator = 0;
        quint32 denominator = 0;
        quint32 resolutionID = 0;
        quint32 bits = 0;
    };

    TarnOMFI();
    ~TarnOMFI() override;

    unsigned getType() const override { return 1; }
    bool openFile(const QString& path, TarnProgressIndicator* indicator) override;
    unsigned capabilities() const override { return kAddInfoToItem; }
    // Fills clip name, usage code, frame rate, project and compression of an
    // item found by its identifiers.
    void addInfoToItem(TarnDatabaseItem* item) override;
    std::optional<quint64> getMDBCompositionsCount() const override { return compositions_; }

    // The container.
    bool isLittleEndian() const { return littleEndian_; }
    quint32 tocEntryCount() const { return entryCount_; }
    // Word 0..5 of an entry; 0 outside the TOC.
    quint32 tocWord(quint32 index, int word) const {
        if (index >= entryCount_ || word < 0 || word > 5) return 0;
        return qFromLittleEndian<quint32>(toc_ + qsizetype(index) * kTocEntrySize + 4 * word);
    }
    quint32 objectIDAt(quint32 index) const { return tocWord(index, 0); }
    quint32 propertyIDAt(quint32 index) const { return tocWord(index, 1); }
    // Start of the value of a TOC entry, or null (no index, zero length, or an
    // extent past the end of the file or of the entry).
    const quint8* pDataFor(quint32 index) const;
    Value valueFor(quint32 index) const;
    quint32 howManyBentoObjectsV01() const;
    // TOC index of the object's first entry with the property, or 0.
    quint32 lookForProperty(quint32 propertyID, quint32 index) const;
    // TOC index of an object's first entry, or kNoIndex.
    quint32 tocIndexForObject(quint32 objectID) const;
    // The object's name (the first of its name properties from `index` on),
    // NULs trimmed; null when the object has none.
    QString GetStringForObjectAt(quint32 index) const;
    // Standard and global names by object ID.
    QString nameForObjectID(quint32 objectID) const { return names_.value(objectID); }
    // One line describing a TOC entry.
    QString getDescriptionForTOCindex(quint32 index) const;

    // The media database's questions.
    QString getProjectAttributeForObjectAt(quint32 index) const;
    QString getProjectNameForObjAt(quint32 index) const;
    bool getCompression_data(CompressionData* record, quint32 index) const;

    // Units of work spent on questions so far: TOC entries looked at and list
    // records visited. The allowance of the database and of one item.
    quint64 workDone() const { return work_; }
    quint64 databaseWorkAllowance() const { return databaseAllowance_; }
    quint64 itemWorkAllowance() const { return itemAllowance_; }

    bool MustReadDictionary = true;
    TarnProgressIndicator* localWorkInProgressIndicator = nullptr;

  private:
    // What a clip object and a file object give an item, worked out once each.
    struct ClipAnswer {
        QString name;
        std::optional<quint32> usageCode;
        std::optional<TarnRate> frameRate;
        bool imported = false;
    };
    struct FileAnswer {
        QString project;
        std::optional<CompressionData> compression;
    };
    // Remembered texts: key = kind << 32 | TOC index.
    enum AnswerKind : quint64 {
        kProjectOfList = 1,
        kProjectOfListed,
        kProjectOfEntries,
        kProjectOfIdentifier,
    };

    bool readTOC();
    void InitDictionary();
    void readIdentifierTable(quint32 index, UIDtoBentoObjTree& tree, bool countsClips);
    void readGlobalName(quint32 index);

    Value propertyValue(quint32 propertyID, quint32 objectIndex) const;
    std::optional<quint32> numberAt(const Value& value, quint32 offset) const;
    std::optional<quint16> countAt(const Value& value) const;
    static std::optional<quint32> storedWordAt(const Value& value, quint32 offset);
    quint32 referencedObjectIndex(quint32 propertyID, quint32 objectIndex) const;
    QString textFromBytes(const quint8* bytes, quint32 length) const;
    bool spend() const;
    ClipAnswer clipAnswer(quint32 clipIndex) const;
    FileAnswer fileAnswer(quint32 fileIndex) const;
    // A question about the object at a TOC index, answered once.
    using Question = QString (TarnOMFI::*)(quint32) const;
    QString remembered(AnswerKind kind, quint32 index, Question question) const;
    // The last project that the objects of a list (16-bit count, 8-byte
    // records with the object ID first) give.
    QString lastProjectAmong(const Value& list, AnswerKind kind, Question question) const;
    QString projectOfAttributeList(quint32 listIndex) const;
    QString projectOfListedObject(quint32 listedIndex) const;
    QString projectOfSourceEntries(quint32 referenceIndex) const;
    QString projectOfSourceIdentifier(quint32 objectIndex) const;
    bool visitListedObjects(const Value& list, bool lastFirst,
                            const std::function<bool(quint32)>& visit) const;
    bool hasImportSetting(quint32 clipIndex) const;
    bool audioCompression(CompressionData* record, quint32 descriptor) const;
    bool pictureCompression(CompressionData* record, quint32 descriptor) const;

    QByteArray data_;
    const quint8* bytes_ = nullptr;
    qsizetype size_ = 0;
    const quint8* label_ = nullptr;
    const quint8* toc_ = nullptr;
    bool littleEndian_ = true;
    quint32 entryCount_ = 0;
    bool clipTableSeen_ = false;
    quint64 compositions_ = 0;
    QHash<quint32, QString> names_;
    std::unique_ptr<UIDtoBentoObjTree> clipTree_;
    std::unique_ptr<UIDtoBentoObjTree> secondTree_;
    std::unique_ptr<UIDtoBentoObjTree> fileTree_;
    std::unique_ptr<TarnRBTree_u32t_u32t> objectTree_;
    // The first TOC entry of each object, in TOC order. When the object IDs
    // rise through the TOC (as the container writes them) a binary search
    // here finds an object; otherwise objectTree_ holds them.
    std::vector<std::pair<quint32, quint32>> objectStarts_;
    bool objectsInOrder_ = true;
    // When the IDs in order are also dense (as a media database numbers its
    // objects), the first entry of object firstObjectID_ + k is at
    // objectByID_[k] (kNoIndex for an ID no object has).
    std::vector<quint32> objectByID_;
    quint32 firstObjectID_ = 0;
    TarnProgressIndicator* indicator_ = nullptr;

    mutable quint64 work_ = 0;
    mutable quint64 workLimit_ = 0;
    quint64 databaseAllowance_ = 0;
    quint64 itemAllowance_ = 0;
    mutable QHash<quint32, ClipAnswer> clipAnswers_;
    mutable QHash<quint32, FileAnswer> fileAnswers_;
    mutable QHash<quint32, bool> importAnswers_;
    mutable QHash<quint64, QString> textAnswers_;
};
