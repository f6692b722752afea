#include "report/TarnRowChunks.h"

#include <QBuffer>
#include <QByteArray>
#include <QThread>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "report/TarnReportSink.h"

namespace {

constexpr int kMostThreads = 4;

// The chunks between the workers and the writer. Chunk c waits in place
// c % waiting.size(); a worker takes a chunk only when the chunk before it in
// that place has been written out.
struct Chunks {
    Chunks(qsizetype rows, qsizetype waitingCount)
        : count((rows + TarnRowChunks::kChunkRows - 1) / TarnRowChunks::kChunkRows),
          waiting(size_t(waitingCount)),
          ready(size_t(waitingCount), 0) {}

    const qsizetype count;
    std::mutex lock;
    std::condition_variable changed;
    std::vector<QByteArray> waiting;
    std::vector<char> ready;
    qsizetype next = 0;     // the next chunk to format
    qsizetype written = 0;  // chunks written to the sink
    bool stop = false;
};

QByteArray formatChunk(qsizetype chunk, qsizetype rows, const TarnRowChunks::Format& format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        TarnReportSink sink(&buffer);
        const qsizetype first = chunk * TarnRowChunks::kChunkRows;
        format(first, std::min(rows, first + TarnRowChunks::kChunkRows), sink);
    }
    return bytes;
}

void work(Chunks& chunks, qsizetype rows, const TarnRowChunks::Format& format) {
    const auto places = qsizetype(chunks.waiting.size());
    for (;;) {
        qsizetype chunk;
        {
            std::unique_lock<std::mutex> guard(chunks.lock);
            chunks.changed.wait(guard, [&] {
                return chunks.stop || chunks.next >= chunks.count ||
                       chunks.next < chunks.written + places;
            });
            if (chunks.stop || chunks.next >= chunks.count) return;
            chunk = chunks.next++;
        }
        QByteArray bytes = formatChunk(chunk, rows, format);
        {
            std::lock_guard<std::mutex> guard(chunks.lock);
            chunks.waiting[size_t(chunk % places)] = std::move(bytes);
            chunks.ready[size_t(chunk % places)] = 1;
        }
        chunks.changed.notify_all();
    }
}

// Writes the chunks in order as they come; stops the workers when the sink
// has failed.
void writeInOrder(Chunks& chunks, TarnReportSink& sink) {
    const auto places = qsizetype(chunks.waiting.size());
    for (qsizetype chunk = 0; chunk < chunks.count; ++chunk) {
        QByteArray bytes;
        {
            std::unique_lock<std::mutex> guard(chunks.lock);
            const size_t place = size_t(chunk % places);
            chunks.changed.wait(guard, [&] { return chunks.ready[place] != 0; });
            bytes = std::move(chunks.waiting[place]);
            chunks.waiting[place] = QByteArray();
            chunks.ready[place] = 0;
            chunks.written = chunk + 1;
            chunks.stop = !sink.ok();
        }
        chunks.changed.notify_all();
        if (!sink.ok()) return;
        // Already UTF-8: the bytes go out as they are.
        sink.append(QLatin1StringView(bytes.constData(), bytes.size()));
    }
}

}  // namespace

void TarnRowChunks::write(qsizetype count, const Format& format, TarnReportSink& sink) {
    const int threads = std::min(QThread::idealThreadCount(), kMostThreads);
    if (count <= kChunkRows || threads < 2) {
        format(0, count, sink);
        return;
    }
    Chunks chunks(count, 2 * threads);
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        try {
            workers.emplace_back([&] { work(chunks, count, format); });
        } catch (const std::system_error&) {
            break;  // fewer workers, or none
        }
    }
    if (workers.empty()) {
        format(0, count, sink);
        return;
    }
    writeInOrder(chunks, sink);
    {
        std::lock_guard<std::mutex> guard(chunks.lock);
        chunks.stop = true;
    }
    chunks.changed.notify_all();
    for (std::thread& worker : workers) worker.join();
}
