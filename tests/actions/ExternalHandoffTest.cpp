#include <QStandardPaths>

#include "ActionTestKit.h"
#include "actions/TarnExternalHandoff.h"
#include "database/TarnCore.h"
#include "support/TarnDesktopEntry.h"
#include "support/TarnPreferences.h"

using namespace actiontest;

namespace {

struct DesktopEntryFixture : ::testing::Test {
    QTemporaryDir tmp;
    testsupport::ScopedEnv data{"XDG_DATA_HOME", tmp.path() + "/data"};
    // Writes "<id>.desktop" into the user's applications folder.
    QString entry(const QString& id, const QString& exec) {
        const QString path = tmp.path() + "/data/applications/" + id + ".desktop";
        writeFile(path,
                  "[Desktop Action Other]\nExec=other\n\n[Desktop Entry]\nType=Application\n"
                  "Name=Viewer\nIcon=viewer-icon\nExec=" +
                      exec.toUtf8() + "\n");
        return path;
    }
    QList<QStringList> lines(const QString& exec, const QStringList& paths) {
        TarnDesktopEntry e;
        EXPECT_TRUE(e.load(entry("tarn-test-viewer", exec)));
        return e.commandLines(paths);
    }
};

// The quoting rules split the command; the field codes decide how the files
// are passed.
TEST_F(DesktopEntryFixture, FieldCodesDecideHowTheFilesArePassed) {
    const QStringList two{"/m/a b.mxf", "/m/c.mxf"};
    const struct {
        const char* exec;
        QList<QStringList> expected;
    } cases[] = {
        {"viewer %F", {{"viewer", "/m/a b.mxf", "/m/c.mxf"}}},
        {"viewer %U --x", {{"viewer", "/m/a b.mxf", "/m/c.mxf", "--x"}}},
        {"viewer %f", {{"viewer", "/m/a b.mxf"}, {"viewer", "/m/c.mxf"}}},
        {"viewer --open", {{"viewer", "--open", "/m/a b.mxf", "/m/c.mxf"}}},
        {"viewer --name %c %i %F",
         {{"viewer", "--name", "Viewer", "--icon", "viewer-icon", "/m/a b.mxf", "/m/c.mxf"}}},
        {"viewer 100%% %d %F", {{"viewer", "100%", "/m/a b.mxf", "/m/c.mxf"}}},
        {R"(viewer\s--x %F)", {{"viewer", "--x", "/m/a b.mxf", "/m/c.mxf"}}},
        {"  viewer   --x  ", {{"viewer", "--x", "/m/a b.mxf", "/m/c.mxf"}}},
        {R"("/opt/My App/viewer" --title "a \"q\" b" "" %F)",
         {{"/opt/My App/viewer", "--title", R"(a "q" b)", "", "/m/a b.mxf", "/m/c.mxf"}}},
        {R"(viewer "open %F)", {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(lines(QString::fromUtf8(c.exec), two), c.expected) << c.exec;
    EXPECT_EQ(lines("viewer %f", {}), QList<QStringList>({{"viewer"}}));
}

TEST_F(DesktopEntryFixture, ApplicationIsAnEntryOrACommandThatMustExist) {
    const QString sh = QStandardPaths::findExecutable("sh");
    ASSERT_FALSE(sh.isEmpty());
    entry("tarn-test-viewer", "sh -c true %F");
    entry("tarn-test-gone", "tarn-no-such-program %F");
    const struct {
        const char* application;
        QStringList command;  // empty: not found
    } cases[] = {{"tarn-test-viewer.desktop", {sh, "-c", "true", "/m/a.mxf"}},
                 {"sh -e", {sh, "-e", "/m/a.mxf"}},
                 {"/bin/sh", {"/bin/sh", "/m/a.mxf"}},
                 {"tarn-test-gone", {}},
                 {"tarn-no-such-program", {}},
                 {"/nonexistent/viewer", {}},
                 {"  ", {}}};
    for (const auto& c : cases) {
        QList<TarnExternalHandoff::Launch> launches;
        EXPECT_EQ(TarnExternalHandoff::openCommands(c.application, {"/m/a.mxf"}, &launches),
                  !c.command.isEmpty())
            << c.application;
        QStringList command;
        for (const auto& launch : launches) command << launch.program << launch.arguments;
        EXPECT_EQ(command, c.command) << c.application;
    }
}

TEST(ExternalHandoff, ExistingPathsFollowTheRowsAndLeaveOutMissingFiles) {
    QTemporaryDir tmp;
    QList<TarnItemPtr> items;
    for (const char* name : {"a.mxf", "b.mxf", "c.mxf", "d.mxf"}) {
        writeFile(tmp.path() + "/" + name, "x");
        items.append(makeItem(tmp.path() + "/" + name));
    }
    QFile::remove(tmp.path() + "/c.mxf");  // gone since the scan
    TarnCore core;
    core.AddItemsFromArray(items);
    core.LoadDefaults();
    EXPECT_EQ(TarnExternalHandoff::existingPaths(core, {3, 0, 2, 0, 9}),
              QStringList({tmp.path() + "/a.mxf", tmp.path() + "/d.mxf"}));
    EXPECT_TRUE(TarnExternalHandoff::existingPaths(core, {}).isEmpty());
}

// The default script of this platform passes the paths on and is valid shell.
TEST(ExternalHandoff, DefaultScriptIsValidShell) {
    const QString script = TarnPreferences::basescript();
    EXPECT_TRUE(script.contains("\"$@\""));
    const testsupport::ProcessRun check = testsupport::runProcess("/bin/sh", {"-n", "-c", script});
    EXPECT_EQ(check.exitCode, 0) << check.err.toStdString();
}

}  // namespace
