#pragma once

#include <QString>
#include <QStringList>

// A freedesktop.org desktop entry ("mediainfo-gui.desktop"): what the Linux
// desktop knows of an installed application, and how to start it on files.
class TarnDesktopEntry {
  public:
    // The entry file of an id ("mediainfo-gui" or "mediainfo-gui.desktop") in
    // the applications folders (XDG_DATA_HOME, XDG_DATA_DIRS), or a path given
    // directly; null when there is none.
    static QString locate(const QString& id);

    // Reads the [Desktop Entry] group; false when it has no Exec line.
    bool load(const QString& path);

    QString name() const { return name_; }
    QString exec() const { return exec_; }

    // The command lines that open `paths`: one with every path (%F, %U), one
    // per path (%f, %u), or one with the paths appended when the line takes
    // no files. Each is program first, then its arguments; empty when the
    // Exec line is malformed.
    QList<QStringList> commandLines(const QStringList& paths) const;

    // The Exec line split by its quoting rules (double quotes; \" \` \$ \\).
    static QStringList splitExec(const QString& exec, bool* ok);

  private:
    QString path_;
    QString name_;
    QString icon_;
    QString exec_;
};
