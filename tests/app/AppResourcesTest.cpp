#include "AppTestKit.h"
#include "shell/TarnAboutBox.h"
#include "shell/TarnAppResources.h"

// The images come from a resource file inside a static library: a link that
// drops its registration leaves them empty.
TEST(AppResources, IconsAndTheAboutBoxAreThere) {
    for (const auto& [icon, size] :
         {std::pair{TarnAppResources::videoIcon(), 32}, {TarnAppResources::applicationIcon(), 256}})
        EXPECT_EQ(icon.pixmap(size, size).size(), QSize(size, size)) << size;
    TarnAppResources::applyApplicationIdentity();
    EXPECT_EQ(QGuiApplication::desktopFileName(), "tarn");
    EXPECT_FALSE(QApplication::windowIcon().isNull());

    TarnAboutBox about;
    EXPECT_TRUE(about.findChild<QLabel*>("aboutVersion")
                    ->text()
                    .contains(QRegularExpression("^v\\d+\\.\\d+\\.\\d+ build \\d+$")));
    EXPECT_TRUE(about.findChild<QLabel*>("aboutLicence")->text().contains(qVersion()));
}
