#include <QApplication>
#include <QLabel>

#include "AppTestKit.h"
#include "shell/TarnAboutBox.h"
#include "shell/TarnAppResources.h"

namespace {

// The images come from a resource file inside a static library: a link that
// drops its registration leaves them empty.
TEST(AppResources, IconsAndTheAboutBoxAreThere) {
    const struct {
        QIcon icon;
        int size;
    } cases[] = {{TarnAppResources::videoIcon(), 16},
                 {TarnAppResources::videoIcon(), 32},
                 {TarnAppResources::applicationIcon(), 64},
                 {TarnAppResources::applicationIcon(), 256}};
    for (const auto& c : cases) {
        ASSERT_FALSE(c.icon.isNull());
        EXPECT_EQ(c.icon.pixmap(c.size, c.size).size(), QSize(c.size, c.size)) << c.size;
    }
    TarnAppResources::applyApplicationIdentity();
    EXPECT_EQ(QGuiApplication::desktopFileName(), "tarn");
    EXPECT_FALSE(QApplication::windowIcon().isNull());

    TarnAboutBox about;
    const QLabel* version = about.findChild<QLabel*>("aboutVersion");
    ASSERT_NE(version, nullptr);
    EXPECT_TRUE(version->text().contains(QRegularExpression("^v\\d+\\.\\d+\\.\\d+ build \\d+$")));
    EXPECT_TRUE(about.findChild<QLabel*>("aboutLicence")->text().contains(qVersion()));
}

}  // namespace
