#include "log/LogMacros.h"
#include "log/LogSession.h"
#include "log/LoggerFactory.h"

int main() {
    const ZAV::Log::LogSession session("app.properties");
    ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("net.tcp");
    ZAV_LOG_INFO(logger, "port " << 8080 << " open");
}
