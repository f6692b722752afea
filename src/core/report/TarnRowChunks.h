#pragma once

#include <QtGlobal>

#include <functional>

class TarnReportSink;

// The rows of a long report formatted by several threads at once, a chunk of
// rows each, and written to the sink in their order: the bytes are those of
// formatting the rows one after another. Only a few chunks wait to be
// written at any time, so the memory does not grow with the report.
class TarnRowChunks {
  public:
    // Formats rows [first, end) into `sink`. Called on worker threads, for
    // separate ranges at the same time: it may only read what it shares.
    using Format = std::function<void(qsizetype first, qsizetype end, TarnReportSink& sink)>;

    static constexpr qsizetype kChunkRows = 512;

    // Rows 0 to count - 1 into `sink`. A report of one chunk, a machine of
    // one core, or one where no thread can be started is formatted here.
    static void write(qsizetype count, const Format& format, TarnReportSink& sink);
};
