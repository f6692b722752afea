#pragma once

#include <QIODevice>
#include <QLatin1StringView>
#include <QStringView>

#include <array>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <utility>

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
    // What a format writes in place of some characters: a replacement for
    // each ASCII character that needs one, and what becomes of a surrogate
    // without its partner (UTF-8 cannot hold it).
    struct Escapes {
        std::array<const char*, 128> ascii{};  // nullptr: the character itself
        bool jsonLoneSurrogates = false;       // "\uXXXX" instead of "?"

        static Escapes of(std::initializer_list<std::pair<char, const char*>> replacements) {
            Escapes escapes;
            for (const auto& [c, text] : replacements) escapes.ascii[uchar(c)] = text;
            return escapes;
        }
    };

    // Any text, encoded as UTF-8.
    void appendText(QStringView text) { appendEscaped(text, kNoEscapes); }
    // The text encoded as UTF-8, with the replacements of `escapes`.
    void appendEscaped(QStringView text, const Escapes& escapes);

    // Writes the buffer out; false once any write has failed (later output
    // is then dropped).
    bool flush();
    bool ok() const { return ok_; }

  private:
    static const Escapes kNoEscapes;

    void spill();
    void appendPieces(QLatin1StringView ascii);
    // Copies plain ASCII up to the first character that is not, or that
    // `escapes` replaces.
    const char16_t* appendPlain(const char16_t* p, const char16_t* end, const Escapes& escapes);
    void appendNonAscii(const char16_t* begin, const char16_t* end, bool jsonLoneSurrogates);
    void appendLoneSurrogate(char16_t c, bool json);
    void writeOut(const char* data, qsizetype length);

    QIODevice* device_;
    qsizetype size_;
    std::unique_ptr<char[]> buffer_;
    qsizetype used_ = 0;
    bool ok_ = true;
};
