#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// A FIFO under a reader's file name, with a writer that hands it well-formed
// content (less than a pipe's buffer, 64 KiB) as soon as anyone opens it for
// reading, then closes. A reader that
// takes the FIFO for a file reads that content and succeeds; one that refuses
// FIFOs never opens it. Either way nothing waits for good: the feeder opens the
// FIFO itself when it is done, which lets the writer finish.
class FifoFeeder {
  public:
    FifoFeeder(const QString& path, const QByteArray& content) : path_(QFile::encodeName(path)) {
        std::signal(SIGPIPE, SIG_IGN);  // a reader may close before the writer writes
        made_ = content.size() < 65536 && ::mkfifo(path_.constData(), 0600) == 0;
        if (!made_) return;
        writer_ = std::thread([this, content] {
            const int fd = ::open(path_.constData(), O_WRONLY | O_CLOEXEC);  // waits for a reader
            if (fd < 0) return;
            for (qsizetype done = 0; done < content.size();) {
                const ssize_t n =
                    ::write(fd, content.constData() + done, size_t(content.size() - done));
                if (n <= 0) break;
                done += n;
            }
            ::close(fd);
        });
    }
    ~FifoFeeder() {
        if (!writer_.joinable()) return;
        // A read end of our own lets a writer still waiting in open get on; the
        // content fits in the pipe's buffer, so its write does not wait.
        const int fd = ::open(path_.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        writer_.join();
        if (fd >= 0) ::close(fd);
    }
    FifoFeeder(const FifoFeeder&) = delete;
    FifoFeeder& operator=(const FifoFeeder&) = delete;

    bool made() const { return made_; }

  private:
    QByteArray path_;
    bool made_ = false;
    std::thread writer_;
};
