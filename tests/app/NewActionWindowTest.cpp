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
    template <typename T = QAbstractButton>
    static T* control(const QWidget& sheet, const char* name) {
        T* found = sheet.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    static void click(const QWidget& sheet, const char* name) {
        // Near the left edge: a check box takes clicks on its box and label only.
        QAbstractButton* button = control(sheet, name);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }
    static void typeDestination(const QWidget& sheet, const QString& text) {
        auto* field = control<QLineEdit>(sheet, "destinationText");
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    }
};

TEST_F(SheetFixture, ControlsEditTheOptionsAndTheLiveSummary) {
    TarnNewActionWindow sheet(items);
    sheet.show();
    EXPECT_EQ(sheet.summary(), "will Copy \n2 items of 3.00 kB size\ndestination: Invalid path");
    QStringList ticked;
    for (const char* name : {"RadioCopy", "RadioMove", "RadioDelete", "CheckProjects", "CheckMXF",
                             "CheckKeepOriginalFolders", "CheckKeepPMR", "CheckImSure"})
        if (control(sheet, name)->isChecked()) ticked << name;
    EXPECT_EQ(ticked, QStringList({"RadioCopy", "CheckProjects", "CheckMXF"}));
    EXPECT_TRUE(control(sheet, "CheckKeepPMR")->isHidden());

    click(sheet, "RadioDelete");
    EXPECT_EQ(sheet.ActionProperties().Action, "Delete");
    EXPECT_TRUE(sheet.summary().endsWith("destination: Super Secret Annihilator (SSA)"));
    click(sheet, "RadioMove");
    EXPECT_FALSE(control(sheet, "RadioDelete")->isChecked());
    typeDestination(sheet, tmp.path());
    EXPECT_EQ(sheet.summary(), "will Move \n2 items of 3.00 kB size\ndestination: " + tmp.path());
    typeDestination(sheet, "~/Media%20Folder");
    EXPECT_EQ(sheet.ActionProperties().Destination, QDir::homePath() + "/Media Folder");

    click(sheet, "CheckProjects");
    click(sheet, "CheckMXF");
    click(sheet, "CheckKeepOriginalFolders");
    EXPECT_TRUE(control(sheet, "CheckKeepPMR")->isEnabled());
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
    EXPECT_TRUE(sheet.summary().endsWith("destination: " + tmp.path() + "/src"));
}

TEST_F(SheetFixture, GoAcceptsOnlyConfirmedValidOptions) {
    const QString missing = tmp.path() + "/later";
    const struct {
        const char* radio;
        QString destination;  // typed; null: left as it is
        bool sure;
        bool withItems;
        QString refusal;  // the alert; empty: the sheet ends with 1
    } cases[] = {
        {"RadioCopy", tmp.path(), false, true, "Please don't hurry, be patient..."},
        {"RadioDelete", QString(), false, true, "Please don't hurry, be patient..."},
        {"RadioCopy", missing, true, true, "Please check destination path"},
        {"RadioMove", QString(), true, true, "Please check destination path"},
        {"RadioCopy", tmp.path(), true, false, "No items selected. Nothing to do."},
        {"RadioCopy", tmp.path(), true, true, ""},
        {"RadioDelete", missing, true, true, ""},
    };
    for (const auto& c : cases) {
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
        EXPECT_TRUE(!c.refusal.isEmpty() || sheet.result() == TarnNewActionWindow::kAccept);
    }
}

TEST_F(SheetFixture, SheetGuardAndCancel) {
    QMainWindow window;
    window.show();
    TarnActionManager manager;
    TarnActionCommands commands(&manager, &window);
    TarnNewActionWindow* sheet = commands.NewAction(items);
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->parentWidget(), &window);
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    EXPECT_EQ(commands.NewAction(items), nullptr);  // a second sheet: only "Pop"
    click(*sheet, "Cancel");
    EXPECT_EQ(sheet->result(), 0);
    EXPECT_EQ(manager.numberOfRows(), 0);
}

}  // namespace
