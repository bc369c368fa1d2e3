/// A class of appenders of the program's own: it keeps the last lines, for a status page for example.

#include "log/Appender.h"
#include "log/AppenderOptions.h"
#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LogSession.h"
#include "log/LoggerFactory.h"

#include <cstddef>
#include <deque>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>

namespace {

struct RecentLines {
    std::mutex mutex;
    std::deque<std::string> lines; ///< guarded by the mutex
};

class RecentLinesAppender : public ZAV::Log::Appender {
public:
    RecentLinesAppender(const ZAV::Log::AppenderOptions& options, RecentLines& recent)
        : Appender(options), options_(options), most_(std::stoul(options.value("lines", "100"))),
          recent_(recent) {}

private:
    /// Called by any number of threads at once, unless the appender is asynchronous.
    void doOutput(const ZAV::Log::LogMessage& message) override {
        const std::string line = options_.formatLine(message);
        const std::lock_guard<std::mutex> lock(recent_.mutex);
        recent_.lines.push_back(line);
        if (recent_.lines.size() > most_) {
            recent_.lines.pop_front();
        }
    }

    const ZAV::Log::AppenderOptions options_;
    const std::size_t most_;
    RecentLines& recent_;
};

} // namespace

int main() {
    RecentLines recent; // before the session, whose end writes what is queued
    ZAV::Log::LogManager::registerAppenderClass(
        "RecentLinesAppender", [&recent](const ZAV::Log::AppenderOptions& options) {
            return std::make_unique<RecentLinesAppender>(options, recent);
        });
    const ZAV::Log::LogSession session("app.properties");
    for (int number = 1; number <= 3; ++number) {
        ZAV_LOG_INFO(ZAV::Log::LoggerFactory::getLogger("shop"), "order " << number << " charged");
    }
    const std::lock_guard<std::mutex> lock(recent.mutex);
    for (const std::string& line : recent.lines) {
        std::cout << line << '\n';
    }
}
