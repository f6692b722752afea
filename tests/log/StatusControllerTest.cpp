// The status strip's model: busy flag, status text and the pool of wheels.
#include <gtest/gtest.h>

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

// Sixteen wheels, handed out started in pool order (the first free one wins),
// then none. A returned wheel stops and comes back; StopAllWheels frees all.
TEST(StatusWheels, SixteenThenNoneAndReturnedWheelsComeBack) {
    auto* c = controller();
    std::vector<TarnStatusWheel*> wheels;
    for (int i = 0; i < 16; ++i) {
        wheels.push_back(c->Status_GetProgressWheel());
        ASSERT_EQ(wheels.back(), c->wheelAt(i));
        EXPECT_TRUE(wheels.back()->state().animating);
    }
    testsupport::LogCapture log;
    EXPECT_EQ(c->Status_GetProgressWheel(), nullptr);
    EXPECT_EQ(log.count(QStringLiteral(" :: NowheelsLeft\n")), 1);

    wheels[5]->setIndeterminate(false);
    c->Status_DeleteProgressWheel(wheels[9]);
    c->Status_DeleteProgressWheel(wheels[5]);
    c->Status_DeleteProgressWheel(nullptr);
    EXPECT_EQ(c->wheelsleft(), 2);
    EXPECT_FALSE(wheels[5]->state().animating);
    EXPECT_TRUE(wheels[5]->state().indeterminate);
    EXPECT_EQ(c->Status_GetProgressWheel(), wheels[5]);
    EXPECT_EQ(c->Status_GetProgressWheel(), wheels[9]);
    c->StopAllWheels();
    EXPECT_EQ(c->wheelsleft(), 16);
    for (TarnStatusWheel* wheel : wheels) EXPECT_TRUE(wheel->isFree());
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

// A null text is ignored; the busy flag announces changes only.
TEST(StatusText, ChangesAreAnnounced) {
    auto* c = controller();
    c->setIsRunning(false);
    QStringList announced;
    auto texts = QObject::connect(c, &TarnStatusViewController::textChanged,
                                  [&](const QString& text) { announced << text; });
    auto running = QObject::connect(c, &TarnStatusViewController::runningChanged,
                                    [&](bool on) { announced << (on ? "running" : "idle"); });
    c->Status_SetTextWithString(QStringLiteral("Execution Time: 1.5"));
    c->Status_SetTextWithString(QString());
    EXPECT_EQ(c->statusText(), "Execution Time: 1.5");
    c->Status_SetTextWithString(QLatin1String(""));
    c->setIsRunning(true);
    c->setIsRunning(true);
    c->setIsRunning(false);
    EXPECT_EQ(announced, (QStringList{"Execution Time: 1.5", "", "running", "idle"}));
    QObject::disconnect(texts);
    QObject::disconnect(running);
}
