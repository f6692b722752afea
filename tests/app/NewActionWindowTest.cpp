#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

#include "AppTestKit.h"
#include "actions/TarnActionCommands.h"
#include "actions/TarnNewActionWindow.h"

using namespace apptest;

namespace {

struct SheetFixture : ::testing::Test {
    QTemporaryDir tmp;
    QList<TarnItemPtr> items;
    void SetUp() override {
        for (int i : {1, 2}) {
            const QString path = tmp.path() + QString("/src/clip%1.mxf").arg(i);
            ASSERT_TRUE(writeFile(path, QByteArray(1000 * i, 'x')));
            items.append(makeItem(path));
        }
    }
    template <typename T>
    static T* control(const QWidget& sheet, const char* name) {
        T* found = sheet.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    static void click(const QWidget& sheet, const char* name) {
        // Near the left edge: a check box takes clicks on its box and label only.
        QAbstractButton* button = control<QAbstractButton>(sheet, name);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }
    static void typeDestination(const QWidget& sheet, const QString& text) {
        auto* field = control<QLineEdit>(sheet, "destinationText");
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    }
};

TEST_F(SheetFixture, OpensOnTheDefaultsWithEveryControlNamed) {
    TarnNewActionWindow sheet(items);
    sheet.show();
    expectNamedControls(sheet,
                        "RadioCopy RadioMove RadioDelete CheckProjects CheckMXF "
                        "CheckKeepOriginalFolders CheckKeepPMR CheckImSure summaryText "
                        "destinationText Select GO Cancel");
    EXPECT_TRUE(control<QRadioButton>(sheet, "RadioCopy")->isChecked());
    EXPECT_EQ(control<QLineEdit>(sheet, "destinationText")->text(), "Unknown");
    EXPECT_TRUE(control<QCheckBox>(sheet, "CheckProjects")->isChecked());
    EXPECT_TRUE(control<QCheckBox>(sheet, "CheckMXF")->isChecked());
    EXPECT_FALSE(control<QCheckBox>(sheet, "CheckKeepOriginalFolders")->isChecked());
    auto* keepPmr = control<QCheckBox>(sheet, "CheckKeepPMR");
    EXPECT_TRUE(keepPmr->isHidden() && !keepPmr->isEnabled() && !keepPmr->isChecked());
    EXPECT_EQ(sheet.summary(), "will Copy \n2 items of 3.00 kB size\ndestination: Invalid path");

    TarnNewActionWindow nothing(QList<TarnItemPtr>{});
    EXPECT_EQ(nothing.summary(), "No items selected \nSorry, nothing to do");
}

TEST_F(SheetFixture, ControlsEditTheOptionsAndTheLiveSummary) {
    TarnNewActionWindow sheet(items);
    sheet.show();
    click(sheet, "RadioDelete");
    EXPECT_EQ(sheet.ActionProperties().Action, "Delete");
    EXPECT_TRUE(sheet.summary().endsWith("destination: Super Secret Annihilator (SSA)"));
    click(sheet, "RadioMove");
    EXPECT_FALSE(control<QRadioButton>(sheet, "RadioDelete")->isChecked());
    typeDestination(sheet, tmp.path());
    EXPECT_EQ(sheet.summary(), "will Move \n2 items of 3.00 kB size\ndestination: " + tmp.path());
    typeDestination(sheet, "~/Media%20Folder");
    EXPECT_EQ(sheet.ActionProperties().Destination, QDir::homePath() + "/Media Folder");

    click(sheet, "CheckProjects");
    click(sheet, "CheckMXF");
    click(sheet, "CheckKeepOriginalFolders");
    EXPECT_TRUE(control<QCheckBox>(sheet, "CheckKeepPMR")->isEnabled());
    sheet.checkSetKeepPMR(true);
    click(sheet, "CheckKeepOriginalFolders");  // unticked: "Keep_pmr" follows
    const TarnActionOptions& o = sheet.ActionProperties();
    EXPECT_FALSE(o.Create_projects_folders || o.Create_mxf_folders);
    EXPECT_FALSE(o.Keep_original_folders || o.Keep_pmr);

    click(sheet, "Select");  // the folder chooser, a sheet on the sheet
    auto* panel = sheet.findChild<QFileDialog*>("SelectDestinationPanel");
    ASSERT_NE(panel, nullptr);
    panel->setDirectory(tmp.path());
    panel->selectFile(tmp.path() + "/src");
    static_cast<QDialog*>(panel)->accept();
    EXPECT_EQ(control<QLineEdit>(sheet, "destinationText")->text(), tmp.path() + "/src");
    EXPECT_TRUE(sheet.summary().endsWith("destination: " + tmp.path() + "/src"));
}

TEST_F(SheetFixture, GoAcceptsOnlyConfirmedValidOptions) {
    struct Case {
        const char* radio;
        QString destination;  // typed; null: left as it is
        bool sure;
        bool withItems;
        QString refusal;  // the alert; empty: the sheet ends with 1
    };
    const QString missing = tmp.path() + "/later";
    const Case cases[] = {
        {"RadioCopy", tmp.path(), false, true, "Please don't hurry, be patient..."},
        {"RadioDelete", QString(), false, true, "Please don't hurry, be patient..."},
        {"RadioCopy", missing, true, true, "Please check destination path"},
        {"RadioMove", QString(), true, true, "Please check destination path"},
        {"RadioCopy", tmp.path(), true, false, "No items selected. Nothing to do."},
        {"RadioCopy", tmp.path(), true, true, ""},
        {"RadioDelete", missing, true, true, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.radio) + " " + c.destination.toStdString());
        AnsweringPresenter answers(always("OK"));
        TarnNewActionWindow sheet(c.withItems ? items : QList<TarnItemPtr>{});
        sheet.show();
        click(sheet, c.radio);
        if (!c.destination.isNull()) typeDestination(sheet, c.destination);
        if (c.sure) click(sheet, "CheckImSure");
        click(sheet, "GO");
        EXPECT_EQ(answers.messages(), c.refusal.isEmpty() ? QStringList() : QStringList{c.refusal});
        EXPECT_EQ(sheet.isVisible(), !c.refusal.isEmpty());
        if (c.refusal.isEmpty()) {
            EXPECT_EQ(sheet.result(), TarnNewActionWindow::kAccept);
        }
    }
}

TEST_F(SheetFixture, SheetGuardAndCancel) {
    QMainWindow window;
    window.resize(900, 600);
    window.show();
    TarnActionManager manager;
    TarnActionCommands commands(&manager, &window);
    TarnNewActionWindow* sheet = commands.NewAction(items);
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    EXPECT_EQ(sheet->parentWidget(), &window);
    EXPECT_EQ(commands.NewAction(items), nullptr);  // a second sheet: only "Pop"
    click(*sheet, "Cancel");
    EXPECT_EQ(sheet->result(), 0);
    EXPECT_EQ(manager.numberOfRows(), 0);
}

}  // namespace
