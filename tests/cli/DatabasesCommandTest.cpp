#include <gtest/gtest.h>

#include <QFileInfo>

#include "CliRun.h"
#include "DemoVolume.h"
#include "TestSupport.h"

namespace {

class DatabasesCommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        root_ = run_.tempPath(QStringLiteral("Demo Volume"));
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(root_, &error)) << qPrintable(error);
    }
    QStringList databaseFiles() const {
        QStringList files;
        for (const char* folder :
             {"Avid MediaFiles/MXF/1", "Avid MediaFiles/MXF/2", "OMFI MediaFiles"})
            for (const char* name : {"msmFMID.pmr", "msmMMOB.mdb"})
                files << root_ + "/" + folder + "/" + name;
        return files;
    }

    CliRun run_;
    QString root_;
    testsupport::ScopedEnv data_{"XDG_DATA_HOME", run_.tempPath("data")};
};

TEST_F(DatabasesCommandTest, ListsTheVolumesIndexesAndDatabases) {
    const CliResult r = run_({"databases", "--volume", root_});
    EXPECT_EQ(r.exitCode, 0) << qPrintable(r.err);
    EXPECT_TRUE(r.out.startsWith("folder"));
    EXPECT_TRUE(r.out.endsWith("6 database files\n")) << qPrintable(r.out);
    for (const QString& path : databaseFiles()) {
        const QFileInfo info(path);
        const QRegularExpression row("(?m)^" + QRegularExpression::escape(info.path()) + " +" +
                                     info.fileName() + " ");
        EXPECT_TRUE(r.out.contains(row)) << qPrintable(path);
    }
}

TEST_F(DatabasesCommandTest, DeletesToTheTrashOnlyWhenSure) {
    const struct {
        QStringList args;
        int exitCode;
        bool deleted;
    } cases[] = {
        {{"--delete"}, 2, false},
        {{"--sure"}, 2, false},  // --sure alone is a mistake
        {{"--bogus"}, 2, false},
        {{"--delete", "--sure"}, 0, true},
    };
    for (const auto& c : cases) {
        const CliResult r = run_(QStringList{"databases", "--volume", root_} + c.args);
        EXPECT_EQ(r.exitCode, c.exitCode) << qPrintable(c.args.join(' ')) << qPrintable(r.err);
        for (const QString& path : databaseFiles())
            EXPECT_EQ(QFileInfo::exists(path), !c.deleted) << qPrintable(path);
    }
    EXPECT_EQ(testsupport::trashedPaths(run_.tempPath("data")), [&] {
        QStringList sorted = databaseFiles();
        sorted.sort();
        return sorted;
    }());
    const CliResult after = run_({"databases", "--volume", root_});
    EXPECT_TRUE(after.out.endsWith("0 database files\n"));
}

}  // namespace
