// The status strip's model: busy flag, status text and the pool of wheels.
#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "status/TarnStatusViewController.h"

namespace {

TarnStatusViewController* controller() {
    auto* c = TarnStatusViewController::getTheController();
    c->StopAllWheels();
    return c;
}

}  // namespace

TEST(StatusWheels, SixteenThenNone) {
    auto* c = controller();
    EXPECT_EQ(TarnStatusViewController::getTheController(), c);
    EXPECT_EQ(c->wheelsleft(), 16);
    std::set<TarnStatusWheel*> taken;
    for (int i = 0; i < 16; ++i) {
        TarnStatusWheel* wheel = c->Status_GetProgressWheel();
        ASSERT_NE(wheel, nullptr);
        // Handed out in pool order, started.
        EXPECT_EQ(wheel->index(), i);
        EXPECT_EQ(wheel, c->wheelAt(i));
        EXPECT_FALSE(wheel->isFree());
        EXPECT_TRUE(wheel->state().animating);
        taken.insert(wheel);
    }
    EXPECT_EQ(taken.size(), 16u);
    EXPECT_EQ(c->wheelsleft(), 0);

    testsupport::LogCapture log;
    EXPECT_EQ(c->Status_GetProgressWheel(), nullptr);
    EXPECT_EQ(log.count(QStringLiteral(" :: NowheelsLeft\n")), 1);
    EXPECT_TRUE(log.text().startsWith(
        "(TarnStatusViewController::Status_GetProgressWheel) (TarnStatusViewController.cpp:"));
    EXPECT_EQ(c->wheelsleft(), 0);
}

TEST(StatusWheels, AReturnedWheelIsHandedOutAgain) {
    auto* c = controller();
    std::vector<TarnStatusWheel*> wheels;
    for (int i = 0; i < 16; ++i) wheels.push_back(c->Status_GetProgressWheel());
    TarnStatusWheel* five = wheels[5];
    five->setIndeterminate(false);
    five->setDoubleValue(40);
    c->Status_DeleteProgressWheel(five);
    EXPECT_EQ(c->wheelsleft(), 1);
    EXPECT_TRUE(five->isFree());
    EXPECT_FALSE(five->state().animating);
    EXPECT_TRUE(five->state().indeterminate);

    EXPECT_EQ(c->Status_GetProgressWheel(), five);
    EXPECT_TRUE(five->state().animating);
    EXPECT_EQ(c->wheelsleft(), 0);

    // The first free wheel in pool order wins.
    c->Status_DeleteProgressWheel(wheels[9]);
    c->Status_DeleteProgressWheel(wheels[2]);
    EXPECT_EQ(c->Status_GetProgressWheel(), wheels[2]);
    EXPECT_EQ(c->Status_GetProgressWheel(), wheels[9]);

    c->Status_DeleteProgressWheel(nullptr);
    EXPECT_EQ(c->wheelsleft(), 0);
}

TEST(StatusWheels, ReturningTwiceCountsTwiceUntilStopAll) {
    auto* c = controller();
    std::vector<TarnStatusWheel*> wheels;
    for (int i = 0; i < 16; ++i) wheels.push_back(c->Status_GetProgressWheel());
    c->Status_DeleteProgressWheel(wheels[3]);
    c->Status_DeleteProgressWheel(wheels[3]);
    EXPECT_EQ(c->wheelsleft(), 2);
    EXPECT_EQ(c->Status_GetProgressWheel(), wheels[3]);
    // The count says one is left, but none is free.
    EXPECT_EQ(c->wheelsleft(), 1);
    testsupport::LogCapture log;
    EXPECT_EQ(c->Status_GetProgressWheel(), nullptr);
    EXPECT_TRUE(log.contains(QStringLiteral("NowheelsLeft")));

    c->StopAllWheels();
    EXPECT_EQ(c->wheelsleft(), 16);
    for (TarnStatusWheel* wheel : wheels) {
        EXPECT_TRUE(wheel->isFree());
        EXPECT_FALSE(wheel->state().animating);
    }
}

TEST(StatusWheels, PoolStaysConsistentUnderConcurrentUse) {
    auto* c = controller();
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([c] {
            for (int i = 0; i < 500; ++i) {
                TarnStatusWheel* wheel = c->Status_GetProgressWheel();
                ASSERT_NE(wheel, nullptr);  // 8 threads, one wheel each at most
                EXPECT_FALSE(wheel->isFree());
                wheel->setDoubleValue(i);
                c->Status_DeleteProgressWheel(wheel);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(c->wheelsleft(), 16);
    for (int i = 0; i < 16; ++i) EXPECT_TRUE(c->wheelAt(i)->isFree());
}

TEST(StatusText, NullTextIsIgnoredAndChangesAreAnnounced) {
    auto* c = controller();
    QStringList announced;
    auto connection = QObject::connect(c, &TarnStatusViewController::textChanged,
                                       [&](const QString& text) { announced << text; });
    c->Status_SetTextWithString(QStringLiteral("Execution Time: 1.5"));
    c->Status_SetTextWithString(QString());
    EXPECT_EQ(c->statusText(), "Execution Time: 1.5");
    c->Status_SetTextWithString(QLatin1String(""));
    EXPECT_EQ(c->statusText(), "");
    EXPECT_EQ(announced, (QStringList{"Execution Time: 1.5", ""}));
    QObject::disconnect(connection);
}

TEST(StatusText, BusyFlagAnnouncesChangesOnly) {
    auto* c = controller();
    c->setIsRunning(false);
    QList<bool> changes;
    auto connection = QObject::connect(c, &TarnStatusViewController::runningChanged,
                                       [&](bool running) { changes << running; });
    c->setIsRunning(true);
    c->setIsRunning(true);
    EXPECT_TRUE(c->isRunning());
    c->setIsRunning(false);
    EXPECT_FALSE(c->isRunning());
    EXPECT_EQ(changes, (QList<bool>{true, false}));
    QObject::disconnect(connection);
}
