#pragma once

// Shared pieces of the app suite: waiting for the GUI thread's events,
// answering the message boxes from the test (through the presenter's hook,
// not by clicks on the screen), and a window on the demo volume.

#include <QtTest>
#include <QtWidgets>

#include <functional>
#include <memory>

#include <gtest/gtest.h>

#include "DemoVolume.h"
#include "FixtureFiles.h"
#include "QtPrinters.h"
#include "TestSupport.h"
#include "alerts/TarnAlertPresenter.h"
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
#include "window/DatabaseTableView.h"
#include "window/FilterCommands.h"
#include "window/MainWindow.h"
#include "window/PreferencesCommands.h"
#include "window/ScanCommands.h"

namespace apptest {

using fixtures::writeFile;
using testsupport::contentOf;
using testsupport::entries;
using testsupport::makeItem;

// Runs the GUI thread's events until `done` holds (no time limit: a test
// that never gets there is stopped by ctest's timeout).
template <typename Condition>
void waitUntil(Condition done) {
    while (!done()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(1);
    }
}

// A presenter whose boxes are answered by `rule`: it gets each box's request
// and returns the text of the button to press, or a null string to leave the
// box open. `onShown` sees each box first. Every box shown is recorded.
struct AnsweringPresenter {
    using Rule = std::function<QString(const TarnAlert::Request&)>;
    explicit AnsweringPresenter(Rule answer = {}) : rule(std::move(answer)) {
        presenter.setShownHook([this](QMessageBox* box, const TarnAlert::Request& request) {
            messages << request.message;
            details << request.detail;
            if (onShown) onShown(box, request);
            const QString text = rule ? rule(request) : QString();
            if (text.isNull()) return;
            for (QAbstractButton* button : box->buttons())
                if (button->text() == text) return button->click();
            ADD_FAILURE() << "no button " << text.toStdString();
        });
    }
    TarnAlertPresenter presenter;
    Rule rule;
    TarnAlertPresenter::ShownHook onShown;
    QStringList messages, details;
};

// Presses `text` on every box.
inline AnsweringPresenter::Rule always(const QString& text) {
    return [text](const TarnAlert::Request&) { return text; };
}

// The demo volume, written once for the whole suite, and what it holds.
inline const fixtures::DemoVolumeDescription& demo() {
    static QTemporaryDir folder;
    static const fixtures::DemoVolumeDescription written = [] {
        fixtures::DemoVolumeDescription description;
        QString error;
        if (!fixtures::DemoVolume::write(folder.filePath("Demo Volume"), &error, &description))
            ADD_FAILURE() << error.toStdString();
        return description;
    }();
    return written;
}
inline const QString& demoRoot() {
    return demo().root;
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
    const testsupport::ProcessRun run =
        testsupport::runProcess(TARN_CLI_PATH, QStringList{"scan"} + args);
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    return QString::fromUtf8(run.out);
}

// A window on a database of its own, with the preferences at their defaults.
class AppTest : public ::testing::Test {
  protected:
    void SetUp() override {
        TarnPreferences::shared()->resetToDefaults();
        TarnFilter::sharedFilter()->ResetFilter();
        TarnStatusViewController::getTheController()->setIsRunning(false);
        app_ = std::make_unique<AppDelegate>(&core_);
        ASSERT_EQ(app_->start({"tarn-app"}), AppDelegate::StartResult::Started);
        app_->setRevealHandler([this](const QString& path) { revealed_ << path; });
    }

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
    QString summary(const char* line) { return app_->summaryModel()->text(line); }

    MainWindow& window() { return *app_->window(); }
    const QAbstractItemModel& table() { return *app_->databaseModel(); }

    TarnCore core_;
    std::unique_ptr<AppDelegate> app_;
    QStringList revealed_;
};

}  // namespace apptest
