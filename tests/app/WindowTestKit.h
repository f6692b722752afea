#pragma once

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

#include "DemoVolume.h"
#include "database/TarnCore.h"
#include "database/TarnFilter.h"
#include "models/DatabaseTableModel.h"
#include "models/ProjectsModel.h"
#include "models/SummaryTableModel.h"
#include "status/StatusStrip.h"
#include "status/TarnStatusViewController.h"
#include "support/TarnPreferences.h"
#include "window/AppDelegate.h"
#include "window/CommandGuard.h"
#include "window/CoreAccess.h"
#include "window/DatabaseTableView.h"
#include "window/FilterCommands.h"
#include "window/MainWindow.h"
#include "window/PreferencesCommands.h"
#include "window/ScanCommands.h"

inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}

namespace apptest {

// Turns the GUI thread's event loop until the condition holds. No time
// limit: a hang is the test runner's to end.
template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(1);
    }
}

// The demo volume, written once for the whole suite.
inline const QString& demoRoot() {
    static QTemporaryDir folder;
    static const QString root = [] {
        const QString path = folder.filePath(QStringLiteral("Demo Volume"));
        QString error;
        if (!fixtures::DemoVolume::write(path, &error)) ADD_FAILURE() << error.toStdString();
        return path;
    }();
    return root;
}

inline QString text(const QAbstractItemModel& model, int row, int column) {
    return model.data(model.index(row, column)).toString();
}

inline int section(TarnColumn column) {
    return DatabaseTableModel::sectionOf(column);
}

// The texts of one column of the database table, top to bottom.
inline QStringList columnTexts(const AppDelegate& app, TarnColumn column) {
    QStringList texts;
    const QAbstractItemModel& model = *app.databaseModel();
    for (int row = 0; row < model.rowCount(); ++row) texts << text(model, row, section(column));
    return texts;
}

// `tarn scan ARGS...` with the suite's settings; its standard output.
inline QString tarnScan(const QStringList& args) {
    QProcess process;
    process.start(QStringLiteral(TARN_CLI_PATH), QStringList{QStringLiteral("scan")} + args);
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

// A window on a database of its own, with the preferences at their defaults.
class AppTest : public ::testing::Test {
  protected:
    void SetUp() override {
        TarnPreferences::shared()->resetToDefaults();
        TarnFilter::sharedFilter()->ResetFilter();
        TarnStatusViewController::getTheController()->setIsRunning(false);
        app_ = std::make_unique<AppDelegate>(&core_);
        ASSERT_EQ(app_->start({QStringLiteral("tarn-app")}), AppDelegate::StartResult::Started);
        app_->setRevealHandler([this](const QString& path) { revealed_ << path; });
    }

    void TearDown() override { app_.reset(); }

    // Runs a scan command and waits for its end on the GUI thread.
    template <typename Command>
    void scanWith(Command command) {
        QSignalSpy ended(app_->scans(), &ScanCommands::scanEnded);
        command();
        waitUntil([&] { return ended.count() > 0; });
    }
    void scanDemo() {
        scanWith([this] { app_->scans()->scanPaths({demoRoot()}); });
    }

    MainWindow& window() { return *app_->window(); }
    const QAbstractItemModel& table() { return *app_->databaseModel(); }

    TarnCore core_;
    std::unique_ptr<AppDelegate> app_;
    QStringList revealed_;
};

}  // namespace apptest
