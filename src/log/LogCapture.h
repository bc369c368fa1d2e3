#pragma once

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

/// Records what is logged while it lives, for the tests of an application:
///
///     TEST(Shop, WarnsOfAnEmptyCart) {
///         const ZAV::Log::LogCapture capture(ZAV::Log::LoggerFactory::getLogger("shop"));
///         shop.checkOut(Cart());
///         EXPECT_TRUE(capture.contains("cart is empty"));
///         EXPECT_EQ(capture.count(ZAV::Log::Level::ERROR), 0u);
///     }
///
/// It records every message of a logger and of all below it, those that are made meanwhile and configuration
/// messages included, and lets a level through these loggers: no level of theirs, and none that is set or
/// expires meanwhile, holds a message of that level back, and `Logger::getLevel` shows it. The levels and
/// expirations themselves stay as they are and hold again afterwards: where somebody sets one meanwhile, by
/// `Logger::setLevel` or the command for it, the one that was set. The levels of appenders stay as well. A
/// message is recorded when it is given to the appenders, one of an asynchronous logging call when it is
/// queued, whatever then becomes of it.
///
/// Captures may overlap and be destroyed in any order; each records what belongs to its logger. All functions
/// may be called from any thread. It neither needs nor notices `LogManager::init` and `LogManager::finish`.
class ZAV_LOG_API LogCapture {
public:
    /// Begins to record.
    /// \param logger the top of the subtree
    /// \param level let through; messages below it that pass anyway are recorded, too
    /// \param passesOn whether the other appenders of these loggers get the messages, too. If not, they see
    ///        nothing of what is logged from now on until the capture's end, and those that are added
    ///        meanwhile do not either; other captures do. What was queued before is still written. The
    ///        constructor then waits until messages that other threads are giving to these appenders are
    ///        finished, unless it is called from an appender or a command listener.
    /// \throw std::bad_alloc
    explicit LogCapture(Logger& logger = LoggerFactory::getRootLogger(),
                        Level::LogLevel level = Level::LEVEL_TRACE, bool passesOn = true);

    /// Ends the recording and waits for messages that other threads are giving to the appenders. Not for a
    /// thread that is inside an appender or a command listener.
    ~LogCapture();

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// \return copies of what was recorded, in the order in which it came
    std::vector<LogMessage> messages() const;

    /// \return the recorded messages as `formatLogLine` renders them
    std::vector<std::string> lines() const;

    /// \return whether the text of a recorded message contains a part
    bool contains(const std::string& part) const;

    /// \return how many messages of exactly that level were recorded; that of a configuration message is
    ///         `AUDIT`
    std::size_t count(Level::LogLevel level) const;

    /// Forgets what was recorded so far.
    void clear();

private:
    struct Inside;
    const std::unique_ptr<Inside> inside_;
};

} // namespace Log
} // namespace ZAV
