#include "FileReportCommand.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QtEndian>

#include <cstdio>

#include <unistd.h>

#include "readers/AVBFile.h"
#include "readers/PMRFile.h"
#include "readers/TarnAvidMXFInfo.h"
#include "readers/TarnMXF.h"
#include "readers/TarnMediafile.h"
#include "readers/TarnOMFI.h"
#include "report/TarnJsonReport.h"
#include "support/TarnFileName.h"
#include "support/TarnRegularFile.h"

namespace {

const char* kUsage =
    "usage: tarn inspect [--json] FILE...\n"
    "  shows what Tarn reads in media file indexes (.pmr), media databases (.mdb),\n"
    "  OMF and MXF media files and bins (.avb)\n";

QString hex(const void* bytes, qsizetype length) {
    return QString::fromLatin1(QByteArray(static_cast<const char*>(bytes), length).toHex());
}

QJsonValue textOrNull(const QString& text) {
    return text.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonObject failure(QJsonObject facts, const QString& error) {
    facts.insert(QStringLiteral("error"), error);
    return facts;
}

QJsonObject inspectPmr(QJsonObject facts, const QString& path) {
    PMRFile pmr;
    if (!pmr.dataWithContentsOfURL(path))
        return failure(facts, QStringLiteral("not a media file index (shorter than 30 bytes or "
                                             "unknown magic)"));
    facts.insert(QStringLiteral("byte_order"),
                 pmr.usebyteswap() ? QStringLiteral("big") : QStringLiteral("little"));
    facts.insert(QStringLiteral("uid_size"), qint64(pmr.UUIDlength()));
    facts.insert(QStringLiteral("entries_claimed"), qint64(pmr.ItemsCount()));
    QJsonArray entries;
    while (auto item = pmr.FillItem(std::make_shared<TarnDatabaseItem>())) {
        QJsonObject entry;
        entry.insert(QStringLiteral("name"), textOrNull(item->DB_ClipName));
        entry.insert(QStringLiteral("project"), textOrNull(item->DB_ProjectName));
        entry.insert(QStringLiteral("file_package_uid"),
                     TarnJsonReport::uidHex(item->filePackageUID, item->DB_SizeofUID));
        entry.insert(QStringLiteral("material_package_uid"),
                     TarnJsonReport::uidHex(item->materialPackageUID, item->DB_SizeofUID));
        entries.append(entry);
    }
    facts.insert(QStringLiteral("entries_read"), entries.size());
    if (quint32(entries.size()) != pmr.ItemsCount())
        facts.insert(QStringLiteral("stopped_at"), qint64(pmr.position()));
    facts.insert(QStringLiteral("entries"), entries);
    return facts;
}

QJsonObject inspectBin(QJsonObject facts, const QString& path) {
    AVBFile bin;
    if (!bin.dataWithContentsOfURL(path))
        return failure(facts, QStringLiteral("not an Avid bin (shorter than 119 bytes or no bin "
                                             "header)"));
    QJsonArray uids;
    for (const auto& item : bin.getUIDS())
        uids.append(TarnJsonReport::uidHex(item->filePackageUID, 2));
    facts.insert(QStringLiteral("references"), uids.size());
    facts.insert(QStringLiteral("short_uids"), uids);
    return facts;
}

QJsonObject inspectBento(QJsonObject facts, const QString& path) {
    TarnMediafile front;
    auto* omf =
        front.openFile(path, nullptr) ? dynamic_cast<TarnOMFI*>(front.dataSource()) : nullptr;
    if (!omf) return failure(facts, QStringLiteral("not a readable OMF 1 Bento container"));
    // The label is the last 24 bytes; the reader has checked it.
    QFile file(path);
    QByteArray label;
    if (file.open(QIODevice::ReadOnly) && file.seek(file.size() - TarnOMFI::kLabelSize))
        label = file.read(TarnOMFI::kLabelSize);
    if (label.size() != TarnOMFI::kLabelSize)
        return failure(facts, QStringLiteral("the container label cannot be read"));
    const auto* l = reinterpret_cast<const uchar*>(label.constData());
    facts.insert(QStringLiteral("byte_order"),
                 omf->isLittleEndian() ? QStringLiteral("little") : QStringLiteral("big"));
    facts.insert(QStringLiteral("major_version"), qFromLittleEndian<quint16>(l + 12));
    facts.insert(QStringLiteral("toc_offset"), qint64(qFromLittleEndian<quint32>(l + 16)));
    facts.insert(QStringLiteral("toc_size"), qint64(qFromLittleEndian<quint32>(l + 20)));
    facts.insert(QStringLiteral("toc_entries"), qint64(omf->tocEntryCount()));
    facts.insert(QStringLiteral("objects"), qint64(omf->howManyBentoObjectsV01()));
    facts.insert(QStringLiteral("compositions"), qint64(front.getMDBCompositionsCount()));
    return facts;
}

QString mxfStatusText(int status) {
    switch (status) {
        case TarnAvidMXFInfo::kOK:
            return QStringLiteral("OK");
        case TarnAvidMXFInfo::kFailed:
            return QStringLiteral("header metadata not readable");
        case TarnAvidMXFInfo::kOpenFailed:
            return QStringLiteral("not an MXF file");
        case TarnAvidMXFInfo::kHeaderPartitionFailed:
            return QStringLiteral("no header partition pack");
        case TarnAvidMXFInfo::kNotOPAtom:
            return QStringLiteral("not OP-Atom");
        default:
            return QStringLiteral("unknown");
    }
}

QJsonObject inspectMxf(QJsonObject facts, const QString& path) {
    const int fd = TarnRegularFile::openForReading(path, nullptr);
    FILE* stream = fd < 0 ? nullptr : fdopen(fd, "rb");
    if (!stream) {
        if (fd >= 0) ::close(fd);
        return failure(facts, QStringLiteral("cannot be opened"));
    }
    TarnAvidMXFInfo::Info info;
    const int status = TarnAvidMXFInfo::read(stream, &info, 0);
    std::fclose(stream);
    if (status == TarnAvidMXFInfo::kOpenFailed ||
        status == TarnAvidMXFInfo::kHeaderPartitionFailed) {
        TarnAvidMXFInfo::free(&info);
        return failure(facts, QStringLiteral("not an MXF file (status %1: %2)")
                                  .arg(status)
                                  .arg(mxfStatusText(status)));
    }
    facts.insert(QStringLiteral("status"), status);
    facts.insert(QStringLiteral("status_text"), mxfStatusText(status));
    auto text = [](const std::optional<std::string>& s) {
        return s ? QJsonValue(QString::fromStdString(*s)) : QJsonValue(QJsonValue::Null);
    };
    // Identifiers in the system's order, as the media database keeps them.
    auto uid = [&](const std::array<quint8, 32>& stored) {
        if (status != TarnAvidMXFInfo::kOK) return QJsonValue(QJsonValue::Null);
        const QByteArray tarn = TarnMXF::swapUUIDfromMXFtoTarn(
            QByteArray(reinterpret_cast<const char*>(stored.data()), 32));
        return QJsonValue(hex(tarn.constData(), 32));
    };
    facts.insert(QStringLiteral("clip_name"), text(info.clipName));
    facts.insert(QStringLiteral("project"), text(info.projectName));
    facts.insert(QStringLiteral("file_package_uid"), uid(info.fileSourcePackageUID));
    facts.insert(QStringLiteral("material_package_uid"), uid(info.materialPackageUID));
    TarnAvidMXFInfo::free(&info);
    return facts;
}

bool startsWith(const QString& path, const QByteArray& prefix) {
    const int fd = TarnRegularFile::openForReading(path, nullptr);
    if (fd < 0) return false;
    QByteArray head(prefix.size(), '\0');
    const ssize_t n = ::read(fd, head.data(), size_t(head.size()));
    ::close(fd);
    return n == head.size() && head == prefix;
}

// The kind of file by extension, else by the first bytes.
QString kindOf(const QString& path) {
    const QString ext = TarnFileName::extension(path).toLower();
    if (ext == QLatin1String("pmr")) return QStringLiteral("pmr");
    if (ext == QLatin1String("avb")) return QStringLiteral("bin");
    if (ext == QLatin1String("mdb")) return QStringLiteral("mdb");
    if (ext == QLatin1String("omf") || ext == QLatin1String("aif") || ext == QLatin1String("wav"))
        return QStringLiteral("omf");
    if (ext == QLatin1String("mxf")) return QStringLiteral("mxf");
    if (startsWith(path, QByteArray::fromHex("a9070000")) ||
        startsWith(path, QByteArray::fromHex("000007a9")))
        return QStringLiteral("pmr");
    if (startsWith(path, QByteArray("\x06\x00"
                                    "DomainDJBO",
                                    12)))
        return QStringLiteral("bin");
    return QString();
}

QString uidText(const QJsonValue& value) {
    const QString h = value.toString();
    if (h.size() != 64) return QStringLiteral("{ %1 }").arg(h);
    QStringList groups;
    for (int i = 0; i < 64; i += 8) groups.append(h.mid(i, 8));
    return QStringLiteral("{ %1 }").arg(groups.join(QLatin1Char('-')));
}

QString line(const char* label, const QString& value) {
    return QStringLiteral("  %1 %2\n").arg(QLatin1String(label), -14).arg(value);
}

QString orNone(const QJsonValue& value) {
    return value.isNull() ? QStringLiteral("(none)") : value.toString();
}

}  // namespace

QJsonObject FileReportCommand::inspect(const QString& path) {
    QJsonObject facts;
    facts.insert(QStringLiteral("path"), path);
    const QFileInfo info(path);
    if (!info.exists()) return failure(facts, QStringLiteral("no such file"));
    if (info.isDir()) return failure(facts, QStringLiteral("is a folder"));
    const QString kind = kindOf(path);
    facts.insert(QStringLiteral("kind"), kind.isNull() ? QJsonValue(QJsonValue::Null) : kind);
    if (kind == QLatin1String("pmr")) return inspectPmr(facts, path);
    if (kind == QLatin1String("bin")) return inspectBin(facts, path);
    if (kind == QLatin1String("mdb") || kind == QLatin1String("omf"))
        return inspectBento(facts, path);
    if (kind == QLatin1String("mxf")) return inspectMxf(facts, path);
    return failure(facts, QStringLiteral("no reader takes this file"));
}

QString FileReportCommand::humanText(const QJsonObject& f) {
    const QString kind = f.value(QStringLiteral("kind")).toString();
    QString out = f.value(QStringLiteral("path")).toString() + QLatin1Char('\n');
    auto num = [&](const char* key) {
        return QString::number(f.value(QLatin1String(key)).toInteger());
    };
    const QString order =
        f.value(QStringLiteral("byte_order")).toString() + QStringLiteral("-endian");
    if (kind == QLatin1String("pmr")) {
        const qint64 uidSize = f.value(QStringLiteral("uid_size")).toInteger();
        out += line("kind:", QStringLiteral("media file index"));
        out += line("byte order:", order);
        out +=
            line("UID size:", uidSize == 8   ? QStringLiteral("8 (32-byte UMIDs)")
                              : uidSize == 2 ? QStringLiteral("2 (8-byte short identifiers)")
                                             : QStringLiteral("%1 (no identifiers)").arg(uidSize));
        out += line(
            "entries:",
            QStringLiteral("%1 claimed, %2 read").arg(num("entries_claimed"), num("entries_read")));
        if (f.contains(QStringLiteral("stopped_at")))
            out += line("stopped at:",
                        QStringLiteral("offset %1 (damaged or cut entry)").arg(num("stopped_at")));
        int n = 0;
        for (const QJsonValue& v : f.value(QStringLiteral("entries")).toArray()) {
            const QJsonObject e = v.toObject();
            out +=
                QStringLiteral("  #%1 %2\n").arg(++n).arg(orNone(e.value(QStringLiteral("name"))));
            out += QStringLiteral("     project:      %1\n")
                       .arg(orNone(e.value(QStringLiteral("project"))));
            out += QStringLiteral("     file UID:     %1\n")
                       .arg(uidText(e.value(QStringLiteral("file_package_uid"))));
            out += QStringLiteral("     material UID: %1\n")
                       .arg(uidText(e.value(QStringLiteral("material_package_uid"))));
        }
    } else if (kind == QLatin1String("mdb") || kind == QLatin1String("omf")) {
        out += line("kind:", kind == QLatin1String("mdb") ? QStringLiteral("media database")
                                                          : QStringLiteral("OMF media file"));
        out += line("byte order:", order);
        out += line("version:", QStringLiteral("OMF %1").arg(num("major_version")));
        out += line("TOC:", QStringLiteral("%1 bytes at offset %2, %3 entries")
                                .arg(num("toc_size"), num("toc_offset"), num("toc_entries")));
        out += line("objects:", num("objects"));
        out += line("compositions:", num("compositions"));
    } else if (kind == QLatin1String("mxf")) {
        const QJsonValue fileUID = f.value(QStringLiteral("file_package_uid"));
        const QJsonValue materialUID = f.value(QStringLiteral("material_package_uid"));
        out += line("kind:", QStringLiteral("MXF media file"));
        out +=
            line("status:", QStringLiteral("%1 (%2)").arg(
                                num("status"), f.value(QStringLiteral("status_text")).toString()));
        out += line("clip name:", orNone(f.value(QStringLiteral("clip_name"))));
        out += line("project:", orNone(f.value(QStringLiteral("project"))));
        out += line("file UID:", fileUID.isNull() ? orNone(fileUID) : uidText(fileUID));
        out += line("material UID:",
                    materialUID.isNull() ? orNone(materialUID) : uidText(materialUID));
    } else if (kind == QLatin1String("bin")) {
        out += line("kind:", QStringLiteral("Avid bin"));
        out += line("references:", num("references"));
        for (const QJsonValue& v : f.value(QStringLiteral("short_uids")).toArray())
            out += QStringLiteral("  %1\n").arg(uidText(v));
    }
    return out;
}

int FileReportCommand::run(const QStringList& args) {
    bool json = false;
    QStringList paths;
    for (const QString& arg : args) {
        if (arg == QLatin1String("--json")) {
            json = true;
        } else if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (arg.startsWith(QLatin1Char('-')) && arg.size() > 1) {
            std::fprintf(stderr, "tarn inspect: unknown option '%s'\n%s", qPrintable(arg), kUsage);
            return 2;
        } else {
            paths.append(arg);
        }
    }
    if (paths.isEmpty()) {
        std::fputs(kUsage, stderr);
        return 2;
    }

    int status = 0;
    QJsonArray files;
    bool first = true;
    for (const QString& path : paths) {
        const QJsonObject facts = inspect(path);
        const bool taken = !facts.contains(QStringLiteral("error"));
        if (!taken) status = 1;
        if (json) {
            files.append(facts);
        } else if (taken) {
            if (!first) std::fputs("\n", stdout);
            std::fputs(humanText(facts).toUtf8().constData(), stdout);
            first = false;
        } else {
            std::fflush(stdout);
            std::fprintf(stderr, "tarn inspect: %s: %s\n", qPrintable(path),
                         qPrintable(facts.value(QStringLiteral("error")).toString()));
        }
    }
    if (json) {
        QJsonObject root;
        root.insert(QStringLiteral("files"), files);
        std::fputs(QJsonDocument(root).toJson(QJsonDocument::Indented).constData(), stdout);
    }
    return status;
}
