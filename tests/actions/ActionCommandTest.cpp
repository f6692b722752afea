#include <QDirIterator>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <fcntl.h>
#include <unistd.h>

#include "CommandKit.h"
#include "DemoVolume.h"
#include "actions/TarnFileCopier.h"

using namespace actiontest;

namespace {

// The demo volume, and an empty destination.
struct DemoCommand : CommandFixture {
    void SetUp() override {
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(vol(), &error)) << error.toStdString();
        QDir().mkpath(dst());
    }
};

TEST_F(DemoCommand, UsageErrorsAndRefusalsChangeNothing) {
    Outcome r = tarn({"copy", vol()});
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains("Invalid destination path"));
    r = tarn({"move", vol(), "--to", tmp.path() + "/nowhere", "--sure"});
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains("Please check destination path"));
    r = tarn({"copy", vol(), "--to", dst(), "--answer", "maybe"});
    EXPECT_EQ(r.code, 2);
    r = tarn({"copy", "--to", dst(), "--sure"});
    EXPECT_EQ(r.code, 2);

    r = tarn({"move", vol(), "--to", dst()});  // not sure
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.out.startsWith("will Move \n"));
    EXPECT_TRUE(r.err.contains("Please don't hurry, be patient...\nPlease verify everything"));

    r = tarn({"delete", vol(), "--dry-run"});
    EXPECT_EQ(r.code, 0);
    EXPECT_TRUE(r.out.contains("-> (Trash)"));
    EXPECT_TRUE(r.out.contains("destination: Super Secret Annihilator (SSA)"));
    r = tarn({"copy", vol(), "--to", dst(), "--keep-folders", "--dry-run"});
    EXPECT_EQ(r.code, 0);
    EXPECT_TRUE(r.out.contains(QStringLiteral("/MXF/1/") +
                               "Harbour_Wide_V01.5F3A1C01.mxf\n    -> " + dst() +
                               "/Harbour/MXF/1/Harbour_Wide_V01.5F3A1C01.mxf\n"))
        << r.out.toStdString();
    EXPECT_EQ(filesUnder(dst()), 0);
}

TEST_F(DemoCommand, CopyThenAnswersAndFailures) {
    const int before = filesUnder(vol());
    Outcome r = tarn({"copy", vol(), "--to", dst(), "--sure", "--no-project-folders",
                      "--action-log", tmp.path() + "/action.log"});
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    const QString log = QString::fromUtf8(readFile(tmp.path() + "/action.log"));
    EXPECT_TRUE(log.contains(":: Action :: Copy \n"));
    EXPECT_TRUE(log.endsWith(" :: TarnAction Finished\n"));
    EXPECT_FALSE(log.contains("ERROR"));
    EXPECT_TRUE(QFileInfo::exists(dst() + "/MXF/Harbour_Wide_V01.5F3A1C01.mxf"));
    EXPECT_TRUE(r.err.contains(QRegularExpression("copy: (\\d+) of \\1 items")));
    EXPECT_EQ(filesUnder(vol()), before);  // the sources stay

    // Again: every target exists; "no" keeps them, and a skip is no failure.
    r = tarn({"copy", vol(), "--to", dst(), "--sure", "--no-project-folders", "--answer", "no"});
    EXPECT_EQ(r.code, 0);
    EXPECT_TRUE(r.out.contains(":: FILE EXISTS AT DESTINATION \n:: SKIPPING \n"));
    EXPECT_FALSE(r.out.contains(":: OVERWRITING"));
    EXPECT_TRUE(r.err.contains("File exists at destination. Overwrite?"));

    // A file where a project folder should be: those files fail.
    writeFile(dst() + "/Harbour", "in the way");
    r = tarn({"copy", vol(), "--to", dst(), "--sure", "--answer", "all"});
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.out.contains(":: ERROR :: Not a directory :: " + dst() + "/Harbour/MXF \n"));
    EXPECT_EQ(readFile(dst() + "/Harbour"), QByteArray("in the way"));
}

TEST_F(DemoCommand, TerminationCancelsTheCopyAndKeepsEverything) {
    const QString big = vol() + "/Avid MediaFiles/MXF/1/Big.mxf";
    const qint64 size = 2LL * 1024 * 1024 * 1024;
    int fd = ::open(QFile::encodeName(big).constData(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::ftruncate(fd, size), 0);
    ::close(fd);

    QProcess p;
    p.setProcessEnvironment(env());
    p.start(QStringLiteral(TARN_CLI_PATH),
            {"copy", vol(), "--to", dst(), "--sure", "--no-mxf", "--project",
             "_00_TRN_UNMANAGED_FILES", "--no-type-folders"});
    p.closeWriteChannel();
    const QString folder = dst() + "/_00_TRN_UNMANAGED_FILES";
    // Wait until the big file is being written, then stop the run.
    auto copying = [&] {
        for (const QString& name : entries(folder))
            if (name.startsWith(TarnFileCopier::temporaryPrefix() + "Big.mxf")) return true;
        return false;
    };
    // Waiting on the process (not sleeping) is what notices a run that ended early.
    while (!copying() && p.state() != QProcess::NotRunning) p.waitForFinished(5);
    ASSERT_TRUE(copying()) << p.readAllStandardError().toStdString();
    p.terminate();
    p.waitForFinished(-1);
    EXPECT_EQ(p.exitCode(), 130);
    const QString out = QString::fromUtf8(p.readAllStandardOutput());
    EXPECT_TRUE(out.contains(" :: TarnAction Cancelled\n"));
    EXPECT_TRUE(out.endsWith(" :: TarnAction Finished\n"));
    EXPECT_FALSE(QFileInfo::exists(folder + "/Big.mxf"));
    EXPECT_FALSE(copying());
    EXPECT_EQ(QFileInfo(big).size(), size);
}

}  // namespace
