#include "log/xConsole.h"

#include <cstring>
#include <string>
#include <unordered_map>

namespace {

QString hexlify(const void* bytes, qsizetype length) {
    if (!bytes || length <= 0) return QString();
    static const char digits[] = "0123456789abcdef";
    const auto* p = static_cast<const unsigned char*>(bytes);
    QString out;
    out.reserve(length * 4);
    for (qsizetype i = 0; i < length; ++i) {
        out.append(QLatin1Char(digits[p[i] >> 4]));
        out.append(QLatin1Char(digits[p[i] & 0x0f]));
        out.append((i + 1) % 4 == 0 ? QLatin1String(" | ") : QLatin1String(" "));
    }
    return out;
}

// The file name of a source path; trailing slashes don't count ("a/b/" -> "b").
QString lastPathComponent(const char* path) {
    if (!path) return QString();
    QString p = QString::fromUtf8(path);
    while (p.size() > 1 && p.endsWith(QLatin1Char('/'))) p.chop(1);
    if (p == QLatin1String("/")) return p;
    return p.mid(p.lastIndexOf(QLatin1Char('/')) + 1);
}

// Letters, digits, the space, symbols and punctuation stay; everything else
// (controls, other white space, unassigned code points) becomes ".".
bool isShown(QChar c) {
    if (c == QLatin1Char(' ')) return true;
    return c.isLetterOrNumber() || c.isPunct() || c.isSymbol();
}

}  // namespace

namespace tarn_detail {
const char* shortFunctionName(const char* pretty) {
    // Called on every log line: remember each distinct signature once.
    static std::mutex mutex;
    static std::unordered_map<const char*, std::string> cache;
    std::lock_guard lock(mutex);
    auto it = cache.find(pretty);
    if (it != cache.end()) return it->second.c_str();
    std::string s(pretty);
    std::size_t paren = s.find('(');
    std::string head = paren == std::string::npos ? s : s.substr(0, paren);
    std::size_t space = head.rfind(' ');
    std::string name = space == std::string::npos ? head : head.substr(space + 1);
    while (!name.empty() && (name.front() == '*' || name.front() == '&')) name.erase(0, 1);
    return cache.emplace(pretty, name).first->second.c_str();
}
}  // namespace tarn_detail

xConsole::xConsole() = default;

xConsole* xConsole::sharedInstance() {
    // Never destroyed: background threads may log until the process ends.
    static xConsole* instance = [] {
        auto* console = new xConsole();
        console->delivery_ = std::thread([console] { console->deliveryLoop(); });
        console->deliveryId_ = console->delivery_.get_id();
        console->delivery_.detach();
        return console;
    }();
    return instance;
}

void xConsole::xPrint(const QString& text) {
    sharedInstance()->addString(text);
}

void xConsole::xPrint(const QString& text, const QString& color) {
    sharedInstance()->addString(text, color);
}

void xConsole::xNSLog(const char* file, int line, const char* function, const QString& message) {
    if (message.isNull()) return;
    const char* fn = function ? function : "";
    const QString fileName = lastPathComponent(file);
    QString text;
    if (!fileName.isEmpty()) {
        // printf's "%08d" keeps a minus sign in front of the zeros.
        text = QStringLiteral("(%1) (%2:%3) :: %4\n")
                   .arg(QString::fromUtf8(fn), fileName, QString::asprintf("%08d", line), message);
    } else {
        text = QStringLiteral("(%1) :: %2\n").arg(QString::fromUtf8(fn), message);
    }
    sharedInstance()->addString(text);
}

QString xConsole::hexlifyRawBytes(const void* bytes, qsizetype length) {
    return hexlify(bytes, length).trimmed();
}

QString xConsole::hexlifyRawBytes(const void* bytes, qsizetype length, Untrimmed) const {
    return hexlify(bytes, length);
}

QString xConsole::RawBytesToString(const void* bytes, qsizetype length) const {
    if (!bytes || length <= 0) return QString();
    QString text = QString::fromLatin1(static_cast<const char*>(bytes), length);
    for (QChar& c : text) {
        if (!isShown(c)) c = QLatin1Char('.');
    }
    return text;
}

QString xConsole::hexlifyAndShowRawBytes(const void* bytes, qsizetype length) const {
    return hexlify(bytes, length) + RawBytesToString(bytes, length);
}

QString xConsole::hexlifyAndShowRawBytesBy20(const void* bytes, qsizetype length) const {
    if (!bytes || length <= 0) return QString();
    const auto* p = static_cast<const unsigned char*>(bytes);
    QString out;
    for (qsizetype start = 0; start < length; start += 32) {
        qsizetype n = std::min<qsizetype>(32, length - start);
        QString dump = hexlify(p + start, n);
        QString shown = RawBytesToString(p + start, n);
        if (n == 32) {
            out += dump + shown;
            if (start + 32 < length) out += QLatin1Char('\n');
        } else {
            out += dump.leftJustified(109, QLatin1Char(' ')) + QLatin1String(" | ") + shown;
        }
    }
    return out;
}

void xConsole::addString(const QString& text) {
    addString(text, QString());
}

void xConsole::addString(const QString& text, const QString& color) {
    if (text.isNull()) return;
    {
        std::lock_guard lock(mutex_);
        contents_ += text;
        pending_.push_back({text, color});
        ++appended_;
    }
    wake_.notify_one();
}

void xConsole::Reset() {
    {
        std::lock_guard lock(mutex_);
        contents_.clear();
    }
    emit wasReset();
}

QString xConsole::contents() const {
    std::lock_guard lock(mutex_);
    return contents_;
}

int xConsole::subscribe(Sink sink) {
    std::lock_guard lock(mutex_);
    int id = nextSinkId_++;
    sinks_.emplace(id, std::move(sink));
    return id;
}

void xConsole::unsubscribe(int id) {
    flush();
    std::lock_guard lock(mutex_);
    sinks_.erase(id);
}

void xConsole::flush() {
    // A sink that flushes (or unsubscribes) runs on the delivery thread itself:
    // waiting there for its own work would never end.
    if (std::this_thread::get_id() == deliveryId_) return;
    std::unique_lock lock(mutex_);
    quint64 target = appended_;
    drained_.wait(lock, [&] { return delivered_ >= target; });
}

void xConsole::deliveryLoop() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [&] { return !pending_.empty(); });
        while (!pending_.empty()) {
            Piece piece = std::move(pending_.front());
            pending_.pop_front();
            // Sinks run without the lock so that loggers never wait for them;
            // this thread alone delivers, so the order is the append order.
            std::map<int, Sink> sinks = sinks_;
            lock.unlock();
            for (auto& [id, sink] : sinks) sink(piece.text, piece.color);
            emit stringAdded(piece.text, piece.color);
            lock.lock();
            ++delivered_;
        }
        drained_.notify_all();
    }
}
