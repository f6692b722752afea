#pragma once

// Shared pieces of the app suite: waiting for the GUI thread's events,
// answering the message boxes from the test (through the presenter's hook,
// not by clicks on the screen), real files and items, and a window on the
// demo volume.

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>

#include <functional>
#include <memory>

#include <gtest/gtest.h>

#include "DemoVolume.h"
#include "QtPrinters.h"
#include "TestSupport.h"
#include "alerts/TarnAlertPresenter.h"
#include "database/TarnCore.h"
#include "database/TarnFilter.h"
#include "database/TarnScanner.h"
#include "items/TarnDatabaseItem.h"
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

namespace apptest {

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

inline bool writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

inline QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// A distinct, recognisable content for each name.
inline QByteArray content(const QString& name, int size = 4096) {
    QByteArray bytes;
    const QByteArray seed = name.toUtf8();
    for (int i = 0; bytes.size() < size; ++i) bytes.append(char(seed.at(i % seed.size()) ^ i));
    return bytes;
}

// A presenter whose boxes are answered by a rule: `answer` gets each box's
// request and returns the text of the button to press, or a null string to
// leave the box open. Every box shown is recorded (message, buttons).
class AnsweringPresenter {
  public:
    using Rule = std::function<QString(const TarnAlert::Request&)>;

    explicit AnsweringPresenter(Rule rule = {}) : rule_(std::move(rule)) {
        presenter_.setShownHook([this](QMessageBox* box, const TarnAlert::Request& request) {
            messages_ << request.message;
            details_ << request.detail;
            buttons_ << request.buttons.join('|');
            if (onShown_) onShown_(box, request);
            const QString text = rule_ ? rule_(request) : QString();
            if (text.isNull()) return;
            for (QAbstractButton* button : box->buttons())
                if (button->text() == text) return button->click();
            ADD_FAILURE() << "no button " << text.toStdString();
        });
    }
    void setRule(Rule rule) { rule_ = std::move(rule); }
    // Also called for every box, before the rule.
    void onShown(TarnAlertPresenter::ShownHook hook) { onShown_ = std::move(hook); }

    TarnAlertPresenter& presenter() { return presenter_; }
    QStringList messages() const { return messages_; }
    QStringList details() const { return details_; }
    QStringList buttons() const { return buttons_; }

  private:
    TarnAlertPresenter presenter_;
    Rule rule_;
    TarnAlertPresenter::ShownHook onShown_;
    QStringList messages_, details_, buttons_;
};

// Presses `text` on every box.
inline AnsweringPresenter::Rule always(const QString& text) {
    return [text](const TarnAlert::Request&) { return text; };
}

// Every control named in `names` (separated by spaces) is found under `root`
// (or is `root`) by that object name and carries it as accessible name, for
// screen readers and UI tests.
inline void expectNamedControls(QWidget& root, const char* names) {
    for (const QString& name : QString(names).split(' ', Qt::SkipEmptyParts)) {
        SCOPED_TRACE(name.toStdString());
        QWidget* widget = root.objectName() == name ? &root : root.findChild<QWidget*>(name);
        ASSERT_NE(widget, nullptr);
        EXPECT_EQ(widget->accessibleName(), name);
    }
}

// The demo volume, written once for the whole suite.
inline const QString& demoRoot() {
    static QTemporaryDir folder;
    static const QString root = [] {
        const QString path = folder.filePath("Demo Volume");
        QString error;
        if (!fixtures::DemoVolume::write(path, &error)) ADD_FAILURE() << error.toStdString();
        return path;
    }();
    return root;
}

// The existing media of a freshly written demo volume at `root`, as a scan
// shows them.
inline QList<TarnItemPtr> scannedDemoMedia(const QString& root, TarnCore& core) {
    QString error;
    if (!fixtures::DemoVolume::write(root, &error)) return {};
    TarnScanner(&core).run(TarnScanner::Kind::SingleFolder, {root});
    QList<TarnItemPtr> items;
    for (qsizetype row = 0; row < core.getFilteredIndexesCount(); ++row) {
        TarnItemPtr item = core.ObjectAtIndexFiltered(row);
        if (item && item->DB_FileExists && QFileInfo(item->DB_itemPath).isFile()) items << item;
    }
    return items;
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
    process.start(TARN_CLI_PATH, QStringList{"scan"} + args);
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
        ASSERT_EQ(app_->start({"tarn-app"}), AppDelegate::StartResult::Started);
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
    QString summary(const char* line) { return app_->summaryModel()->text(line); }

    MainWindow& window() { return *app_->window(); }
    const QAbstractItemModel& table() { return *app_->databaseModel(); }

    TarnCore core_;
    std::unique_ptr<AppDelegate> app_;
    QStringList revealed_;
};

}  // namespace apptest
