#pragma once

#include <QMutex>
#include <QObject>
#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

// The application log. Any thread may append; the text is kept in memory
// (until Reset) and delivered, in append order, to every subscribed sink on the
// console's own delivery thread, so a caller never waits for a slow sink (a
// terminal, a file, a text view on the main thread).
//
// The desktop console window connects to `stringAdded` (queued onto its
// thread); the command-line tool subscribes a sink that writes to stderr or a
// file.
class xConsole : public QObject {
    Q_OBJECT
  public:
    // Passed to the instance form of hexlifyRawBytes: keep the trailing separator.
    enum Untrimmed { kUntrimmed };

    using Sink = std::function<void(const QString& text, const QString& color)>;

    static xConsole* sharedInstance();

    // Appends `text` as it stands (the caller supplies any line feed).
    static void xPrint(const QString& text);
    // Same, in a colour ("red", "#rrggbb"); a null colour is the default text colour.
    static void xPrint(const QString& text, const QString& color);
    // The source-located line "(function) (file:00000042) :: message\n"; the
    // file is reduced to its last path component. A null message writes nothing.
    static void xNSLog(const char* file, int line, const char* function, const QString& message);

    // Hexadecimal dump: "%02lx" per byte, " | " after every 4th byte, else " ".
    // The class form trims white space at both ends.
    static QString hexlifyRawBytes(const void* bytes, qsizetype length);
    // The instance form keeps the trailing separator.
    QString hexlifyRawBytes(const void* bytes, qsizetype length, Untrimmed) const;
    // The bytes as ISO Latin-1 with everything but letters, digits, the space,
    // symbols and punctuation shown as ".".
    QString RawBytesToString(const void* bytes, qsizetype length) const;
    // Untrimmed dump directly followed by the printable text.
    QString hexlifyAndShowRawBytes(const void* bytes, qsizetype length) const;
    // Lines of 32 bytes: dump and printable text; a short last line is padded
    // so that its text lines up with the full lines'.
    QString hexlifyAndShowRawBytesBy20(const void* bytes, qsizetype length) const;

    void addString(const QString& text);
    void addString(const QString& text, const QString& color);
    void Reset();

    // Everything appended since the last Reset.
    QString contents() const;

    // Sinks receive every piece appended after they subscribed.
    int subscribe(Sink sink);
    void unsubscribe(int id);
    // Waits until every piece appended so far has reached the sinks (returns
    // at once when called from a sink).
    void flush();

  signals:
    // Emitted on the delivery thread for every piece, in append order.
    void stringAdded(const QString& text, const QString& color);
    void wasReset();

  private:
    xConsole();
    void deliveryLoop();

    struct Piece {
        QString text;
        QString color;
    };

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable drained_;
    QString contents_;
    std::deque<Piece> pending_;
    std::map<int, Sink> sinks_;
    int nextSinkId_ = 1;
    quint64 appended_ = 0;
    quint64 delivered_ = 0;
    std::thread delivery_;
    std::thread::id deliveryId_;
};

namespace tarn_detail {
// "bool TarnMXF::openFile(const QString&, ...)" -> "TarnMXF::openFile"
const char* shortFunctionName(const char* prettyFunction);
}  // namespace tarn_detail

// The source-located log line with the caller's own file, line and function.
#define TARN_LOG(message)                                                                     \
    xConsole::xNSLog(__FILE__, __LINE__, tarn_detail::shortFunctionName(__PRETTY_FUNCTION__), \
                     (message))
