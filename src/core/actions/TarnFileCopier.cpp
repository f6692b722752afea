#include "actions/TarnFileCopier.h"

#include <QByteArray>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/xattr.h>
#include <unistd.h>

#ifdef __APPLE__
#include <copyfile.h>
#endif

#include "support/TarnFileName.h"

namespace {

using Result = TarnFileCopier::Result;

Result failure(int error) {
    Result r;
    r.error = error;
    r.description = QString::fromLocal8Bit(std::strerror(error));
    return r;
}

Result cancelledResult() {
    Result r = failure(ECANCELED);
    r.cancelled = true;
    return r;
}

// Closes a descriptor when it goes out of scope.
struct Fd {
    int fd = -1;
    ~Fd() {
        if (fd >= 0) ::close(fd);
    }
    int release() {
        int f = fd;
        fd = -1;
        return f;
    }
};

// A hidden file beside the target, made exclusively. The name's bytes are
// kept as they are (a cut may split a character: the file is temporary).
QByteArray temporaryBeside(const QByteArray& target) {
    const qsizetype slash = target.lastIndexOf('/');
    const QByteArray dir = slash < 0 ? QByteArray(".") : target.left(qMax<qsizetype>(slash, 1));
    QByteArray name = target.mid(slash + 1);
    if (name.size() > 180) name.truncate(180);
    return (dir == "/" ? QByteArray() : dir) + '/' + TarnFileCopier::temporaryPrefix().toLatin1() +
           name + ".XXXXXX";
}

// The temporary file, made and locked. The exclusive flock says "a running
// Tarn owns this file" for as long as the descriptor stays open, and goes
// with the process however it ends; removeAbandonedTemporaries takes only
// files whose lock it can get. A sweeper may remove the file between its
// creation and the lock: then the name no longer leads to the locked file,
// and another is made. Where the file system has no locks the copy goes on
// unlocked (and such files are never swept).
int createLockedTemporary(const QByteArray& target, QByteArray* temp) {
    for (int attempt = 0; attempt < 8; ++attempt) {
        *temp = temporaryBeside(target);
        int fd = ::mkostemp(temp->data(), O_CLOEXEC);
        if (fd < 0) return -1;
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) return fd;
        struct stat opened {
        }, named{};
        if (::fstat(fd, &opened) == 0 && ::lstat(temp->constData(), &named) == 0 &&
            opened.st_dev == named.st_dev && opened.st_ino == named.st_ino)
            return fd;
        ::close(fd);
    }
    errno = EAGAIN;
    return -1;
}

// "<prefix><name>.XXXXXX": the names temporaryBeside makes.
bool isTemporaryName(const QByteArray& name) {
    const QByteArray prefix = TarnFileName::encode(TarnFileCopier::temporaryPrefix());
    if (!name.startsWith(prefix) || name.size() < prefix.size() + 7) return false;
    if (name.at(name.size() - 7) != '.') return false;
    for (qsizetype i = name.size() - 6; i < name.size(); ++i) {
        const char c = name.at(i);
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')))
            return false;
    }
    return true;
}

#ifndef __APPLE__

// Extended attributes the file system lets us carry; the ones it refuses (a
// target file system without them, a namespace that needs privileges) stay
// behind without failing the copy.
void copyExtendedAttributes(int in, int out) {
    ssize_t size = ::flistxattr(in, nullptr, 0);
    if (size <= 0) return;
    std::vector<char> names(size_t(size) + 1, 0);
    size = ::flistxattr(in, names.data(), names.size());
    if (size <= 0) return;
    std::vector<char> value;
    for (const char* name = names.data(); name < names.data() + size;
         name += std::strlen(name) + 1) {
        ssize_t length = ::fgetxattr(in, name, nullptr, 0);
        if (length < 0) continue;
        value.resize(size_t(length) + 1);
        length = ::fgetxattr(in, name, value.data(), value.size());
        if (length < 0) continue;
        ::fsetxattr(out, name, value.data(), size_t(length), 0);
    }
}

// Data from in to out, reporting after every chunk.
Result copyData(int in, int out, TarnFileCopier::Callback callback, void* context) {
    using Copier = TarnFileCopier;
    std::int64_t copied = 0;
    auto report = [&](Copier::Stage stage) {
        return callback && callback(stage, copied, context) == Copier::Quit;
    };
    if (report(Copier::Stage::Progress)) return cancelledResult();

    bool useRange = true;
    std::vector<char> buffer;
    for (;;) {
        ssize_t n = -1;
        if (useRange) {
            n = ::copy_file_range(in, nullptr, out, nullptr, size_t(Copier::kChunkBytes), 0);
            if (n < 0 && copied == 0 &&
                (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP ||
                 errno == EBADF || errno == EPERM)) {
                useRange = false;
                continue;
            }
            if (n < 0 && errno == EINTR) continue;
        } else {
            if (buffer.empty()) buffer.resize(1024 * 1024);
            std::int64_t chunk = 0;
            // Gather a full chunk before reporting, like the other path.
            while (chunk < Copier::kChunkBytes) {
                ssize_t r = ::read(in, buffer.data(), buffer.size());
                if (r < 0 && errno == EINTR) continue;
                if (r <= 0) {
                    n = r < 0 ? -1 : chunk;
                    break;
                }
                ssize_t written = 0;
                while (written < r) {
                    ssize_t w = ::write(out, buffer.data() + written, size_t(r - written));
                    if (w < 0 && errno == EINTR) continue;
                    if (w <= 0) {
                        if (w == 0) errno = EIO;
                        written = -1;
                        break;
                    }
                    written += w;
                }
                if (written < 0) {
                    chunk = -1;
                    break;
                }
                chunk += r;
                n = chunk;
            }
            if (chunk < 0) n = -1;
        }
        if (n < 0) {
            int error = errno ? errno : EIO;
            report(Copier::Stage::Error);
            return failure(error);
        }
        if (n == 0) break;
        copied += n;
        if (report(Copier::Stage::Progress)) return cancelledResult();
    }
    Result ok;
    ok.ok = true;
    return ok;
}

