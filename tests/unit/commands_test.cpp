#include "TestSupport.h"

#include "log/commands/CommandBus.h"

#include <atomic>
#include <future>
#include <memory>
#include <thread>

using namespace ZAV;
using namespace ZAV::Log;
using namespace testing;
using TestSupport::CallingListener;
using TestSupport::RecordingListener;

TEST(CommandBus, DeliversInOrderOfRegistrationUntilOneThrows) {
    RecordingListener first;
    RecordingListener behind;
    CallingListener throwing([](const std::string&) { throw 1; });
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
    LogManager::registerCommandListener("X", &first);
    LogManager::finish();
    LogManager::command("X", "d");
    EXPECT_THAT(first.arguments, SizeIs(2));
}

TEST(CommandBus, AListenerMayBeUnregisteredOrDestroyedWhileItIsCalled) {
    RecordingListener behind;
    CallingListener unregistering([](const std::string&) { LogManager::unregisterCommandListener("X"); });
    LogManager::registerCommandListener("X", &unregistering);
    LogManager::registerCommandListener("X", &behind);
    LogManager::command("X", "a");
    LogManager::command("X", "b");
    EXPECT_THAT(behind.arguments, IsEmpty());

    auto destroyed = std::make_unique<RecordingListener>();
    CallingListener destroying([&destroyed](const std::string&) { destroyed.reset(); });
    LogManager::registerCommandListener("Y", &destroying);
    LogManager::registerCommandListener("Y", destroyed.get());
    LogManager::registerCommandListener("Y", &behind);
    LogManager::command("Y", "c");
    LogManager::command("Y", "d");
    EXPECT_THAT(behind.arguments, ElementsAre("c", "d"));
}

TEST(CommandBus, AListenerThatGoesWaitsForACallOfItsOwnAndForNoOther) {
    std::promise<void> isCalled;
    std::promise<void> released;
    std::atomic<bool> hasReturned{false};
    CallingListener busy([&](const std::string&) {
        isCalled.set_value();
        released.get_future().wait();
        while (LogManager::hasCommandListener("X")) {
            std::this_thread::yield();
        }
        hasReturned = true;
    });
    auto other = std::make_unique<RecordingListener>();
    LogManager::registerCommandListener("Y", other.get());
    LogManager::registerCommandListener("X", &busy);
    std::thread delivering([] { LogManager::command("X", ""); });
    isCalled.get_future().wait();
    other.reset(); // a hang here is the failure
    released.set_value();
    CommandBus::instance().unregisterListener(&busy);
    EXPECT_TRUE(hasReturned);
    delivering.join();
}

TEST(CommandBus, AWaitForACallThatNeverReturnsHasALimit) {
    std::promise<void> isCalled;
    std::promise<void> released;
    auto stuck = std::make_unique<CallingListener>([&](const std::string&) {
        isCalled.set_value();
        released.get_future().wait();
    });
    LogManager::registerCommandListener("X", stuck.get());
    std::thread delivering([] { LogManager::command("X", ""); });
    isCalled.get_future().wait();
    CommandBus::instance().unregisterListener(stuck.get(),
                                              std::chrono::milliseconds(1)); // a hang is the failure
    EXPECT_FALSE(LogManager::hasCommandListener("X"));
    released.set_value();
    delivering.join();
}

TEST(CommandBus, AllListenersGetTheCommandAsItWasGiven) {
    std::string name = "X";
    std::string argument = "a";
    CallingListener changing([&](const std::string&) { name = argument = "changed"; });
    RecordingListener behind;
    LogManager::registerCommandListener(name, &changing);
    LogManager::registerCommandListener(name, &behind);
    LogManager::command(name, argument);
    EXPECT_THAT(behind.arguments, ElementsAre("a"));
    LogManager::finish();
}
