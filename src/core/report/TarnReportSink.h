#pragma once

#include <QIODevice>
#include <QLatin1StringView>
#include <QStringView>

#include <cstring>
#include <memory>

// The UTF-8 output of a report: texts go into a buffer of fixed size that is
// written to the device whenever it fills, so a report of any length needs
// only the buffer, never the whole document.
//
// Texts are encoded as QString::toUtf8 does (a lone surrogate becomes "?"),
// so a streamed report has the bytes of the same report built whole.
class TarnReportSink {
  public:
    // `device` must be open for writing and outlive the sink.
    explicit TarnReportSink(QIODevice* device, qsizetype bufferSize = 64 * 1024);
    // Writes what is left in the buffer.
    ~TarnReportSink();
    TarnReportSink(const TarnReportSink&) = delete;
    TarnReportSink& operator=(const TarnReportSink&) = delete;

    void append(char c) {
        if (used_ == size_) spill();
        buffer_[used_++] = c;
    }
    // Markup, keys and numbers: ASCII only.
    void append(QLatin1StringView ascii) {
        if (ascii.size() <= size_ - used_) {
            std::memcpy(buffer_.get() + used_, ascii.data(), size_t(ascii.size()));
            used_ += ascii.size();
        } else {
            appendPieces(ascii);
        }
    }
    // Any text, encoded as UTF-8.
    void appendText(QStringView text);
    // The text with some characters replaced: `replacement(c)` gives the
    // ASCII text to write for the UTF-16 unit c, or nullptr to keep it.
    template <typename Replace>
    void appendReplacing(QStringView text, Replace replacement) {
        qsizetype start = 0;
        for (qsizetype i = 0; i < text.size(); ++i) {
            if (const char* r = replacement(text[i].unicode())) {
                appendText(text.sliced(start, i - start));
                append(QLatin1StringView(r));
                start = i + 1;
            }
        }
        appendText(text.sliced(start));
    }

    // Writes the buffer out; false once any write has failed (later output
    // is then dropped).
    bool flush();
    bool ok() const { return ok_; }

  private:
    void spill();
    void appendPieces(QLatin1StringView ascii);
    void appendNonAscii(const char16_t* begin, const char16_t* end);
    void writeOut(const char* data, qsizetype length);

    QIODevice* device_;
    qsizetype size_;
    std::unique_ptr<char[]> buffer_;
    qsizetype used_ = 0;
    bool ok_ = true;
};
