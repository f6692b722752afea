#include <QCoreApplication>

#include <gtest/gtest.h>

// The queue posts work to its own thread's event loop: the suite needs an
// application object, made once before the tests run.
namespace {
class QtApplication : public ::testing::Environment {
  public:
    void SetUp() override {
        static int argc = 1;
        static char name[] = "tarn_test_actions";
        static char* argv[] = {name, nullptr};
        if (!QCoreApplication::instance()) app_ = new QCoreApplication(argc, argv);
    }

  private:
    QCoreApplication* app_ = nullptr;
};
[[maybe_unused]] ::testing::Environment* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new QtApplication);
}  // namespace
