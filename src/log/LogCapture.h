#pragma once

/// \file
/// Records what is logged, for the tests of an application.

#include "log/Level.h"
#include "log/LogMessage.h"
#include "log/LoggerFactory.h"
#include "zav-util/Export.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace ZAV {
namespace Log {

class Logger;

/// Records what is logged during its lifetime, for the tests of an application:
///
///     #include <gtest/gtest.h>
///
///     void checkOut(int itemsInCart); // the code to be tested, which logs to "shop"
///
///     TEST(Shop, WarnsOfAnEmptyCart) {
///         const ZAV::Log::LogCapture capture(ZAV::Log::LoggerFactory::getLogger("shop"));
///         checkOut(0);
///         EXPECT_TRUE(capture.contains("cart is empty"));
///         EXPECT_EQ(capture.count(ZAV::Log::Level::ERROR), 0U);
///     }
///
/// It records every message of a logger and of all loggers below it, including loggers that are created
/// meanwhile and configuration messages. Messages of a given level pass these loggers meanwhile, even if
/// their own level is higher, is raised or expires, and `Logger::getLevel` returns the lower of the two. The
/// levels and expirations themselves are not changed and take effect again afterwards, including those that
/// `Logger::setLevel` or the command for it has set meanwhile. The levels of appenders are not changed
/// either. A message is recorded when it is given to the appenders, or if they are asynchronous, when it is
/// queued, whatever happens to it then.
///
/// Captures may overlap and be destroyed in any order; each records the messages of its own logger. All
/// functions may be called from any thread. A capture does not depend on `LogManager::init` and
/// `LogManager::finish`.
class ZAV_LOG_API LogCapture {
public:
    /// Begins to record.
    /// \param logger the top of the subtree
    /// \param level the level to let through; messages below it that pass anyway are recorded too
    /// \param passesOn whether the other appenders of these loggers get the messages too. If false, neither
    ///        they nor appenders that are added meanwhile get any message that is logged before the capture
    ///        ends; other captures do. What was queued before is still written. The constructor then waits
    ///        until messages that other threads are giving to these appenders are written, unless it is
    ///        called from an appender or a command listener.
    /// \throw std::bad_alloc
    explicit LogCapture(Logger& logger = LoggerFactory::getRootLogger(),
                        Level::LogLevel level = Level::LEVEL_TRACE, bool passesOn = true);

    /// Ends the recording, and waits for messages that other threads are giving to the appenders. It must not
    /// be called from an appender or a command listener.
    ~LogCapture();

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// \return copies of the recorded messages, in the order in which they arrived
    std::vector<LogMessage> messages() const;

    /// \return the recorded messages as `formatLogLine` renders them
    std::vector<std::string> lines() const;

    /// \return whether the text of any recorded message contains `part`
    bool contains(const std::string& part) const;

    /// \return how many messages of exactly that level were recorded; configuration messages count as `AUDIT`
    std::size_t count(Level::LogLevel level) const;

    /// Discards what was recorded so far.
    void clear();

private:
    struct Inside;
    const std::unique_ptr<Inside> inside_;
};

} // namespace Log
} // namespace ZAV
