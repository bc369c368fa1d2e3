#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"

int main() {
    ZAV::Log::LogManager::init("app.properties");
    ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("net.tcp");
    ZAV_LOG_INFO(logger, "port " << 8080 << " open");
    ZAV::Log::LogManager::finish();
}
