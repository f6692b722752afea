#include "AppTestKit.h"
#include "external/TarnExternalLauncher.h"

using namespace apptest;

namespace {

struct LauncherFixture : ::testing::Test {
    QTemporaryDir tmp;
    testsupport::ScopedEnv data{"XDG_DATA_HOME", tmp.path() + "/data"};
    TarnExternalLauncher launcher;
    QList<TarnExternalHandoff::Launch> started;
    bool startSucceeds = true;

    void SetUp() override {
        launcher.setStarter(
            [this](const TarnExternalHandoff::Launch& launch, const QProcessEnvironment&) {
                started << launch;
                return startSucceeds;
            });
    }
    void TearDown() override { TarnPreferences::shared()->clearRunOverrides(); }
    void prefer(const char* key, const QString& value) {
        TarnPreferences::shared()->setRunOverride(QString::fromLatin1(key), value);
    }
};

TEST_F(LauncherFixture, AnApplicationThatCannotBeStartedShowsExternalAppNotFound) {
    writeFile(tmp.path() + "/data/applications/tarn-test-viewer.desktop",
              "[Desktop Entry]\nName=Viewer\nExec=sh -c true %F\n");
    const std::tuple<const char*, bool, bool> cases[] = {
        // application, whether its start succeeds, whether it opens
        {"tarn-no-such-application", true, false},
        {"", true, false},
        {"tarn-test-viewer", false, false},  // found, but the start fails
        {"tarn-test-viewer", true, true},
    };
    for (const auto& [application, starts, opened] : cases) {
        startSucceeds = starts;
        prefer(TarnPreferences::kExternalAppBundleID, application);
        AnsweringPresenter answers(always("OK"));
        EXPECT_EQ(launcher.OpenInExternalApp({"/m/a.mxf", "/m/b c.mxf"}), opened) << application;
        EXPECT_EQ(answers.messages + answers.details,
                  opened ? QStringList() : QStringList({"External App not found", application}));
    }
    ASSERT_EQ(started.size(), 2);
    EXPECT_EQ(started.last().arguments, QStringList({"-c", "true", "/m/a.mxf", "/m/b c.mxf"}));
}

// The script runs (really, detached) with the application in its
// environment and the paths as arguments and on the clipboard; an empty
// selection runs it too.
TEST_F(LauncherFixture, TheScriptGetsThePathsOnTheClipboardAndAsArguments) {
    prefer(TarnPreferences::kExternalAppBundleID, "viewer");
    EXPECT_TRUE(launcher.ExecuteApplescript({}));
    EXPECT_EQ(started.size(), 1);
    launcher.setStarter({});
    const QString out = tmp.path() + "/out";
    prefer(TarnPreferences::kExtApplescript,
           QStringLiteral(
               "printf '%s|' \"$TARN_EXTERNAL_APP\" \"$@\" > '%1.part' && mv '%1.part' '%1'")
               .arg(out));
    ASSERT_TRUE(launcher.ExecuteApplescript({"/m/a b.mxf", "/m/c.mxf"}));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "/m/a b.mxf\r/m/c.mxf");
    waitUntil([&] { return QFileInfo::exists(out); });
    EXPECT_EQ(contentOf(out), "viewer|/m/a b.mxf|/m/c.mxf|");
}

}  // namespace
