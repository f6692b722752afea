#include <gtest/gtest.h>

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "FixtureFiles.h"
#include "ItemFacts.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"
#include "readers/TarnMediafile.h"

namespace {

using fixtures::MxfTrackKind;

// What an item gets from one file through the reader front; nothing when the
// file does not open.
QStringList readThroughFront(const QString& path) {
    TarnMediafile front;
    if (!front.openFile(path, nullptr)) return {};
    TarnDatabaseItem item;
    front.addInfoToItem(&item);
    return mxfFacts(item);
}

// The extension, in any case, picks the reader: none for unknown ones, the
// OMF reader (1) for audio, databases and OMF, the AAF reader (3) that
// refuses with its log line, the MXF reader (4). Every open drops the reader
// of the file before: an item gets nothing from a file no reader takes.
TEST(MediafileFront, TheExtensionPicksTheReader) {
    QTemporaryDir dir;
    fixtures::MxfClip clip;
    clip.clipName = "Take 1";
    const QByteArray mxf = fixtures::writeMxf(clip);
    const QString before = dir.filePath("before.mxf");
    ASSERT_TRUE(fixtures::writeFile(before, mxf));
    const std::pair<const char*, quint32> cases[] = {
        {"clip.mxf2", 0},   {"clip", 0},  {"a.wav", 1},    {"b.AIF", 1},
        {"msmMMOB.mdb", 1}, {"c.omf", 1}, {"link.aaf", 3}, {"CLIP.MXF", 4},
    };
    for (const auto& [name, readerType] : cases) {
        SCOPED_TRACE(name);
        const QString path = dir.filePath(name);
        ASSERT_TRUE(fixtures::writeFile(path, mxf));
        TarnMediafile front;
        ASSERT_TRUE(front.openFile(before, nullptr));
        testsupport::LogCapture log;
        EXPECT_EQ(front.openFile(path, nullptr), readerType == 4);
        EXPECT_EQ(front.dataSource() ? front.dataSource()->getType() : 0u, readerType);
        EXPECT_TRUE(readerType != 0 || log.text().isEmpty());
        EXPECT_EQ(log.contains("AAf file : open"), readerType == 3);
        TarnDatabaseItem item;
        front.addInfoToItem(&item);
        EXPECT_EQ(item.DB_NameInBin.isNull(), readerType != 4);
    }
    EXPECT_FALSE(TarnMediafile().openFile(QString(), nullptr));
}

// An Avid clip is one OP-Atom file per track, and each file's material
// package lists every track of the clip. Each file must read its own file
// package UMID, never that of the clip's first track.
TEST(MxfClipFiles, EachFileOfAClipReadsItsOwnFilePackage) {
    const auto V = MxfTrackKind::kPicture, A = MxfTrackKind::kSound;
    const struct {
        const char* label;
        QList<MxfTrackKind> tracks;
        bool essenceContainerData;  // false: only the streams tell the own track
        bool allSourcePackages;     // true: only the essence container data tells it
    } cases[] = {
        {"V1+A1", {V, A}, true, false},
        {"V1+A1+A2", {V, A, A}, true, false},
        {"A1+A2", {A, A}, true, false},
        {"V1+A1+A2 without essence container data", {V, A, A}, false, false},
        {"V1+A1+A2, each header holding every source package", {V, A, A}, true, true},
    };
    quint32 seed = 500;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        fixtures::MxfClip clip;
        clip.clipName = "Harbour 12B";
        clip.projectName = "Harbour";
        clip.materialUMID = fixtures::umidFor(++seed);
        clip.essenceContainerData = c.essenceContainerData;
        clip.allSourcePackages = c.allSourcePackages;
        for (MxfTrackKind kind : c.tracks)
            clip.clipTracks.append({kind, fixtures::umidFor(++seed)});

        QTemporaryDir dir;
        const QList<QByteArray> files = fixtures::writeMxfClip(clip);
        ASSERT_EQ(files.size(), c.tracks.size());
        for (qsizetype t = 0; t < files.size(); ++t) {
            const QString path = dir.filePath(QString("track%1.mxf").arg(t));
            ASSERT_TRUE(fixtures::writeFile(path, files[t]));
            EXPECT_EQ(readThroughFront(path), mxfFacts(clip, clip.clipTracks[t].fileUMID)) << t;
        }
    }
}

