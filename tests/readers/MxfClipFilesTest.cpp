#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <set>
#include <string>

#include "FixtureFiles.h"
#include "MxfWriter.h"
#include "items/TarnDatabaseItem.h"
#include "readers/TarnMXF.h"
#include "readers/TarnMediafile.h"

namespace {

using fixtures::MxfClipTrack;
using fixtures::MxfTrackKind;

std::string hexOf(const quint8* uid) {
    return QByteArray(reinterpret_cast<const char*>(uid), 32).toHex().toStdString();
}

std::string systemOrderHex(const QByteArray& mxfUmid) {
    const QByteArray tarn = TarnMXF::swapUUIDfromMXFtoTarn(mxfUmid);
    return hexOf(reinterpret_cast<const quint8*>(tarn.constData()));
}

// What an item gets from one file through the reader front.
struct FileRead {
    bool opened = false;
    std::string clipName, project, fileUmid, materialUmid;  // UMIDs in the system's order, hex
};

FileRead readThroughFront(const QString& path) {
    TarnMediafile front;
    FileRead read;
    read.opened = front.openFile(path, nullptr);
    TarnDatabaseItem item;
    front.addInfoToItem(&item);
    read.clipName = item.DB_NameInBin.toStdString();
    read.project = item.DB_ProjectName.toStdString();
    read.fileUmid = hexOf(item.DB_filePackageUID());
    read.materialUmid = hexOf(item.DB_materialPackageUID());
    return read;
}

struct ClipCase {
    const char* label;
    QList<MxfTrackKind> tracks;
    bool essenceContainerData;  // false: only the streams tell the own track
    bool allSourcePackages;     // true: only the essence container data tells it
};

// An Avid clip is one OP-Atom file per track, and each file's material
// package lists every track of the clip. Each file must read its own file
// package UMID, never that of the clip's first track.
TEST(MxfClipFiles, EachFileOfAClipReadsItsOwnFilePackage) {
    const ClipCase cases[] = {
        {"V1+A1", {MxfTrackKind::kPicture, MxfTrackKind::kSound}, true, false},
        {"V1+A1+A2",
         {MxfTrackKind::kPicture, MxfTrackKind::kSound, MxfTrackKind::kSound},
         true,
         false},
        {"A1+A2", {MxfTrackKind::kSound, MxfTrackKind::kSound}, true, false},
        {"V1+A1+A2 without essence container data",
         {MxfTrackKind::kPicture, MxfTrackKind::kSound, MxfTrackKind::kSound},
         false,
         false},
        {"V1+A1+A2, each header holding every source package",
         {MxfTrackKind::kPicture, MxfTrackKind::kSound, MxfTrackKind::kSound},
         true,
         true},
    };
    quint32 seed = 500;
    for (const ClipCase& c : cases) {
        SCOPED_TRACE(c.label);
        fixtures::MxfClip clip;
        clip.clipName = QStringLiteral("Harbour 12B");
        clip.projectName = QStringLiteral("Harbour");
        clip.materialUMID = fixtures::umidFor(++seed);
        clip.essenceContainerData = c.essenceContainerData;
        clip.allSourcePackages = c.allSourcePackages;
        for (MxfTrackKind kind : c.tracks)
            clip.clipTracks.append({kind, fixtures::umidFor(++seed)});

        QTemporaryDir dir;
        const QList<QByteArray> files = fixtures::writeMxfClip(clip);
        ASSERT_EQ(files.size(), c.tracks.size());
        std::set<std::string> seen;
        for (qsizetype t = 0; t < files.size(); ++t) {
            SCOPED_TRACE(t);
            const QString path = dir.filePath(QStringLiteral("track%1.mxf").arg(t));
            ASSERT_TRUE(fixtures::writeFile(path, files[t]));
            const FileRead read = readThroughFront(path);
            ASSERT_TRUE(read.opened);
            EXPECT_EQ(read.fileUmid, systemOrderHex(clip.clipTracks[t].fileUMID));
            EXPECT_EQ(read.materialUmid, systemOrderHex(clip.materialUMID));
            EXPECT_EQ(read.clipName, "Harbour 12B");
            EXPECT_EQ(read.project, "Harbour");
            seen.insert(read.fileUmid);
        }
        EXPECT_EQ(qsizetype(seen.size()), files.size());  // one identity per file
    }
}

// The three files of one DV 25 clip written by another MXF toolkit, with the
// values its own Avid info reader gives.
TEST(MxfClipFiles, ClipWrittenByAnotherToolkit) {
    const QDir samples(QStringLiteral(TARN_MXF_SAMPLES_DIR));
    if (!samples.exists())
        GTEST_SKIP() << "no MXF samples at " << TARN_MXF_SAMPLES_DIR << ": nothing to compare";
    const std::string material = "060a2b340101010101010f0013000000c472046bec8d6c66060e2b347f7f2a80";
    const struct {
        const char* file;
        const char* fileUmid;
    } expected[] = {
        {"r06_dv25pal_v1.mxf", "060a2b340101010101010f0013000000c472046bed8d6c66060e2b347f7f2a80"},
        {"r06_dv25pal_a1.mxf", "060a2b340101010101010f0013000000c472046bee8d6c66060e2b347f7f2a80"},
        {"r06_dv25pal_a2.mxf", "060a2b340101010101010f0013000000c472046bef8d6c66060e2b347f7f2a80"},
    };
    for (const auto& e : expected) {
        SCOPED_TRACE(e.file);
        const QString path = samples.filePath(QString::fromLatin1(e.file));
        ASSERT_TRUE(QFileInfo::exists(path));
        const FileRead read = readThroughFront(path);
        ASSERT_TRUE(read.opened);
        EXPECT_EQ(read.clipName, "DV25 PAL clip");
        EXPECT_EQ(read.project, "DV Proj");
        EXPECT_EQ(read.materialUmid, material);
        EXPECT_EQ(read.fileUmid, e.fileUmid);
    }
}

}  // namespace
