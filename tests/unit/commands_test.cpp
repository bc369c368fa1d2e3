#include "TestSupport.h"

#include "log/LogManager.h"

#include <functional>
#include <gmock/gmock.h>
#include <memory>

using namespace ZAV;
using namespace ZAV::Log;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::RecordingListener;

namespace {

class ThrowingListener : public CommandListener {
public:
    void onCommand(const std::string&) override { throw 1; }
};

class CallingListener : public CommandListener {
public:
    explicit CallingListener(std::function<void()> call) : call_(std::move(call)) {}
    void onCommand(const std::string&) override { call_(); }

private:
    std::function<void()> call_;
};

} // namespace

TEST(CommandBus, DeliversInOrderOfRegistrationUntilOneThrows) {
    RecordingListener first;
    RecordingListener behind;
    ThrowingListener throwing;
    LogManager::registerCommandListener("X", &first);
    LogManager::registerCommandListener("X", &first);
    LogManager::registerCommandListener("X", &throwing);
    LogManager::registerCommandListener("X", &behind);
    EXPECT_THROW(LogManager::command("X", "a"), int);
    LogManager::command("x", "b");
    EXPECT_THAT(first.arguments, ElementsAre("a", "a"));
    EXPECT_THAT(behind.arguments, IsEmpty());
    LogManager::unregisterCommandListener("X");
    LogManager::command("X", "c");
    EXPECT_THAT(first.arguments, SizeIs(2));
    LogManager::registerCommandListener("X", &first);
    LogManager::finish();
    LogManager::command("X", "d");
    EXPECT_THAT(first.arguments, SizeIs(2));
}

TEST(CommandBus, AListenerMayBeUnregisteredOrDestroyedWhileItIsCalled) {
    RecordingListener behind;
    CallingListener unregistering([] { LogManager::unregisterCommandListener("X"); });
    LogManager::registerCommandListener("X", &unregistering);
    LogManager::registerCommandListener("X", &behind);
    LogManager::command("X", "a");
    LogManager::command("X", "b");
    EXPECT_TRUE(behind.arguments.empty());

    auto destroyed = std::make_unique<RecordingListener>();
    CallingListener destroying([&destroyed] { destroyed.reset(); });
    LogManager::registerCommandListener("Y", &destroying);
    LogManager::registerCommandListener("Y", destroyed.get());
    LogManager::registerCommandListener("Y", &behind);
    LogManager::command("Y", "c");
    LogManager::command("Y", "d");
    EXPECT_THAT(behind.arguments, ElementsAre("c", "d"));
}
