#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

// `tarn inspect FILE... [--json]`: what each reader finds in a file.
//   media file index (.pmr): header and every entry
//   media database (.mdb) or OMF file (.omf, .aif, .wav): container label,
//     object count, composition count
//   MXF file (.mxf): the info reader's status, clip name, project, identifiers
//   bin (.avb): the referenced short file identifiers
// Files with other extensions are recognised by their first bytes (index
// files and bins). A file that no reader takes gets one line on stderr (in
// JSON an entry with "error"); the others are still shown. Exit status: 0, 1
// when some file was not taken, 2 for a usage error.
class FileReportCommand {
  public:
    static int run(const QStringList& args);

    // The facts of one file as the JSON output gives them.
    static QJsonObject inspect(const QString& path);
    // The human text of those facts.
    static QString humanText(const QJsonObject& facts);
};