// The three files of one DV 25 clip written by another MXF toolkit, with the
// values its own Avid info reader gives.
TEST(MxfClipFiles, ClipWrittenByAnotherToolkit) {
    const QDir samples(TARN_MXF_SAMPLES_DIR);
    if (!samples.exists())
        GTEST_SKIP() << "no MXF samples at " << TARN_MXF_SAMPLES_DIR << ": nothing to compare";
    const QString material = "060a2b340101010101010f0013000000c472046bec8d6c66060e2b347f7f2a80";
    const std::pair<const char*, const char*> expected[] = {
        {"r06_dv25pal_v1.mxf", "060a2b340101010101010f0013000000c472046bed8d6c66060e2b347f7f2a80"},
        {"r06_dv25pal_a1.mxf", "060a2b340101010101010f0013000000c472046bee8d6c66060e2b347f7f2a80"},
        {"r06_dv25pal_a2.mxf", "060a2b340101010101010f0013000000c472046bef8d6c66060e2b347f7f2a80"},
    };
    for (const auto& [file, fileUmid] : expected) {
        EXPECT_EQ(readThroughFront(samples.filePath(QString::fromLatin1(file))),
                  (QStringList{"DV25 PAL clip", "DV Proj", fileUmid, material}))
            << file;
    }
}

// OP-Atom files written by FFmpeg's own muxer, not by our fixture writer.
class ForeignMxf : public ::testing::TestWithParam<const char*> {};

TEST_P(ForeignMxf, FfmpegOpAtomFileGivesClipNameAndBothUmids) {
    const QString ffmpeg = QStandardPaths::findExecutable("ffmpeg");
    if (ffmpeg.isEmpty())
        GTEST_SKIP() << "ffmpeg is not installed: no foreign OP-Atom file to read";

    QTemporaryDir dir;
    const QString path = dir.filePath("foreign.mxf");
    const QStringList args =
        QStringList{"-hide_banner", "-loglevel", "error", "-y"} +
        QString::fromLatin1(GetParam()).split(QLatin1Char(' ')) +
        QStringList{"-metadata", "material_package_name=Foreign Clip", "-f", "mxf_opatom", path};
    const testsupport::ProcessRun run = testsupport::runProcess(ffmpeg, args);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();

    // The PackageUID item (tag 4401, 32 bytes) of the material (key byte 14:
    // 0x36) and the file source package (0x37) sets.
    const QByteArray bytes = testsupport::contentOf(path);
    const auto packageUid = [&](char kind) {
        const QByteArray key = QByteArray::fromHex("060e2b34025301010d0101010101") + kind + '\0';
        return bytes.mid(bytes.indexOf(QByteArray::fromHex("44010020"), bytes.indexOf(key)) + 4,
                         32);
    };
    fixtures::MxfClip clip;
    clip.clipName = "Foreign Clip";
    clip.materialUMID = packageUid(0x36);
    ASSERT_NE(clip.materialUMID, packageUid(0x37));
    EXPECT_EQ(readThroughFront(path), mxfFacts(clip, packageUid(0x37)));
}

INSTANTIATE_TEST_SUITE_P(
    Essence, ForeignMxf,
    ::testing::Values("-f lavfi -i sine=d=0.2:sample_rate=48000 -c:a pcm_s16le",
                      "-f lavfi -i testsrc=d=0.12:s=64x64:r=25 -s 1920x1080 -pix_fmt yuv422p "
                      "-c:v dnxhd -b:v 36M"));

}  // namespace
