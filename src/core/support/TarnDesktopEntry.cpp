#include "support/TarnDesktopEntry.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTextStream>

namespace {

// The value escapes of the entry file itself: \s \n \t \r \\.
QString unescapeValue(const QString& value) {
    QString out;
    out.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        if (c != QLatin1Char('\\') || i + 1 == value.size()) {
            out += c;
            continue;
        }
        const QChar next = value.at(++i);
        switch (next.unicode()) {
            case 's':
                out += QLatin1Char(' ');
                break;
            case 'n':
                out += QLatin1Char('\n');
                break;
            case 't':
                out += QLatin1Char('\t');
                break;
            case 'r':
                out += QLatin1Char('\r');
                break;
            default:
                out += QLatin1Char('\\');
                out += next;
                break;  // Exec's own escapes
        }
    }
    return out;
}

}  // namespace

QString TarnDesktopEntry::locate(const QString& id) {
    if (id.isEmpty()) return QString();
    if (id.contains(QLatin1Char('/'))) return QFileInfo(id).isFile() ? id : QString();
    const QString file =
        id.endsWith(QLatin1String(".desktop")) ? id : id + QLatin1String(".desktop");
    return QStandardPaths::locate(QStandardPaths::ApplicationsLocation, file);
}

bool TarnDesktopEntry::load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) return false;
    path_ = path;
    QTextStream in(&file);
    bool inEntry = false;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) continue;
        if (line.startsWith(QLatin1Char('['))) {
            inEntry = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        if (!inEntry) continue;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals < 0) continue;
        const QString key = line.left(equals).trimmed();
        const QString value = unescapeValue(line.mid(equals + 1).trimmed());
        if (key == QLatin1String("Name"))
            name_ = value;
        else if (key == QLatin1String("Icon"))
            icon_ = value;
        else if (key == QLatin1String("Exec"))
            exec_ = value;
    }
    return !exec_.isEmpty();
}

QStringList TarnDesktopEntry::splitExec(const QString& exec, bool* ok) {
    QStringList words;
    QString word;
    bool inWord = false;
    bool quoted = false;
    *ok = true;
    for (qsizetype i = 0; i < exec.size(); ++i) {
        const QChar c = exec.at(i);
        if (quoted) {
            if (c == QLatin1Char('"')) {
                quoted = false;
            } else if (c == QLatin1Char('\\') && i + 1 < exec.size()) {
                word += exec.at(++i);
            } else {
                word += c;
            }
        } else if (c == QLatin1Char('"')) {
            quoted = true;
            inWord = true;
        } else if (c.isSpace()) {
            if (inWord) words.append(word);
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (quoted) *ok = false;
    if (inWord) words.append(word);
    if (words.isEmpty()) *ok = false;
    return words;
}

QList<QStringList> TarnDesktopEntry::commandLines(const QStringList& paths) const {
    bool ok = false;
    const QStringList words = splitExec(exec_, &ok);
    if (!ok) return {};
    // Which field code takes the files decides how many launches there are.
    bool perFile = false;
    bool takesFiles = false;
    for (const QString& w : words) {
        if (w == QLatin1String("%F") || w == QLatin1String("%U")) takesFiles = true;
        if (w == QLatin1String("%f") || w == QLatin1String("%u")) perFile = takesFiles = true;
    }
    auto expand = [&](const QStringList& files) {
        QStringList line;
        for (const QString& w : words) {
            if (w == QLatin1String("%F") || w == QLatin1String("%U") || w == QLatin1String("%f") ||
                w == QLatin1String("%u")) {
                line += files;
            } else if (w == QLatin1String("%i")) {
                if (!icon_.isEmpty()) line << QStringLiteral("--icon") << icon_;
            } else {
                QString arg = w;
                arg.replace(QLatin1String("%c"), name_);
                arg.replace(QLatin1String("%k"), path_);
                // Deprecated codes go; "%%" is a percent sign.
                static const char* dropped[] = {"%d", "%D", "%n", "%N", "%v", "%m"};
                for (const char* code : dropped) arg.remove(QLatin1String(code));
                arg.replace(QLatin1String("%%"), QLatin1String("%"));
                if (!arg.isEmpty() || w.isEmpty()) line << arg;
            }
        }
        if (!takesFiles) line += files;
        return line;
    };
    QList<QStringList> lines;
    if (perFile && paths.size() > 1) {
        for (const QString& path : paths) lines.append(expand({path}));
    } else {
        lines.append(expand(paths));
    }
    return lines;
}