Result copyRegular(const QByteArray& src, const struct stat& st, const QByteArray& temp,
                   bool durable, TarnFileCopier::Callback callback, void* context) {
    Fd in;
    in.fd = ::open(src.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOATIME);
    // O_NOATIME keeps the source's access time; only its owner may ask for it.
    if (in.fd < 0 && errno == EPERM)
        in.fd = ::open(src.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (in.fd < 0) return failure(errno);
    struct stat opened {};
    if (::fstat(in.fd, &opened) != 0) return failure(errno);
    if (opened.st_ino != st.st_ino || opened.st_dev != st.st_dev) return failure(EAGAIN);
    ::posix_fadvise(in.fd, 0, 0, POSIX_FADV_SEQUENTIAL);

    Fd out;
    out.fd = ::open(temp.constData(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    if (out.fd < 0) return failure(errno);

    Result data = copyData(in.fd, out.fd, callback, context);
    if (!data.ok) return data;

    struct stat written {};
    if (::fstat(out.fd, &written) != 0) return failure(errno);
    if (written.st_size != opened.st_size) return failure(EIO);

    if (::geteuid() == 0) {
        if (::fchown(out.fd, st.st_uid, st.st_gid) != 0) {
            // Owner stays ours: not a reason to fail the copy.
        }
    }
    if (::fchmod(out.fd, st.st_mode & 07777) != 0) return failure(errno);
    copyExtendedAttributes(in.fd, out.fd);
    struct timespec times[2] = {opened.st_atim, opened.st_mtim};
    if (::futimens(out.fd, times) != 0) return failure(errno);
    if (durable && ::fsync(out.fd) != 0) return failure(errno);
    if (::close(out.release()) != 0) return failure(errno);
    return data;
}

Result copyLink(const QByteArray& src, const struct stat& st, const QByteArray& temp) {
    std::vector<char> text(size_t(st.st_size > 0 ? st.st_size : 4096) + 1, 0);
    ssize_t n = ::readlink(src.constData(), text.data(), text.size() - 1);
    if (n < 0) return failure(errno);
    text[size_t(n)] = 0;
    ::unlink(temp.constData());
    if (::symlink(text.data(), temp.constData()) != 0) return failure(errno);
    struct timespec times[2] = {st.st_atim, st.st_mtim};
    ::utimensat(AT_FDCWD, temp.constData(), times, AT_SYMLINK_NOFOLLOW);
    Result ok;
    ok.ok = true;
    return ok;
}

#else  // __APPLE__

struct AppleContext {
    TarnFileCopier::Callback callback;
    void* context;
};

int appleCallback(int what, int stage, copyfile_state_t state, const char*, const char*,
                  void* ctx) {
    auto* c = static_cast<AppleContext*>(ctx);
    if (what != COPYFILE_COPY_DATA || !c->callback) return COPYFILE_CONTINUE;
    if (stage == COPYFILE_ERR) {
        c->callback(TarnFileCopier::Stage::Error, 0, c->context);
        return COPYFILE_QUIT;
    }
    if (stage == COPYFILE_PROGRESS || stage == COPYFILE_START) {
        off_t copied = 0;
        if (copyfile_state_get(state, COPYFILE_STATE_COPIED, &copied) != 0) copied = 0;
        if (c->callback(TarnFileCopier::Stage::Progress, copied, c->context) ==
            TarnFileCopier::Quit)
            return COPYFILE_QUIT;
    }
    return COPYFILE_CONTINUE;
}

Result copyApple(const QByteArray& src, const QByteArray& temp, TarnFileCopier::Callback callback,
                 void* context) {
    AppleContext ctx{callback, context};
    copyfile_state_t state = copyfile_state_alloc();
    copyfile_state_set(state, COPYFILE_STATE_STATUS_CB, reinterpret_cast<void*>(&appleCallback));
    copyfile_state_set(state, COPYFILE_STATE_STATUS_CTX, &ctx);
    ::unlink(temp.constData());
    int rc = ::copyfile(src.constData(), temp.constData(), state, COPYFILE_ALL | COPYFILE_NOFOLLOW);
    int error = errno;
    copyfile_state_free(state);
    if (rc != 0) {
        if (callback &&
            callback(TarnFileCopier::Stage::Progress, 0, context) == TarnFileCopier::Quit)
            return cancelledResult();
        return failure(error ? error : EIO);
    }
    Result ok;
    ok.ok = true;
    return ok;
}

#endif

}  // namespace

TarnFileCopier::Result TarnFileCopier::copy(const QString& source, const QString& target,
                                            unsigned flags, Callback callback, void* context) {
    const QByteArray src = TarnFileName::encode(source);
    const QByteArray dst = TarnFileName::encode(target);
    const bool move = (flags & Move) != 0;
    struct stat st {};
    if (::lstat(src.constData(), &st) != 0) return failure(errno);
    if (S_ISDIR(st.st_mode)) return failure(EISDIR);
    if (!S_ISREG(st.st_mode) && !S_ISLNK(st.st_mode)) return failure(EINVAL);

    QByteArray temp;
    Fd lock;  // held until the temporary file is renamed or removed
    lock.fd = createLockedTemporary(dst, &temp);
    if (lock.fd < 0) return failure(errno);

    Result result;
#ifdef __APPLE__
    result = copyApple(src, temp, callback, context);
#else
    result = S_ISLNK(st.st_mode) ? copyLink(src, st, temp)
                                 : copyRegular(src, st, temp, move, callback, context);
#endif
    if (result.ok) {
        struct stat done {};
        if (::lstat(temp.constData(), &done) != 0) {
            result = failure(errno);
        } else if (S_ISREG(st.st_mode) && done.st_size != st.st_size) {
            result = failure(EIO);
        } else if (::rename(temp.constData(), dst.constData()) != 0) {
            result = failure(errno);
        }
    }
    if (!result.ok) {
        ::unlink(temp.constData());
        return result;
    }
    if (move) {
        // The complete copy is in place: only now may the source go, and only
        // if it is still the file that was copied.
        struct stat placed {
        }, still{};
        if (::lstat(dst.constData(), &placed) != 0 || placed.st_size != st.st_size)
            return failure(EIO);
        if (::lstat(src.constData(), &still) != 0) return failure(errno);
        if (still.st_dev != st.st_dev || still.st_ino != st.st_ino) return failure(ESTALE);
        if (::unlink(src.constData()) != 0) return failure(errno);
    }
    return result;
}

QStringList TarnFileCopier::removeAbandonedTemporaries(const QString& folder) {
    QStringList removed;
    Fd dir;
    dir.fd = ::open(TarnFileName::encode(folder).constData(),
                    O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (dir.fd < 0) return removed;
    DIR* listing = ::fdopendir(::dup(dir.fd));
    if (!listing) return removed;
    while (dirent* entry = ::readdir(listing)) {
        const QByteArray name(entry->d_name);
        if (!isTemporaryName(name)) continue;
        // Only a regular file, opened without following a link, whose lock
        // nobody holds.
        Fd file;
        file.fd =
            ::openat(dir.fd, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        struct stat opened {
        }, named{};
        if (file.fd < 0 || ::fstat(file.fd, &opened) != 0 || !S_ISREG(opened.st_mode)) continue;
        if (::flock(file.fd, LOCK_EX | LOCK_NB) != 0) continue;
        if (::fstatat(dir.fd, name.constData(), &named, AT_SYMLINK_NOFOLLOW) != 0 ||
            named.st_dev != opened.st_dev || named.st_ino != opened.st_ino)
            continue;
        if (::unlinkat(dir.fd, name.constData(), 0) == 0) removed.append(TarnFileName::decode(name));
    }
    ::closedir(listing);
    return removed;
}

bool TarnFileCopier::createDirectories(const QString& path, bool* created, QString* error) {
    if (created) *created = false;
    QByteArray p = TarnFileName::encode(path);
    while (p.size() > 1 && p.endsWith('/')) p.chop(1);
    if (p.isEmpty()) {
        if (error) *error = QString::fromLocal8Bit(std::strerror(ENOENT));
        return false;
    }
    struct stat st {};
    if (::stat(p.constData(), &st) == 0) {
        if (S_ISDIR(st.st_mode)) return true;
        if (error) *error = QString::fromLocal8Bit(std::strerror(ENOTDIR));
        return false;
    }
    // Make each missing folder from the top down.
    for (qsizetype i = 1; i <= p.size(); ++i) {
        if (i != p.size() && p.at(i) != '/') continue;
        QByteArray part = p.left(i);
        if (::mkdir(part.constData(), 0777) == 0) {
            if (i == p.size() && created) *created = true;
            continue;
        }
        int e = errno;
        if (e == EEXIST && ::stat(part.constData(), &st) == 0 && S_ISDIR(st.st_mode)) continue;
        if (error) *error = QString::fromLocal8Bit(std::strerror(e == EEXIST ? ENOTDIR : e));
        return false;
    }
    return true;
}
