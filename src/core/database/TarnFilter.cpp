#include "database/TarnFilter.h"

#include "items/TarnDatabaseItem.h"

namespace {
constexpr qint32 kUsagePrecompute = 1;
constexpr qint32 kUsageImported = 15;
}  // namespace

TarnFilter* TarnFilter::sharedFilter() {
    static TarnFilter* filter = new TarnFilter();
    return filter;
}

void TarnFilter::ResetFilter() {
    precomputes_ = false;
    importedMedia_ = false;
    audioMedia_ = false;
    nonPortable_ = false;
    badUMID_ = false;
    unreferenced_ = false;
    std::lock_guard<std::mutex> guard(textLock_);
    filterString_ = QString();
}

QString TarnFilter::filterString() const {
    std::lock_guard<std::mutex> guard(textLock_);
    return filterString_;
}

void TarnFilter::setFilterString(const QString& text) {
    std::lock_guard<std::mutex> guard(textLock_);
    filterString_ = text;
}

TarnFilter::Snapshot TarnFilter::snapshot() const {
    Snapshot s;
    s.precomputes = precomputes_;
    s.importedMedia = importedMedia_;
    s.audioMedia = audioMedia_;
    s.nonPortableFiles = nonPortable_;
    s.badUMID = badUMID_;
    s.unreferenced = unreferenced_;
    s.filterString = filterString();
    if (!s.filterString.isEmpty())
        s.matcher = std::make_shared<QStringMatcher>(s.filterString, Qt::CaseInsensitive);
    return s;
}

bool TarnFilter::itemPassFilter(const TarnDatabaseItem* item) const {
    return snapshot().itemPassFilter(item);
}

bool TarnFilter::Snapshot::itemPassFilter(const TarnDatabaseItem* item) const {
    if (!item) return false;

    // Type: at least one of the enabled kinds.
    if (precomputes || importedMedia || audioMedia) {
        const bool typeMatch = (importedMedia && item->DB_usageCode == kUsageImported) ||
                               (precomputes && item->DB_usageCode == kUsagePrecompute) ||
                               (audioMedia && item->isAudio());
        if (!typeMatch) return false;
    }

    // Search: the text anywhere in the bin name, file name, project or path.
    if (!filterString.isEmpty()) {
        std::shared_ptr<const QStringMatcher> m = matcher;
        if (!m) m = std::make_shared<QStringMatcher>(filterString, Qt::CaseInsensitive);
        auto has = [&](const QString& text) { return m->indexIn(text) >= 0; };
        const bool found = has(item->DB_NameInBin) || has(item->DB_ClipName) ||
                           has(item->get_DB_ProjectName()) || has(item->DB_itemPath);
        if (!found) return false;
    }

    // Problems: at least one of the enabled ones.
    if (nonPortableFiles || badUMID || unreferenced) {
        return (nonPortableFiles && !item->DB_isPortableFilename) ||
               (badUMID && !item->DB_isGoodUUID) || (unreferenced && !item->DB_isReferenced);
    }
    return true;
}
