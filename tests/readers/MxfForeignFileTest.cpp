#include <gtest/gtest.h>

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"
#include "readers/TarnMXF.h"
#include "readers/TarnMediafile.h"

namespace {

// The PackageUID (local tag 4401) of the first header metadata set of the
// given kind (byte 14 of its key: 0x36 material package, 0x37 source
// package), found by walking the file's KLV triplets.
QByteArray packageUid(const QByteArray& file, quint8 setKind) {
    const auto* d = reinterpret_cast<const quint8*>(file.constData());
    const qsizetype size = file.size();
    qsizetype p = 0;
    while (p + 17 <= size) {
        const quint8* key = d + p;
        qsizetype q = p + 17;
        quint64 len = key[16];
        if (len & 0x80) {
            const int n = int(len & 0x7f);
            if (n > 8 || q + n > size) return {};
            len = 0;
            for (int i = 0; i < n; ++i) len = (len << 8) | d[q + i];
            q += n;
        }
        if (len > quint64(size - q)) return {};
        if (key[4] == 0x02 && key[5] == 0x53 && key[14] == setKind) {
            for (qsizetype r = q; r + 4 <= q + qsizetype(len);) {
                const int tag = d[r] << 8 | d[r + 1];
                const int itemLen = d[r + 2] << 8 | d[r + 3];
                if (tag == 0x4401 && itemLen == 32) return file.mid(r + 4, 32);
                r += 4 + itemLen;
            }
        }
        p = q + qsizetype(len);
    }
    return {};
}

// OP-Atom files written by FFmpeg's own muxer, not by our fixture writer.
class ForeignMxf : public ::testing::TestWithParam<const char*> {};

TEST_P(ForeignMxf, FfmpegOpAtomFileGivesClipNameAndBothUmids) {
    const QString ffmpeg = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
    if (ffmpeg.isEmpty())
        GTEST_SKIP() << "ffmpeg is not installed: no foreign OP-Atom file to read";

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("foreign.mxf"));
    QStringList args = {QStringLiteral("-hide_banner"), QStringLiteral("-loglevel"),
                        QStringLiteral("error"), QStringLiteral("-y")};
    args += QString::fromLatin1(GetParam()).split(QLatin1Char(' '));
    args += {QStringLiteral("-metadata"), QStringLiteral("material_package_name=Foreign Clip"),
             QStringLiteral("-f"), QStringLiteral("mxf_opatom"), path};
    const testsupport::ProcessRun run = testsupport::runProcess(ffmpeg, args);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const QByteArray material = packageUid(bytes, 0x36);
    const QByteArray source = packageUid(bytes, 0x37);
    ASSERT_EQ(material.size(), 32);
    ASSERT_EQ(source.size(), 32);
    ASSERT_NE(material, source);

    TarnMediafile mediafile;
    ASSERT_TRUE(mediafile.openFile(path, nullptr));
    const auto* reader = dynamic_cast<TarnMXF*>(mediafile.dataSource());
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->MXFinfo().value(QStringLiteral("matUID")).toByteArray(), material);
    EXPECT_EQ(reader->MXFinfo().value(QStringLiteral("fileUID")).toByteArray(), source);

    TarnDatabaseItem item;
    mediafile.addInfoToItem(&item);
    EXPECT_EQ(item.DB_NameInBin, QStringLiteral("Foreign Clip"));
    const auto* fileUid = item.DB_filePackageUID();
    const auto* matUid = item.DB_materialPackageUID();
    for (int i = 0; i < 32; ++i) {
        // Bytes 16..23 turn into little-endian GUID fields; the rest stay.
        int from = i;
        if (i >= 16 && i < 20) from = 35 - i;
        if (i >= 20 && i < 24) from = i ^ 1;
        EXPECT_EQ(fileUid[i], quint8(source[from])) << i;
        EXPECT_EQ(matUid[i], quint8(material[from])) << i;
    }
    EXPECT_TRUE(item.checkUUID());
}

INSTANTIATE_TEST_SUITE_P(
    Essence, ForeignMxf,
    ::testing::Values("-f lavfi -i sine=d=0.2:sample_rate=48000 -c:a pcm_s16le",
                      "-f lavfi -i testsrc=d=0.12:s=64x64:r=25 -s 1920x1080 -pix_fmt yuv422p "
                      "-c:v dnxhd -b:v 36M"));

}  // namespace
