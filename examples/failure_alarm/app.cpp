/// A listener of the command "EXCEPTION": it raises an alarm when an appender cannot write.

#include "log/CommandListener.h"
#include "log/LogLimits.h"
#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LogSession.h"
#include "log/LoggerFactory.h"

#include <chrono>
#include <iostream>
#include <string>

namespace {

class FailureAlarm : public ZAV::Log::CommandListener {
public:
    /// Called for each message that an appender could not write, in whichever thread it was, one call at a
    /// time.
    void onCommand(const std::string& report) override {
        ZAV_LOG_AT_MOST_EVERY(std::chrono::minutes(1), std::cerr << "ALARM: " << report << std::endl);
    }
};

} // namespace

int main() {
    FailureAlarm alarm; // before the session, whose end writes what is queued and may still call it
    ZAV::Log::LogManager::registerCommandListener("EXCEPTION", &alarm);
    const ZAV::Log::LogSession session("app.properties");
    ZAV_LOG_INFO(ZAV::Log::LoggerFactory::getLogger("shop"), "order 4711 charged");
}
