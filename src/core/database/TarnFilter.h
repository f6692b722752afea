#pragma once

#include <QString>

#include <QStringMatcher>

#include <atomic>
#include <memory>
#include <mutex>

class TarnDatabaseItem;

// The one filter of the database view. An item is shown only when it passes
// three stages: its type (precomputes, imported media, audio), the search text
// and its problems (non-portable name, bad UMID, not listed by a media index).
// A stage with none of its flags on lets every item through.
//
// The flags and the text may be changed from the controls while a background
// pass reads them; `snapshot()` takes one consistent copy for a whole pass.
class TarnFilter {
  public:
    struct Snapshot {
        bool precomputes = false;
        bool importedMedia = false;
        bool audioMedia = false;
        bool nonPortableFiles = false;
        bool badUMID = false;
        bool unreferenced = false;
        QString filterString;
        // Built once per snapshot: the search runs over every item of a pass.
        std::shared_ptr<const QStringMatcher> matcher;

        bool itemPassFilter(const TarnDatabaseItem* item) const;
    };

    static TarnFilter* sharedFilter();

    // All six flags off, no search text.
    void ResetFilter();
    bool itemPassFilter(const TarnDatabaseItem* item) const;
    Snapshot snapshot() const;

    bool filterFlagPrecomputes() const { return precomputes_.load(); }
    void setFilterFlagPrecomputes(bool on) { precomputes_.store(on); }
    bool filterFlagImportedMedia() const { return importedMedia_.load(); }
    void setFilterFlagImportedMedia(bool on) { importedMedia_.store(on); }
    bool filterFlagAudioMedia() const { return audioMedia_.load(); }
    void setFilterFlagAudioMedia(bool on) { audioMedia_.store(on); }
    bool filterFlagNonPortableFiles() const { return nonPortable_.load(); }
    void setFilterFlagNonPortableFiles(bool on) { nonPortable_.store(on); }
    bool filterFlagBadUMID() const { return badUMID_.load(); }
    void setFilterFlagBadUMID(bool on) { badUMID_.store(on); }
    bool filterFlagUnreferenced() const { return unreferenced_.load(); }
    void setFilterFlagUnreferenced(bool on) { unreferenced_.store(on); }

    // Empty or null: no search.
    QString filterString() const;
    void setFilterString(const QString& text);

  private:
    TarnFilter() = default;

    std::atomic<bool> precomputes_{false};
    std::atomic<bool> importedMedia_{false};
    std::atomic<bool> audioMedia_{false};
    std::atomic<bool> nonPortable_{false};
    std::atomic<bool> badUMID_{false};
    std::atomic<bool> unreferenced_{false};
    mutable std::mutex textLock_;
    QString filterString_;
};
