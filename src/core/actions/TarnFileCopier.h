#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

// Copies one file the way the actions need it: data, permissions, owner (when
// allowed), access and modification times and extended attributes; a
// symbolic link is copied as a link, never followed, at either end.
//
// Nothing is ever lost: the data goes to a hidden temporary file beside the
// target, which is renamed over the target only once it is complete and has
// the source's size. A cancelled or failed copy removes the temporary file and
// leaves an existing target as it was; the source is only read. With `Move`,
// the source is removed after the complete copy is in place (and on disk).
//
// On macOS the work is done by copyfile(3) (COPYFILE_ALL | COPYFILE_NOFOLLOW)
// into the temporary file; elsewhere by copy_file_range(2) in large chunks,
// falling back to read/write where the kernel or the file systems can't.
class TarnFileCopier {
  public:
    enum Flag : unsigned { None = 0, Move = 1 };
    // What the callback is told: a chunk has been copied (bytes so far), or
    // the data could not be read or written (the copy then fails).
    enum class Stage { Progress, Error };
    enum Verdict { Continue = 0, Quit = 1 };
    // Called on the copying thread before the first and after every chunk;
    // Quit stops the copy (it then fails as cancelled).
    using Callback = int (*)(Stage stage, std::int64_t copied, void* context);

    struct Result {
        bool ok = false;
        bool cancelled = false;
        int error = 0;  // errno-style code
        QString description;
    };

    static constexpr std::int64_t kChunkBytes = 16 * 1024 * 1024;

    static Result copy(const QString& source, const QString& target, unsigned flags,
                       Callback callback, void* context);

    // mkdir -p with an honest error; `created` tells whether the last folder
    // was made by this call.
    static bool createDirectories(const QString& path, bool* created, QString* error);

    // The prefix of the temporary files (so tests and tools can recognise them).
    static QString temporaryPrefix() { return QStringLiteral(".tarn-partial-"); }

    // Removes the temporary files of a copy that ended without cleaning up
    // (its process was killed) from `folder`, and returns their names. A
    // copy holds an exclusive flock(2) on its temporary file from creation
    // until it is renamed into place or removed; the lock ends with the
    // process, however it ends. So a regular file named like ours
    // ("<prefix><name>.XXXXXX") whose lock can be taken belongs to no running
    // Tarn. On network volumes whose locks reach the server (NFS) this holds
    // across machines; where locks stay local, a sweep can take another
    // machine's unfinished temporary file, whose copy then fails without
    // touching its source.
    static QStringList removeAbandonedTemporaries(const QString& folder);
};
