#include <QClipboard>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "AppTestKit.h"
#include "TestSupport.h"
#include "external/TarnExternalLauncher.h"
#include "support/TarnPreferences.h"

using namespace apptest;

namespace {

struct LauncherFixture : ::testing::Test {
    QTemporaryDir tmp;
    testsupport::ScopedEnv data{"XDG_DATA_HOME", tmp.path() + "/data"};
    TarnExternalLauncher launcher;
    QList<TarnExternalHandoff::Launch> started;
    QStringList externalApp;  // TARN_EXTERNAL_APP of each start
    bool startSucceeds = true;

    void SetUp() override {
        launcher.setStarter(
            [this](const TarnExternalHandoff::Launch& launch, const QProcessEnvironment& env) {
                started << launch;
                externalApp << env.value("TARN_EXTERNAL_APP");
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
    const struct {
        const char* application;
        bool startSucceeds;
        bool opened;
    } cases[] = {
        {"tarn-no-such-application", true, false},
        {"", true, false},
        {"tarn-test-viewer", false, false},  // found, but the start fails
        {"tarn-test-viewer", true, true},
    };
    for (const auto& c : cases) {
        started.clear();
        startSucceeds = c.startSucceeds;
        prefer(TarnPreferences::kExternalAppBundleID, c.application);
        AnsweringPresenter answers(always("OK"));
        EXPECT_EQ(launcher.OpenInExternalApp({"/m/a.mxf", "/m/b c.mxf"}), c.opened)
            << c.application;
        if (c.opened) {
            EXPECT_TRUE(answers.messages().isEmpty());
        } else {
            EXPECT_EQ(answers.messages(), QStringList({"External App not found"}));
            EXPECT_EQ(answers.details(), QStringList({c.application}));
        }
    }
    ASSERT_EQ(started.size(), 1);
    EXPECT_EQ(started.at(0).program, QStandardPaths::findExecutable("sh"));
    EXPECT_EQ(started.at(0).arguments, QStringList({"-c", "true", "/m/a.mxf", "/m/b c.mxf"}));
    EXPECT_EQ(externalApp.last(), "tarn-test-viewer");
}

TEST_F(LauncherFixture, TheScriptGetsThePathsOnTheClipboardAndAsArguments) {
    prefer(TarnPreferences::kExtApplescript, "echo selected");
    prefer(TarnPreferences::kExternalAppBundleID, "mediainfo-gui");
    const struct {
        QStringList paths;
        const char* clipboard;
    } cases[] = {
        {{"/m/a.mxf", "/m/b c.mxf", "/m/d.mxf"}, "/m/a.mxf\r/m/b c.mxf\r/m/d.mxf"},
        {{"/m/a.mxf"}, "/m/a.mxf"},
        {{}, ""},  // an empty selection still runs the script
    };
    for (const auto& c : cases) {
        started.clear();
        QGuiApplication::clipboard()->setText("before");
        EXPECT_TRUE(launcher.ExecuteApplescript(c.paths));
        EXPECT_EQ(QGuiApplication::clipboard()->text(), c.clipboard);
        ASSERT_EQ(started.size(), 1);
        EXPECT_EQ(started.at(0).program, "/bin/sh");
        EXPECT_EQ(started.at(0).arguments, QStringList({"-c", "echo selected", "tarn"}) + c.paths);
        EXPECT_EQ(externalApp.last(), "mediainfo-gui");
    }
}

TEST_F(LauncherFixture, TheScriptReallyRuns) {
    launcher.setStarter({});  // the real, detached start
    const QString out = tmp.path() + "/out";
    prefer(TarnPreferences::kExtApplescript,
           QStringLiteral(
               "printf '%s|' \"$TARN_EXTERNAL_APP\" \"$@\" > '%1.part' && mv '%1.part' '%1'")
               .arg(out));
    prefer(TarnPreferences::kExternalAppBundleID, "viewer");
    ASSERT_TRUE(launcher.ExecuteApplescript({"/m/a b.mxf", "/m/c.mxf"}));
    waitUntil([&] { return QFileInfo::exists(out); });
    EXPECT_EQ(readFile(out), "viewer|/m/a b.mxf|/m/c.mxf|");
}

}  // namespace
